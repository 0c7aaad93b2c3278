// SignalBank<T>: the time series of a set of named signals, recorded from
// time 0 until each signal's record is full, with a fixed-point quantiser
// per signal through which recorded samples are read back as the register
// words a hardware model exchanges.
//
// Component k of signal i is the record buf[buf_start[i] + k] of buf_len[i]
// samples; sample t is the t-th push, and push_cnt[i] (the time of the next
// push) stops at buf_len[i]: later pushes are ignored until a reset rewinds
// the record. Out-of-range reads return 0 and out-of-range writes are
// ignored; negative indices count as out of range.
//
// Word reads quantise the sample through the signal's FixedPoint (raising its
// overflow flag and feeding its statistics) and take n = floor(v/q), the
// register value in LSBs. They differ in how a negative n is encoded:
//   get_sig_t_uint  two's complement, n + 2^w, for two's-complement formats
//                   only; sign-magnitude and ones' complement formats get the
//                   32-bit pattern of n, not their own code;
//   get_sig_t_sm    sign bit plus magnitude, 2^(w-1) - n;
//   get_sig_t_1C    ones' complement, n + 2^w - 1.
// Powers 2^s with s >= 32 are 0 in these formulas (32-bit registers). A
// signal with word length 0 has no register: every word read returns the
// 32-bit pattern of its value truncated toward zero (0 when a negative zero
// is asked for).
//
// Instantiated for bool, int, double and unsigned char.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Tools/FixedPoint.h"
#include "Tools/M_file.h"
#include "Tools/SignalUtil/BufferBankParam.h"

template <class T>
class SignalBank {
 public:
  // One signal of dimension 1 and length 1, unquantised.
  SignalBank();
  // q is null (every signal unquantised, format (0, 0, "")) or points at
  // num_sig formats.
  SignalBank(const BufferBankParam& p, const FixedPointParam* q);
  // A list of the wrong size leaves every signal unquantised.
  SignalBank(const BufferBankParam& p, std::vector<FixedPointParam> q);
  SignalBank(const SignalBank& o);
  SignalBank& operator=(const SignalBank& o);
  ~SignalBank() = default;
  void copy(const SignalBank& o);

  // Parameters, formats, current values, records and push counts.
  bool operator==(const SignalBank& o) const;
  bool operator!=(const SignalBank& o) const { return !(*this == o); }

  // Writes sample t of component k of signal i when both are in range.
  void write(int i, int k, int t, T v);
  // Records n components (at most the signal's dimension) at time
  // push_cnt[i], unless the record is full.
  void push(int i, const T* v, int n);
  void push(int i, T v) { push(i, &v, 1); }
  // len vectors from a component-major block: vector t is v[0][t] .. v[dim-1][t].
  void push(int i, const T* const* v, int dim, int len);
  // Records every signal's current value.
  void push();

  void set_sig(int i, T v, int k);
  // Copies a whole current vector; dim must be the signal's dimension.
  void set_sig(int i, const T* v, int dim);
  T get_sig(int i) const;
  void get_sig(int i, T* out, int dim) const;

  void reset_sig();
  // Gives signal i a record of len samples, clears it and rewinds its count.
  void reset_buf_onesig(int i, int len);
  void reset_buf();
  void reset_buf(int len);
  void reset_buf(const int* lens, int n);
  // Rewinds every count (or signal i's); recorded samples stay until
  // overwritten.
  void reset_push_cnt();
  void reset_push_cnt(int i);

  T get_sig_t(int i, int t, int k) const;
  // The newest recorded sample of component 0 of signal i, 0 when nothing
  // has been recorded.
  T get_sig_t(int i) const;
  int get_push_cnt(int i) const;
  // Index of the first signal with that name; an unknown name aborts.
  int get_sig_id(const char* name) const;
  std::string get_sig_name(int i) const { return param_->get_name(i); }
  std::string get_bank_name() const { return param_->name; }
  void set_bank_name(const std::string& name) { param_->name = name; }
  int get_num_sig() const { return param_->get_num_sig(); }
  int get_sig_dim(int i) const { return param_->get_sig_dim(i); }
  int get_buf_len(int i) const { return param_->get_buf_len(i); }
  bool get_sig_pFlag(int i) const { return param_->get_pFlag(i); }
  const BufferBankParam& get_param() const { return *param_; }
  const FixedPointParam& get_quant_param(int i) const { return quant_param_[i]; }
  const FixedPoint& get_quantizer(int i) const { return quantizer_[i]; }
  void set_rgate_index(int index) { rgate_index_ = index; }
  int ret_rgate_index() const { return rgate_index_; }

