// Ring of signal banks between a producer and several consumers; the bank
// numbering and the consumer positions are described in pliSignalBank.h.
#include "Tools/SignalUtil/pliSignalBank.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>

namespace {

// A sample as a 32-bit word for the hexadecimal logs: integers keep their
// two's complement pattern, doubles are truncated toward zero (non-negative
// ones up to 2^32 - 1, so 32-bit register words survive), saturating.
uint32_t word_of(bool v) { return v ? 1u : 0u; }
uint32_t word_of(int v) { return static_cast<uint32_t>(v); }
uint32_t word_of(double v) {
  if (std::isnan(v)) return 0;
  if (v >= 0) return v >= 4294967295.0 ? 0xFFFFFFFFu : static_cast<uint32_t>(v);
  return v <= -2147483648.0 ? 0x80000000u : static_cast<uint32_t>(static_cast<int32_t>(v));
}

}  // namespace

template <class T>
PliSignalBank<T>::PliSignalBank(const BufferBankParam& param, const FixedPointParam* q, int num_banks,
                                 int /*reserved*/, bool user_flag, int user_value, bool print_signal_files,
                                 bool stop_at_push, bool auto_next_bank, bool print_idx, bool zero_pad)
    : has_quant_(q != nullptr),
      param_(param),
      num_sig_(param.get_num_sig()),
      num_banks_(std::max(num_banks, 1)),
      user_flag_(user_flag),
      user_value_(user_value),
      print_signal_files_(print_signal_files),
      stop_at_push_(stop_at_push),
      auto_next_bank_(auto_next_bank),
      print_idx_(print_idx),
      zero_pad_(zero_pad) {
  if (q != nullptr) quant_.assign(q, q + num_sig_);
  banks_.assign(static_cast<size_t>(num_banks_), SignalBank<T>(param_, q));
  push_bank_idx_.assign(static_cast<size_t>(num_sig_), -1);
  fill_.assign(static_cast<size_t>(num_sig_ * num_banks_), 0);
  bank_no_.assign(fill_.size(), -1);
  pop_bank_idx_.assign(static_cast<size_t>(max_num_caller_id_ * num_sig_), 0);
  pop_idx_.assign(pop_bank_idx_.size(), 0);
  pli_get_count_.assign(pop_bank_idx_.size(), 0);
  unprinted_.assign(static_cast<size_t>(num_sig_), 0);
  if (print_signal_files_) clear_sig_files();
  reset();
}

template <class T>
PliSignalBank<T>::~PliSignalBank() {
  if (print_signal_files_) print_all_sig_files();
}

template <class T>
void PliSignalBank<T>::reset() {
  unified_bank_index_ = -1;
  for (int sig = 0; sig < num_sig_; ++sig) {
    push_bank_idx_[sig] = -1;
    for (int s = 0; s < num_banks_; ++s) {
      fill_[at(sig, s)] = banks_[s].get_buf_len(sig);
      bank_no_[at(sig, s)] = -1;
    }
    unprinted_[sig] = 0;
  }
  std::fill(pop_bank_idx_.begin(), pop_bank_idx_.end(), 0);
  std::fill(pop_idx_.begin(), pop_idx_.end(), 0);
  std::fill(pli_get_count_.begin(), pli_get_count_.end(), 0);
}

template <class T>
int PliSignalBank<T>::dim_of(int sig) const {
  return std::max(param_.get_sig_dim(sig), 0);
}

template <class T>
void PliSignalBank<T>::check_caller(int caller) const {
  if (caller >= 0 && caller < max_num_caller_id_) return;
  std::cerr << "Error: caller_id=" << caller << " exceeds max_num_caller_id=" << max_num_caller_id_ << std::endl;
  std::exit(-1);
}

