// PliSignalBank<T>: hands signal samples from a software model (the producer)
// to several consumers that read them back one at a time, as a hardware
// simulation does through its "pli_get_sig" calls.
//
// It keeps a ring of num_banks SignalBanks. Per signal the producer fills
// bank 0, 1, 2, ... in turn (a bank is finished when it holds its buffer
// length), bank number b living in slot b mod num_banks, so a new bank
// overwrites the bank num_banks numbers older. Every consumer (caller id
// 0..99) keeps its own position per signal: a bank number and the next index
// in it. A pop first repairs a stale position: if the caller finished its bank
// while newer ones exist, or its slot now holds a newer bank (it fell
// num_banks banks behind), it moves to index 0 of the oldest bank still held
// that is newer than its own. With stop_at_push a caller that has caught up
// with the producer stays where it is instead of running past the data; with
// auto_next_bank a caller that reaches the end of a bank moves to the next.
//
// Tables: fill[sig][slot] samples held in a slot, bank_no[sig][slot] the bank
// number the slot holds (-1 before any), push_bank_idx[sig] the producer's
// bank (-1 before the first push). After reset every slot counts as full,
// so the first push of a signal opens bank 0.
//
// When formats are given and a signal's word length is not 0, popped and
// logged values are its register words (SignalBank::get_sig_t_uint). Logs:
// the signal file "plisb_" + bank + "_" + signal + ".txt" receives the banked
// samples (at each bank switch, on request and on destruction), the pop file
// "plisb_" + bank + "_" + signal + "_pop.txt" the pops requested through
// pli_get_sig_to_file; values are written in lower-case hexadecimal.
//
// Caller ids outside 0..99 end the process (-1) with an error line on
// standard error wherever a caller's position is used; more() answers false
// instead. Unknown signal indices are ignored (reads give 0).
//
// Instantiated for bool, int and double.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "Tools/FixedPoint.h"
#include "Tools/SignalUtil/BufferBankParam.h"
#include "Tools/SignalUtil/SignalBank.h"

template <class T>
class PliSignalBank {
 public:
  // q is null or points at num_sig formats. reserved is not used. user_flag
  // and user_value are kept for the caller (get_user_flag, get_user_value);
  // the bank itself never reads them. A bank count below 1 is taken as 1.
  // With print_signal_files every signal file is truncated here.
  PliSignalBank(const BufferBankParam& param, const FixedPointParam* q, int num_banks, int reserved, bool user_flag,
                int user_value, bool print_signal_files, bool stop_at_push, bool auto_next_bank, bool print_idx,
                bool zero_pad);
  // With print_signal_files the samples not yet logged are logged first.
  ~PliSignalBank();
  PliSignalBank(const PliSignalBank&) = delete;
  PliSignalBank& operator=(const PliSignalBank&) = delete;

  // Forgets every bank and every caller position (records keep their data).
  void reset();

  // Pushes one vector of the signal's dimension into the producer's bank,
  // opening the next bank first when the current one is full.
  void push(int sig, const T* v);
  // A scalar; the other components of a vector signal are pushed as 0.
  void push(int sig, T v);
  // len vectors from a component-major block: vector t is v[0][t] .. v[dim-1][t].
  void push(int sig, const T* const* v, int len);
  // The current value of each of other's signals.
  void push(const SignalBank<T>* other);
  // Writes into the producer's bank directly and counts one more sample.
  void write(int sig, int k, int t, T v);
  // Packs groups of width/step symbols into words, the first symbol of a
  // group most significant (symbol j weighs 2^(width - step*(j+1))), and
  // pushes each word; the last group may be shorter.
  void combine_and_push(int sig, const int* sym, int nsym, int width, int step);

  // Opens the producer's next bank (logging the finished one first); len > 0
  // also resizes the signal's record in the new bank.
  void start_pushing_new_bank(int sig, int len);
  void start_pushing_new_bank_all_sig(int len);
  // lens holds one length per signal; n must be the signal count.
  void start_pushing_new_bank_all_sig(const int* lens, int n);
  // Makes bank b the producer's bank and empties it.
  void start_pushing_this_bank(int sig, int b);
  void start_pushing_this_bank_all_sig(int b);

  // Reads the caller's next sample of sig into out (the signal's dimension),
  // reporting its index and bank number when the pointers are not null.
  void pop(int sig, T* out, int caller, int* idx_out, int* bank_out);
  T pop(int sig, int caller);
  // Register words (two's complement, respectively sign-magnitude); they
  // skip banks the caller has finished and always advance. Without a nonzero
  // word length for the signal the process ends with status 1.
  void pop_t(int sig, unsigned int* out, int caller, int* idx_out, int* bank_out);
  void pop_sm(int sig, unsigned int* out, int caller, int* idx_out, int* bank_out);
  // True when the caller's bank holds a sample at its index.
  bool more(int sig, int caller) const;
  bool more_zero_based(int sig, int caller) const;