  void set_quantizer(int i, const FixedPointParam& p);
  void set_quantizer(int i, int wlen, int scale, const char* mode);

  unsigned int get_sig_t_uint(int i, int t, int k) const;
  // (int)(v/q), truncated toward zero.
  int get_sig_t_int(int i, int t, int k) const;
  // The sample in LSBs without quantising it: v/q, or v for word length 0.
  double get_sig_t_int_w_fraction(int i, int t, int k) const;
  // neg_zero asks for the negative-zero code instead of the sample's.
  unsigned int get_sig_t_sm(int i, int t, int k, bool neg_zero) const;
  unsigned int get_sig_t_1C(int i, int t, int k, bool neg_zero) const;

  // For every printed signal, the first n = buf_len (len -1) or
  // min(buf_len, len) samples: mode 0 writes the component records (one row
  // of n samples per component) to bank + "_" + signal + ".txt", mode 1 the
  // get_sig_t_uint words to bank + "_" + signal + "_word.txt"; field_width
  // goes to print_2d_table_to_file. Any other mode ends the process (-1).
  void print_to_file(bool append, int len, int mode, int field_width) const;
  // All printed signals side by side in bank + ".txt", one row per time
  // (oldest first, or newest first when reverse), under the line
  // "Column: C\tRow(noHeader): R\tHeader_en: h" and, if header, a line of
  // names ("name[k]" for vector components). Each signal's columns are
  // max(min_width, room for its name and "[k]") wide. words prints the
  // get_sig_t_uint words in decimal, otherwise samples with precision
  // significant digits; a signal whose record is shorter than the row leaves
  // one blank field. len -1 prints the longest record.
  void print_to_one_file(bool append, int len, bool header, int min_width, bool reverse, bool words,
                         int precision) const;
  // Each printed signal's first n samples as the Matlab variable
  // bank + "_" + signal, an n x dim matrix (a row per time step), collected
  // through the writer so long records continue in "xMx" scripts.
  void print_to_M_file(M_file& mf, int len) const;
  // The same into a new script file_name + ".m" (messages to std::cerr).
  void print_to_M_file(const std::string& file_name, int len, int precision, int max_elements) const;
  // Truncates every printed signal's ".txt" and "_word.txt" file.
  void reset_file() const;

 private:
  void new_all(const BufferBankParam& p, const std::vector<FixedPointParam>& q);
  int dim_of(int i) const;
  bool has_sig(int i) const { return i >= 0 && i < get_num_sig(); }
  // Quantises the sample through quantiser i and returns floor(v/q), or the
  // truncated value for word length 0, saturated to 32 bits.
  int32_t quantized_lsbs(int i, int t, int k) const;
  void print_table(int i, int n, int mode, bool append, int field_width) const;

  std::unique_ptr<BufferBankParam> param_;
  std::vector<FixedPointParam> quant_param_;
  std::vector<std::unique_ptr<T[]>> sig_;
  int num_buf_ = 0;
  std::vector<int> buf_start_;
  std::vector<std::unique_ptr<T[]>> buf_;
  std::vector<int> push_cnt_;
  mutable std::vector<FixedPoint> quantizer_;
  int rgate_index_ = -1;
};

// Converts a vector of U to T and sets it as signal i's current value.
template <class T, class U>
void set_sig(SignalBank<T>* bank, int i, const U* v, int dim) {
  std::unique_ptr<T[]> converted(new T[dim > 0 ? dim : 1]());
  for (int k = 0; k < dim; ++k) converted[k] = static_cast<T>(v[k]);
  bank->set_sig(i, converted.get(), dim);
}

// The first n samples of component 0 of signal i, converted to U; samples
// beyond the record come out as 0. A vector signal is read through its first
// component after a warning on the error stream; a bank without that signal
// ends the process (-1).
template <class T, class U>
void copy_sig_t(const SignalBank<T>* bank, int i, int n, U* out) {
  if (bank == nullptr || i < 0 || i >= bank->get_num_sig()) std::exit(-1);
  if (bank->get_sig_dim(i) != 1) std::cerr << "copy_sig_t() only support 1-d signal" << std::endl;
  const int held = bank->get_buf_len(i) < n ? bank->get_buf_len(i) : n;
  for (int t = 0; t < n; ++t) out[t] = t < held ? static_cast<U>(bank->get_sig_t(i, t, 0)) : U(0);
}