template <class T>
void PliSignalBank<T>::push(int sig, const T* v) {
  if (!has_sig(sig)) return;
  if (fill_[at(sig, slot_of(push_bank_idx_[sig]))] >= banks_[slot_of(push_bank_idx_[sig])].get_buf_len(sig))
    start_pushing_new_bank(sig, -1);
  const int s = slot_of(push_bank_idx_[sig]);
  banks_[s].push(sig, v, dim_of(sig));
  ++fill_[at(sig, s)];
  ++unprinted_[sig];
}

template <class T>
void PliSignalBank<T>::push(int sig, T v) {
  if (!has_sig(sig)) return;
  std::unique_ptr<T[]> vec(new T[dim_of(sig) + 1]());
  vec[0] = v;
  push(sig, vec.get());
}

template <class T>
void PliSignalBank<T>::push(int sig, const T* const* v, int len) {
  if (!has_sig(sig)) return;
  std::unique_ptr<T[]> vec(new T[dim_of(sig) + 1]());
  for (int t = 0; t < len; ++t) {
    for (int k = 0; k < dim_of(sig); ++k) vec[k] = v[k][t];
    push(sig, vec.get());
  }
}

template <class T>
void PliSignalBank<T>::push(const SignalBank<T>* other) {
  for (int sig = 0; sig < std::min(num_sig_, other->get_num_sig()); ++sig) {
    std::unique_ptr<T[]> vec(new T[dim_of(sig) + 1]());
    other->get_sig(sig, vec.get(), dim_of(sig));
    push(sig, vec.get());
  }
}

template <class T>
void PliSignalBank<T>::write(int sig, int k, int t, T v) {
  if (!has_sig(sig)) return;
  const int s = slot_of(push_bank_idx_[sig]);
  banks_[s].write(sig, k, t, v);
  ++fill_[at(sig, s)];
}

template <class T>
void PliSignalBank<T>::combine_and_push(int sig, const int* sym, int nsym, int width, int step) {
  if (step < 1 || width / step < 1) return;
  const int chunk = width / step;
  for (int p = 0; p < nsym; p += chunk) {
    uint32_t word = 0;
    for (int j = 0; j < chunk && p + j < nsym; ++j) {
      const int shift = width - step * (j + 1);
      if (shift < 32) word += static_cast<uint32_t>(sym[p + j]) << shift;
    }
    push(sig, static_cast<T>(word));
  }
}

template <class T>
void PliSignalBank<T>::start_pushing_new_bank(int sig, int len) {
  if (!has_sig(sig)) return;
  if (print_signal_files_) print_sig_file(sig);
  const int b = ++push_bank_idx_[sig];
  const int s = slot_of(b);
  fill_[at(sig, s)] = 0;
  banks_[s].reset_push_cnt(sig);
  bank_no_[at(sig, s)] = b;
  if (len > 0) banks_[s].reset_buf_onesig(sig, len);
}

template <class T>
void PliSignalBank<T>::start_pushing_new_bank_all_sig(int len) {
  for (int sig = 0; sig < num_sig_; ++sig) start_pushing_new_bank(sig, len);
  ++unified_bank_index_;
}

template <class T>
void PliSignalBank<T>::start_pushing_new_bank_all_sig(const int* lens, int n) {
  if (n != num_sig_) {
    std::cout << "num_buf_len != param_->get_num_sig()" << std::endl;
    std::exit(-1);
  }
  for (int sig = 0; sig < num_sig_; ++sig) start_pushing_new_bank(sig, lens[sig]);
  ++unified_bank_index_;
}

template <class T>
void PliSignalBank<T>::start_pushing_this_bank(int sig, int b) {
  if (!has_sig(sig)) return;
  push_bank_idx_[sig] = b;
  const int s = slot_of(b);
  fill_[at(sig, s)] = 0;
  banks_[s].reset_push_cnt(sig);
  bank_no_[at(sig, s)] = b;
}

template <class T>
void PliSignalBank<T>::start_pushing_this_bank_all_sig(int b) {
  for (int sig = 0; sig < num_sig_; ++sig) start_pushing_this_bank(sig, b);
}

