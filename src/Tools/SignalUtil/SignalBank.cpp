// Recording signal banks with per-signal quantisers; the record layout and
// the word encodings are described in SignalBank.h.
#include "Tools/SignalUtil/SignalBank.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <limits>

#include "Tools/SignalUtil/SmallTCL.h"
#include "Tools/utilities.h"

namespace {

const char* const kSourcePath = "Tools/SignalUtil/SignalBank.cpp";

const FixedPointParam kUnquantized(0, 0, "");

// double -> int32 as the target's conversion instruction does it: toward
// zero, saturating at the range ends, NaN to 0.
int32_t saturating_int32(double x) {
  if (std::isnan(x)) return 0;
  if (x <= static_cast<double>(std::numeric_limits<int32_t>::min())) return std::numeric_limits<int32_t>::min();
  if (x >= static_cast<double>(std::numeric_limits<int32_t>::max())) return std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(x);
}

// 2^s in a 32-bit register: shifts of 32 or more leave nothing.
uint32_t pow2(int s) { return s >= 0 && s < 32 ? uint32_t(1) << s : 0; }

int decimal_digits(int v) {
  long long m = v < 0 ? -static_cast<long long>(v) : v;
  int digits = 1;
  for (; m >= 10; m /= 10) ++digits;
  return digits;
}

std::ios::openmode open_mode(bool append) { return std::ios::out | (append ? std::ios::app : std::ios::trunc); }

template <class T>
auto printable(T v) -> decltype(+v) {
  return +v;
}
double printable(double v) { return v; }
bool printable(bool v) { return v; }

}  // namespace

template <class T>
SignalBank<T>::SignalBank() {
  new_all(BufferBankParam(1), {});
}

template <class T>
SignalBank<T>::SignalBank(const BufferBankParam& p, const FixedPointParam* q) {
  std::vector<FixedPointParam> formats;
  if (q != nullptr) formats.assign(q, q + p.get_num_sig());
  new_all(p, formats);
}

template <class T>
SignalBank<T>::SignalBank(const BufferBankParam& p, std::vector<FixedPointParam> q) {
  new_all(p, q);
}

template <class T>
SignalBank<T>::SignalBank(const SignalBank& o) {
  copy(o);
}

template <class T>
SignalBank<T>& SignalBank<T>::operator=(const SignalBank& o) {
  copy(o);
  return *this;
}

template <class T>
void SignalBank<T>::copy(const SignalBank& o) {
  if (this == &o) return;
  new_all(*o.param_, o.quant_param_);
  for (int i = 0; i < get_num_sig(); ++i) std::copy(o.sig_[i].get(), o.sig_[i].get() + dim_of(i), sig_[i].get());
  for (int i = 0; i < get_num_sig(); ++i)
    for (int k = 0; k < dim_of(i); ++k) {
      const int len = std::max(get_buf_len(i), 0);
      std::copy(o.buf_[buf_start_[i] + k].get(), o.buf_[buf_start_[i] + k].get() + len, buf_[buf_start_[i] + k].get());
    }
  push_cnt_ = o.push_cnt_;
  rgate_index_ = o.rgate_index_;
}

template <class T>
int SignalBank<T>::dim_of(int i) const {
  return std::max(param_->get_sig_dim(i), 0);
}

// A format list that does not cover every signal is not trusted: all
// signals are then left unquantised.
template <class T>
void SignalBank<T>::new_all(const BufferBankParam& p, const std::vector<FixedPointParam>& q) {
  param_.reset(new BufferBankParam(p));
  const int n = get_num_sig();
  quant_param_ = static_cast<int>(q.size()) == n ? q : std::vector<FixedPointParam>(static_cast<size_t>(n), kUnquantized);
  sig_.clear();
  buf_.clear();
  buf_start_.assign(static_cast<size_t>(n), 0);
  num_buf_ = 0;
  for (int i = 0; i < n; ++i) {
    sig_.emplace_back(new T[dim_of(i)]());
    buf_start_[i] = num_buf_;
    num_buf_ += dim_of(i);
    for (int k = 0; k < dim_of(i); ++k) buf_.emplace_back(new T[std::max(get_buf_len(i), 0)]());
  }
  push_cnt_.assign(static_cast<size_t>(n), 0);
  quantizer_.assign(static_cast<size_t>(n), FixedPoint(0, 0, ""));
  for (int i = 0; i < n; ++i) set_quantizer(i, quant_param_[i]);
  reset_sig();
  reset_buf();
  rgate_index_ = -1;
}