  void move_pop_idx_to_next_bank(int sig, int caller);
  void move_pop_idx_to_next_bank_all_sig(int caller);
  // Moves the caller to index 0 of bank number b mod num_banks.
  void move_pop_idx_to_input_bank(int sig, int caller, int b);
  void move_pop_idx_to_input_bank_all_sig(int caller, int b);
  void reset_pop_idx_to_start_of_current_bank(int sig, int caller);

  int get_pop_bank_idx(int caller, int sig) const;
  int get_pop_idx(int caller, int sig) const;
  int get_unifed_bank_index() const { return unified_bank_index_; }
  // -1 for an unknown signal.
  int get_push_bank_idx(int sig) const { return has_sig(sig) ? push_bank_idx_[sig] : -1; }
  // Samples held in, and bank number held by, slot b mod num_banks.
  int get_fill(int sig, int b) const { return has_sig(sig) ? fill_[at(sig, slot_of(b))] : 0; }
  int get_bank_no(int sig, int b) const { return has_sig(sig) ? bank_no_[at(sig, slot_of(b))] : -1; }
  int get_num_banks() const { return num_banks_; }
  int get_sig_id(const char* name) const { return banks_[0].get_sig_id(name); }
  // The bank in slot b mod num_banks.
  SignalBank<T>* ret_sig_bank_pt(int b);
  void set_bank_name(const std::string& name);
  // Keeps at most 49 characters.
  void set_pli_func_name(const char* name);
  const char* get_pli_func_name() const { return pli_func_name_; }
  void set_print_signal_files(bool on) { print_signal_files_ = on; }
  bool get_user_flag() const { return user_flag_; }
  int get_user_value() const { return user_value_; }

  // The bank in slot b mod num_banks dumps itself; b < 0 does nothing.
  void print_to_file(int b, bool append, int len, int mode, int field_width);
  void print_to_one_file(int b, bool append, int len, bool header, int min_width);
  void print_all_sig_files();
  // Appends the samples banked since the last log to the signal file: one
  // line per sample, each component in hexadecimal followed by a blank, then
  // with print_idx the index and the bank number.
  void print_sig_file(int sig);
  // Pops n samples of the named signal for the caller into its pop file: one
  // line per component, the value in hexadecimal, a blank, with print_idx the
  // index and bank number each followed by a blank, then the caller id.
  void pli_get_sig_to_file(const char* name, int caller, int n);
  // One line per caller and signal that popped into the pop files, then the
  // counts restart.
  void print_and_reset_pli_get_count(std::ostream& os);
  void clear_sig_files() const;
  void clear_pop_sig_files() const;
  std::string get_sig_file_name(int sig) const;
  std::string get_pop_sig_file_name(int sig) const;

 private:
  int slot_of(int b) const { return ((b % num_banks_) + num_banks_) % num_banks_; }
  int at(int sig, int slot) const { return sig * num_banks_ + slot; }
  int caller_at(int caller, int sig) const { return caller * num_sig_ + sig; }
  bool has_sig(int sig) const { return sig >= 0 && sig < num_sig_; }
  int dim_of(int sig) const;
  bool quantized(int sig) const { return has_quant_ && quant_[sig].wlen != 0; }
  void check_caller(int caller) const;
  void adjust_pop_idx_and_pop_bank_idx(int sig, int caller);
  // Skips banks the caller has read to their fill, for at most num_banks steps.
  void skip_finished_banks(int sig, int caller);
  // The caller's index and bank out, then the advance and the bank change.
  void finish_pop(int sig, int caller, int slot, int* idx_out, int* bank_out, bool may_stop);
  void pop_words(int sig, unsigned int* out, int caller, int* idx_out, int* bank_out, bool sign_magnitude);
  std::string hex(uint32_t word, int sig) const;
  uint32_t logged_word(int sig, int slot, int t, int k) const;

  std::vector<SignalBank<T>> banks_;
  std::vector<FixedPointParam> quant_;
  bool has_quant_ = false;
  BufferBankParam param_;
  int num_sig_ = 0;
  int num_banks_ = 1;
  int max_num_caller_id_ = 100;
  bool user_flag_ = false;
  int user_value_ = 0;
  bool print_signal_files_ = false;
  char pli_func_name_[50] = {};
  bool stop_at_push_ = false;
  bool auto_next_bank_ = false;
  bool print_idx_ = false;
  bool zero_pad_ = false;
  int unified_bank_index_ = -1;
  std::vector<int> push_bank_idx_;
  std::vector<int> fill_;
  std::vector<int> bank_no_;
  std::vector<int> pop_bank_idx_;
  std::vector<int> pop_idx_;
  std::vector<int> pli_get_count_;
  std::vector<int> unprinted_;
};