template <class T>
void PliSignalBank<T>::adjust_pop_idx_and_pop_bank_idx(int sig, int caller) {
  int& bank = pop_bank_idx_[caller_at(caller, sig)];
  int& idx = pop_idx_[caller_at(caller, sig)];
  const int s = slot_of(bank);
  const bool finished = idx >= fill_[at(sig, s)] && bank < push_bank_idx_[sig];
  if (!finished && bank >= bank_no_[at(sig, s)]) return;
  int oldest_newer = -1;
  for (int slot = 0; slot < num_banks_; ++slot) {
    const int b = bank_no_[at(sig, slot)];
    if (fill_[at(sig, slot)] > 0 && b > bank && (oldest_newer == -1 || b < oldest_newer)) oldest_newer = b;
  }
  if (oldest_newer == -1) return;
  bank = oldest_newer;
  idx = 0;
}

template <class T>
void PliSignalBank<T>::finish_pop(int sig, int caller, int slot, int* idx_out, int* bank_out, bool may_stop) {
  int& idx = pop_idx_[caller_at(caller, sig)];
  if (idx_out) *idx_out = idx;
  if (bank_out) *bank_out = bank_no_[at(sig, slot)];
  const bool caught_up =
      pop_bank_idx_[caller_at(caller, sig)] >= push_bank_idx_[sig] && idx >= fill_[at(sig, slot)];
  if (!(may_stop && stop_at_push_ && caught_up)) ++idx;
  if (auto_next_bank_ && idx >= banks_[slot].get_buf_len(sig)) move_pop_idx_to_next_bank(sig, caller);
}

template <class T>
void PliSignalBank<T>::pop(int sig, T* out, int caller, int* idx_out, int* bank_out) {
  check_caller(caller);
  if (!has_sig(sig)) return;
  adjust_pop_idx_and_pop_bank_idx(sig, caller);
  const int s = slot_of(pop_bank_idx_[caller_at(caller, sig)]);
  const int idx = pop_idx_[caller_at(caller, sig)];
  for (int k = 0; k < dim_of(sig); ++k)
    out[k] = quantized(sig) ? static_cast<T>(banks_[s].get_sig_t_uint(sig, idx, k)) : banks_[s].get_sig_t(sig, idx, k);
  finish_pop(sig, caller, s, idx_out, bank_out, true);
}

template <class T>
T PliSignalBank<T>::pop(int sig, int caller) {
  check_caller(caller);
  if (!has_sig(sig)) return T(0);
  std::unique_ptr<T[]> vec(new T[dim_of(sig) + 1]());
  pop(sig, vec.get(), caller, nullptr, nullptr);
  return vec[0];
}

template <class T>
void PliSignalBank<T>::skip_finished_banks(int sig, int caller) {
  int& bank = pop_bank_idx_[caller_at(caller, sig)];
  int& idx = pop_idx_[caller_at(caller, sig)];
  for (int step = 0; step < num_banks_ && idx >= fill_[at(sig, slot_of(bank))]; ++step) {
    ++bank;
    idx = 0;
  }
}

template <class T>
void PliSignalBank<T>::pop_words(int sig, unsigned int* out, int caller, int* idx_out, int* bank_out,
                                 bool sign_magnitude) {
  check_caller(caller);
  if (!has_sig(sig) || !quantized(sig)) std::exit(1);
  skip_finished_banks(sig, caller);
  const int s = slot_of(pop_bank_idx_[caller_at(caller, sig)]);
  const int idx = pop_idx_[caller_at(caller, sig)];
  for (int k = 0; k < dim_of(sig); ++k)
    out[k] = sign_magnitude ? banks_[s].get_sig_t_sm(sig, idx, k, false) : banks_[s].get_sig_t_uint(sig, idx, k);
  finish_pop(sig, caller, s, idx_out, bank_out, false);
}