template <class T>
bool SignalBank<T>::operator==(const SignalBank& o) const {
  if (*param_ != *o.param_ || quant_param_ != o.quant_param_ || push_cnt_ != o.push_cnt_) return false;
  for (int i = 0; i < get_num_sig(); ++i) {
    if (!std::equal(sig_[i].get(), sig_[i].get() + dim_of(i), o.sig_[i].get())) return false;
    for (int k = 0; k < dim_of(i); ++k) {
      const T* a = buf_[buf_start_[i] + k].get();
      if (!std::equal(a, a + std::max(get_buf_len(i), 0), o.buf_[buf_start_[i] + k].get())) return false;
    }
  }
  return true;
}

template <class T>
void SignalBank<T>::write(int i, int k, int t, T v) {
  if (!has_sig(i) || k < 0 || k >= dim_of(i) || t < 0 || t >= get_buf_len(i)) return;
  buf_[buf_start_[i] + k][t] = v;
}

template <class T>
void SignalBank<T>::push(int i, const T* v, int n) {
  if (!has_sig(i) || push_cnt_[i] >= get_buf_len(i)) return;
  for (int k = 0; k < std::min(n, dim_of(i)); ++k) buf_[buf_start_[i] + k][push_cnt_[i]] = v[k];
  ++push_cnt_[i];
}

template <class T>
void SignalBank<T>::push(int i, const T* const* v, int dim, int len) {
  std::unique_ptr<T[]> sample(new T[std::max(dim, 0) + 1]());
  for (int t = 0; t < len; ++t) {
    for (int k = 0; k < dim; ++k) sample[k] = v[k][t];
    push(i, sample.get(), dim);
  }
}

template <class T>
void SignalBank<T>::push() {
  for (int i = 0; i < get_num_sig(); ++i) push(i, sig_[i].get(), dim_of(i));
}

template <class T>
void SignalBank<T>::set_sig(int i, T v, int k) {
  if (has_sig(i) && k >= 0 && k < dim_of(i)) sig_[i][k] = v;
}

template <class T>
void SignalBank<T>::set_sig(int i, const T* v, int dim) {
  if (has_sig(i) && dim == get_sig_dim(i) && dim >= 1) std::copy(v, v + dim, sig_[i].get());
}

template <class T>
T SignalBank<T>::get_sig(int i) const {
  return has_sig(i) && get_sig_dim(i) == 1 ? sig_[i][0] : T(0);
}

template <class T>
void SignalBank<T>::get_sig(int i, T* out, int dim) const {
  if (has_sig(i) && dim == get_sig_dim(i) && dim >= 1) std::copy(sig_[i].get(), sig_[i].get() + dim, out);
}

template <class T>
void SignalBank<T>::reset_sig() {
  for (int i = 0; i < get_num_sig(); ++i) std::fill(sig_[i].get(), sig_[i].get() + dim_of(i), T(0));
}

template <class T>
void SignalBank<T>::reset_buf_onesig(int i, int len) {
  if (!has_sig(i)) return;
  if (len != get_buf_len(i)) {
    param_->set_buf_len(i, len);
    for (int k = 0; k < dim_of(i); ++k) buf_[buf_start_[i] + k].reset(new T[std::max(len, 0)]);
  }
  for (int k = 0; k < dim_of(i); ++k) std::fill(buf_[buf_start_[i] + k].get(), buf_[buf_start_[i] + k].get() + std::max(len, 0), T(0));
  push_cnt_[i] = 0;
}

template <class T>
void SignalBank<T>::reset_buf() {
  for (int i = 0; i < get_num_sig(); ++i) reset_buf_onesig(i, get_buf_len(i));
}

template <class T>
void SignalBank<T>::reset_buf(int len) {
  for (int i = 0; i < get_num_sig(); ++i) reset_buf_onesig(i, len);
}

template <class T>
void SignalBank<T>::reset_buf(const int* lens, int n) {
  for (int i = 0; i < std::min(n, get_num_sig()); ++i) reset_buf_onesig(i, lens[i]);
}

template <class T>
void SignalBank<T>::reset_push_cnt() {
  std::fill(push_cnt_.begin(), push_cnt_.end(), 0);
}

template <class T>
void SignalBank<T>::reset_push_cnt(int i) {
  if (has_sig(i)) push_cnt_[i] = 0;
}

template <class T>
T SignalBank<T>::get_sig_t(int i, int t, int k) const {
  if (!has_sig(i) || k < 0 || k >= dim_of(i) || t < 0 || t >= get_buf_len(i)) return T(0);
  return buf_[buf_start_[i] + k][t];
}

