// BufferBank<T>: the recent history of a set of named signals, each a small
// vector of T, kept as one ring (Buffer<T>) per signal component.
//
// Signal i owns rings buf_start[i] .. buf_start[i] + sig_dim[i] - 1, where
// buf_start is the running sum of the dimensions in signal order, and every
// one of them holds the last buf_len[i] samples. A model stages the current
// value of each signal (set_sig) and push() moves all of them into the rings
// at once; reads look back by latency (lag 0 = newest) or forward in arrival
// order (FIFO), using count[i], the number of samples pushed since the last
// buffer reset: the n-th sample to arrive is count[i] - n - 1 steps back, and
// only the newest buf_len[i] of them are still held.
//
// Reads and writes with a wrong signal index or dimension report it through
// their result (validity 0, T(0) or the buffer length) and never abort;
// negative indices are invalid like too large ones.
//
// Instantiated for bool, int and double.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Tools/SignalUtil/BufferBankParam.h"
#include "Tools/SignalUtil/SmallTCL.h"

template <class T>
class BufferBank {
 public:
  // One signal of dimension 1 and history 1.
  BufferBank();
  explicit BufferBank(const BufferBankParam& p);
  BufferBank(const BufferBank& o);
  BufferBank& operator=(const BufferBank& o);
  ~BufferBank() = default;

  bool operator==(const BufferBank& o) const;
  bool operator!=(const BufferBank& o) const { return !(*this == o); }

  // True when signal i exists and has exactly dim components.
  bool is_sig_id_valid(int i, int dim) const;

  // Stage the current value; the result is the validity of (i, dim).
  bool set_sig(int i, T v);
  bool set_sig(int i, const T* v, int dim);
  T get_sig(int i) const;
  bool get_sig(int i, T* out, int dim) const;

  // Pushes every signal's current value.
  void push();
  // Pushes the signal's own number of components from v, whatever dim says;
  // an unknown signal is ignored.
  void push(int i, const T* v, int dim);
  // Pushes len samples in time order from a component-major block: sample t
  // is v[0][t] .. v[dim-1][t]. Components the block lacks are pushed as T(0).
  void push(int i, const T* const* v, int dim, int len);

  void reset_sig();
  // Clears every ring to T(0) and the FIFO counts to 0.
  void reset_buf();
  // Gives signal i the history length lens[i] (n must be the signal count),
  // then clears everything as reset_buf().
  void reset_buf(const int* lens, int n);

  // Component k of signal i, lag steps back. The lag goes to the ring
  // unchecked (a lag of at least the history length aborts); an unknown
  // signal or component reads T(0).
  T get_sig_lat(int i, int lag, int k) const;
  // Returns 0 for an invalid (i, dim), buf_len[i] (copying nothing) when lag
  // is not below it, else 1 after copying the components.
  int get_sig_lat(int i, T* out, int dim, int lag) const;
  // The n-th sample (0 = oldest pushed since the last reset) of a
  // one-component signal; T(0) once it has left the ring. n must stay below
  // the count: a larger n is a negative lag, read modulo the ring length.
  T get_sig_FIFO(int i, int n) const;
  int get_sig_FIFO(int i, T* out, int dim, int n) const;

  // The first ring of signal i.
  const Buffer<T>& operator[](int sig_id) const;
  // Index of the first signal with that name; an unknown name aborts.
  int get_sig_id(const char* name) const;
  int get_num_sig() const { return param_->get_num_sig(); }
  int get_sig_dim(int i) const { return param_->get_sig_dim(i); }
  int get_count(int i) const { return count_[i]; }
  const BufferBankParam& get_param() const { return *param_; }

  // One file per printed signal, bank name + "_" + signal name + ".txt": a
  // row per lag, a column per component, every value followed by a blank.
  // len -1 prints the whole history, otherwise at most len rows; reverse puts
  // the oldest row first.
  void print_to_file(bool append, bool reverse, int len) const;
  // All printed signals side by side in bank name + ".txt", under a line that
  // gives the column and row counts, and optionally a header of names. Each
  // signal's columns are at least 12 wide and fit its name with "[k]"; values
  // carry 4 significant digits; a signal whose history is shorter than the
  // row leaves one blank field.
  void print_to_one_file(bool append, bool reverse, int len, bool header) const;

 private:
  void new_all(const BufferBankParam& p);
  // Size of every per-signal array; 0 for a negative dimension.
  int dim_of(int i) const;

  std::unique_ptr<BufferBankParam> param_;
  std::vector<std::unique_ptr<T[]>> sig_;
  int num_buf_ = 0;
  std::vector<int> buf_start_;
  std::vector<Buffer<T>> buf_;
  std::vector<int> count_;
};

// Converts a vector of U to T and stages it as signal i's current value.
template <class T, class U>
bool set_sig(BufferBank<T>* bank, int i, const U* v, int dim) {
  std::unique_ptr<T[]> converted(new T[dim > 0 ? dim : 1]());
  for (int k = 0; k < dim; ++k) converted[k] = static_cast<T>(v[k]);
  return bank->set_sig(i, converted.get(), dim);
}