template <class T>
void PliSignalBank<T>::pop_t(int sig, unsigned int* out, int caller, int* idx_out, int* bank_out) {
  pop_words(sig, out, caller, idx_out, bank_out, false);
}

template <class T>
void PliSignalBank<T>::pop_sm(int sig, unsigned int* out, int caller, int* idx_out, int* bank_out) {
  pop_words(sig, out, caller, idx_out, bank_out, true);
}

template <class T>
bool PliSignalBank<T>::more(int sig, int caller) const {
  if (caller < 0 || caller >= max_num_caller_id_ || !has_sig(sig)) return false;
  return pop_idx_[caller_at(caller, sig)] < fill_[at(sig, slot_of(pop_bank_idx_[caller_at(caller, sig)]))];
}

template <class T>
bool PliSignalBank<T>::more_zero_based(int sig, int caller) const {
  return more(sig, caller);
}

template <class T>
void PliSignalBank<T>::move_pop_idx_to_next_bank(int sig, int caller) {
  check_caller(caller);
  if (!has_sig(sig)) return;
  pop_idx_[caller_at(caller, sig)] = 0;
  ++pop_bank_idx_[caller_at(caller, sig)];
}

template <class T>
void PliSignalBank<T>::move_pop_idx_to_next_bank_all_sig(int caller) {
  for (int sig = 0; sig < num_sig_; ++sig) move_pop_idx_to_next_bank(sig, caller);
}

template <class T>
void PliSignalBank<T>::move_pop_idx_to_input_bank(int sig, int caller, int b) {
  check_caller(caller);
  if (!has_sig(sig)) return;
  pop_idx_[caller_at(caller, sig)] = 0;
  pop_bank_idx_[caller_at(caller, sig)] = slot_of(b);
}

template <class T>
void PliSignalBank<T>::move_pop_idx_to_input_bank_all_sig(int caller, int b) {
  for (int sig = 0; sig < num_sig_; ++sig) move_pop_idx_to_input_bank(sig, caller, b);
}

template <class T>
void PliSignalBank<T>::reset_pop_idx_to_start_of_current_bank(int sig, int caller) {
  check_caller(caller);
  if (has_sig(sig)) pop_idx_[caller_at(caller, sig)] = 0;
}

template <class T>
int PliSignalBank<T>::get_pop_bank_idx(int caller, int sig) const {
  check_caller(caller);
  return has_sig(sig) ? pop_bank_idx_[caller_at(caller, sig)] : 0;
}

template <class T>
int PliSignalBank<T>::get_pop_idx(int caller, int sig) const {
  check_caller(caller);
  return has_sig(sig) ? pop_idx_[caller_at(caller, sig)] : 0;
}

template <class T>
SignalBank<T>* PliSignalBank<T>::ret_sig_bank_pt(int b) {
  return &banks_[slot_of(b)];
}

template <class T>
void PliSignalBank<T>::set_bank_name(const std::string& name) {
  param_.name = name;
  for (SignalBank<T>& bank : banks_) bank.set_bank_name(name);
}

template <class T>
void PliSignalBank<T>::set_pli_func_name(const char* name) {
  std::snprintf(pli_func_name_, sizeof pli_func_name_, "%s", name ? name : "");
}

template <class T>
void PliSignalBank<T>::print_to_file(int b, bool append, int len, int mode, int field_width) {
  if (b >= 0) banks_[slot_of(b)].print_to_file(append, len, mode, field_width);
}

template <class T>
void PliSignalBank<T>::print_to_one_file(int b, bool append, int len, bool header, int min_width) {
  if (b >= 0) banks_[slot_of(b)].print_to_one_file(append, len, header, min_width, false, false, 4);
}

template <class T>
void PliSignalBank<T>::print_all_sig_files() {
  for (int sig = 0; sig < num_sig_; ++sig) print_sig_file(sig);
}