template <class T>
T SignalBank<T>::get_sig_t(int i) const {
  return has_sig(i) && push_cnt_[i] > 0 ? get_sig_t(i, push_cnt_[i] - 1, 0) : T(0);
}

template <class T>
int SignalBank<T>::get_push_cnt(int i) const {
  return has_sig(i) ? push_cnt_[i] : 0;
}

template <class T>
int SignalBank<T>::get_sig_id(const char* name) const {
  int ind = -1;
  for (int i = 0; i < get_num_sig() && ind == -1; ++i)
    if (param_->get_name(i) == name) ind = i;
  SIGNAL_UTIL_CHECK(kSourcePath, ind != -1, "ind != -1");
  return ind;
}

template <class T>
void SignalBank<T>::set_quantizer(int i, const FixedPointParam& p) {
  set_quantizer(i, p.wlen, p.scale, p.mode.c_str());
}

template <class T>
void SignalBank<T>::set_quantizer(int i, int wlen, int scale, const char* mode) {
  if (!has_sig(i)) return;
  quant_param_[i] = FixedPointParam(wlen, scale, mode ? mode : "");
  quantizer_[i].set_format(wlen, scale, mode);
}

template <class T>
int32_t SignalBank<T>::quantized_lsbs(int i, int t, int k) const {
  FixedPoint& fp = quantizer_[i];
  fp = static_cast<double>(get_sig_t(i, t, k));
  return fp.get_wlen() != 0 ? saturating_int32(std::floor(fp.get_val() / fp.get_quantum()))
                            : saturating_int32(fp.get_val());
}

template <class T>
unsigned int SignalBank<T>::get_sig_t_uint(int i, int t, int k) const {
  if (!has_sig(i)) return 0;
  const int32_t n = quantized_lsbs(i, t, k);
  const FixedPoint& fp = quantizer_[i];
  if (fp.get_wlen() != 0 && fp.is_signed() && !fp.is_sign_mag_family() && n < 0)
    return static_cast<uint32_t>(n) + pow2(fp.get_wlen());
  return static_cast<uint32_t>(n);
}

template <class T>
int SignalBank<T>::get_sig_t_int(int i, int t, int k) const {
  if (!has_sig(i)) return 0;
  quantized_lsbs(i, t, k);
  const FixedPoint& fp = quantizer_[i];
  return saturating_int32(fp.get_val() / fp.get_quantum());
}

template <class T>
double SignalBank<T>::get_sig_t_int_w_fraction(int i, int t, int k) const {
  if (!has_sig(i)) return 0.0;
  FixedPoint& fp = quantizer_[i];
  fp.set_val_unquantized(static_cast<double>(get_sig_t(i, t, k)));
  return fp.get_wlen() != 0 ? fp.get_val() / fp.get_quantum() : fp.get_val();
}

template <class T>
unsigned int SignalBank<T>::get_sig_t_sm(int i, int t, int k, bool neg_zero) const {
  if (!has_sig(i)) return 0;
  const int32_t n = quantized_lsbs(i, t, k);
  const FixedPoint& fp = quantizer_[i];
  if (fp.get_wlen() == 0) return neg_zero ? 0 : static_cast<uint32_t>(n);
  const uint32_t sign_bit = pow2(fp.get_wlen() - 1);
  if (neg_zero) return sign_bit;
  if (fp.is_signed() && n < 0) return sign_bit - static_cast<uint32_t>(n);
  return static_cast<uint32_t>(n);
}

template <class T>
unsigned int SignalBank<T>::get_sig_t_1C(int i, int t, int k, bool neg_zero) const {
  if (!has_sig(i)) return 0;
  const int32_t n = quantized_lsbs(i, t, k);
  const FixedPoint& fp = quantizer_[i];
  if (fp.get_wlen() == 0) return neg_zero ? 0 : static_cast<uint32_t>(n);
  const uint32_t all_ones = pow2(fp.get_wlen()) - 1;
  if (neg_zero) return all_ones;
  if (fp.is_signed() && n < 0) return static_cast<uint32_t>(n) + all_ones;
  return static_cast<uint32_t>(n);
}