// ceil(w/4) digits when zero_pad, w being the signal's word length (1 when
// the bank has no formats).
template <class T>
std::string PliSignalBank<T>::hex(uint32_t word, int sig) const {
  const int w = has_quant_ ? quant_[sig].wlen : 1;
  const int digits = zero_pad_ ? std::min((w + 3) / 4, 16) : 0;
  char text[32];
  std::snprintf(text, sizeof text, "%0*x", digits, word);
  return text;
}

template <class T>
uint32_t PliSignalBank<T>::logged_word(int sig, int slot, int t, int k) const {
  return quantized(sig) ? banks_[slot].get_sig_t_uint(sig, t, k) : word_of(banks_[slot].get_sig_t(sig, t, k));
}

// A caller that switched logging on late may have more unlogged samples than
// the bank holds; only those held are written.
template <class T>
void PliSignalBank<T>::print_sig_file(int sig) {
  if (!print_signal_files_ || !has_sig(sig) || push_bank_idx_[sig] < 0) return;
  const int s = slot_of(push_bank_idx_[sig]);
  const int fill = fill_[at(sig, s)];
  std::ofstream out(get_sig_file_name(sig), std::ios::out | std::ios::app);
  for (int t = std::max(fill - unprinted_[sig], 0); t < fill; ++t) {
    for (int k = 0; k < dim_of(sig); ++k) out << hex(logged_word(sig, s, t, k), sig) << " ";
    if (print_idx_) out << t << " " << push_bank_idx_[sig];
    out << "\n";
  }
  unprinted_[sig] = 0;
}

template <class T>
void PliSignalBank<T>::pli_get_sig_to_file(const char* name, int caller, int n) {
  const int sig = get_sig_id(name);
  check_caller(caller);
  std::unique_ptr<T[]> vec(new T[dim_of(sig) + 1]());
  std::ofstream out(get_pop_sig_file_name(sig), std::ios::out | std::ios::app);
  for (int p = 0; p < n; ++p) {
    int idx = 0, bank = 0;
    pop(sig, vec.get(), caller, &idx, &bank);
    for (int k = 0; k < dim_of(sig); ++k) {
      out << hex(word_of(vec[k]), sig) << " ";
      if (print_idx_) out << idx << " " << bank << " ";
      out << caller << "\n";
    }
    ++pli_get_count_[caller_at(caller, sig)];
  }
}

template <class T>
void PliSignalBank<T>::print_and_reset_pli_get_count(std::ostream& os) {
  for (int caller = 0; caller < max_num_caller_id_; ++caller)
    for (int sig = 0; sig < num_sig_; ++sig)
      if (pli_get_count_[caller_at(caller, sig)] > 0)
        os << "pli_get_sig" << "\t " << param_.name << "\t " << caller << "\t " << param_.get_name(sig) << "\t "
           << pli_get_count_[caller_at(caller, sig)] << "\n";
  std::fill(pli_get_count_.begin(), pli_get_count_.end(), 0);
}

template <class T>
void PliSignalBank<T>::clear_sig_files() const {
  for (int sig = 0; sig < num_sig_; ++sig) std::ofstream(get_sig_file_name(sig), std::ios::out | std::ios::trunc);
}

template <class T>
void PliSignalBank<T>::clear_pop_sig_files() const {
  for (int sig = 0; sig < num_sig_; ++sig) std::ofstream(get_pop_sig_file_name(sig), std::ios::out | std::ios::trunc);
}

template <class T>
std::string PliSignalBank<T>::get_sig_file_name(int sig) const {
  return "plisb_" + param_.name + "_" + param_.get_name(sig) + ".txt";
}

template <class T>
std::string PliSignalBank<T>::get_pop_sig_file_name(int sig) const {
  return "plisb_" + param_.name + "_" + param_.get_name(sig) + "_pop.txt";
}

template class PliSignalBank<bool>;
template class PliSignalBank<int>;
template class PliSignalBank<double>;