template <class T>
void SignalBank<T>::print_table(int i, int n, int mode, bool append, int field_width) const {
  const std::string stem = param_->name + "_" + param_->get_name(i);
  const int dim = dim_of(i);
  if (mode == 0) {
    std::vector<const T*> rows;
    for (int k = 0; k < dim; ++k) rows.push_back(buf_[buf_start_[i] + k].get());
    print_2d_table_to_file(rows.data(), dim, n, stem + ".txt", append, field_width);
    return;
  }
  std::vector<std::vector<unsigned int>> words(static_cast<size_t>(dim), std::vector<unsigned int>(static_cast<size_t>(n)));
  std::vector<const unsigned int*> rows;
  for (int k = 0; k < dim; ++k) {
    for (int t = 0; t < n; ++t) words[k][t] = get_sig_t_uint(i, t, k);
    rows.push_back(words[k].data());
  }
  print_2d_table_to_file(rows.data(), dim, n, stem + "_word.txt", append, field_width);
}

template <class T>
void SignalBank<T>::print_to_file(bool append, int len, int mode, int field_width) const {
  if (mode != 0 && mode != 1) std::exit(-1);
  for (int i = 0; i < get_num_sig(); ++i) {
    if (!get_sig_pFlag(i)) continue;
    const int n = std::max(len == -1 ? get_buf_len(i) : std::min(get_buf_len(i), len), 0);
    print_table(i, n, mode, append, field_width);
  }
}

template <class T>
void SignalBank<T>::print_to_one_file(bool append, int len, bool header, int min_width, bool reverse, bool words,
                                      int precision) const {
  const int n = get_num_sig();
  std::vector<int> width(static_cast<size_t>(n));
  int maxlen = 0;
  int columns = 0;
  for (int i = 0; i < n; ++i) {
    const int dim = get_sig_dim(i);
    const int name_len = static_cast<int>(get_sig_name(i).size());
    width[i] = std::max(min_width, name_len + 2 + (dim > 1 ? decimal_digits(dim) + 2 : 0));
    maxlen = std::max(maxlen, get_buf_len(i));
    if (get_sig_pFlag(i)) columns += dim_of(i);
  }
  const int rows = len != -1 && len <= maxlen ? std::max(len, 0) : maxlen;

  std::ofstream out(param_->name + ".txt", open_mode(append));
  out << "Column: " << columns << "\t" << "Row(noHeader): " << rows << "\t" << "Header_en: " << (header ? 1 : 0)
      << "\n";
  if (header) {
    for (int i = 0; i < n; ++i) {
      if (!get_sig_pFlag(i)) continue;
      if (get_sig_dim(i) == 1) {
        out << std::setw(width[i]) << get_sig_name(i);
        continue;
      }
      for (int k = 0; k < dim_of(i); ++k)
        out << std::setw(width[i] - 2 - decimal_digits(k)) << get_sig_name(i) << "[" << k << "]";
    }
    out << "\n";
  }
  out << std::setprecision(precision);
  for (int r = 0; r < rows; ++r) {
    const int t = reverse ? rows - 1 - r : r;
    for (int i = 0; i < n; ++i) {
      if (!get_sig_pFlag(i)) continue;
      if (t >= get_buf_len(i)) {
        out << std::setw(width[i]) << "";
        continue;
      }
      for (int k = 0; k < dim_of(i); ++k) {
        out << std::setw(width[i]);
        if (words)
          out << get_sig_t_uint(i, t, k);
        else
          out << printable(get_sig_t(i, t, k));
      }
    }
    out << "\n";
  }
}

template <class T>
void SignalBank<T>::print_to_M_file(M_file& mf, int len) const {
  for (int i = 0; i < get_num_sig(); ++i) {
    if (!get_sig_pFlag(i) || dim_of(i) == 0) continue;
    const int n = std::max(len == -1 ? get_buf_len(i) : std::min(get_buf_len(i), len), 0);
    const std::string var = param_->name + "_" + get_sig_name(i);
    mf.StartCollecting(var, dim_of(i));
    for (int t = 0; t < n; ++t)
      for (int k = 0; k < dim_of(i); ++k) mf.Append(var, buf_[buf_start_[i] + k][t]);
    mf.FinishCollecting(var);
  }
}

template <class T>
void SignalBank<T>::print_to_M_file(const std::string& file_name, int len, int precision, int max_elements) const {
  M_file mf(file_name, precision, max_elements, &std::cerr);
  print_to_M_file(mf, len);
}

template <class T>
void SignalBank<T>::reset_file() const {
  for (int i = 0; i < get_num_sig(); ++i) {
    if (!get_sig_pFlag(i)) continue;
    const std::string stem = param_->name + "_" + get_sig_name(i);
    std::ofstream(stem + ".txt", std::ios::out | std::ios::trunc);
    std::ofstream(stem + "_word.txt", std::ios::out | std::ios::trunc);
  }
}

template class SignalBank<bool>;
template class SignalBank<int>;
template class SignalBank<double>;
template class SignalBank<unsigned char>;
