// Bank of signal histories; the ring layout is described in BufferBank.h.
#include "Tools/SignalUtil/BufferBank.h"

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <iostream>

namespace {

const char* const kSourcePath = "Tools/SignalUtil/BufferBank.cpp";

// Character-sized element types print as numbers, not as characters.
template <class T>
auto printable(T v) -> decltype(+v) {
  return +v;
}
double printable(double v) { return v; }
bool printable(bool v) { return v; }

// Decimal digits of |v|; 0 has one.
int decimal_digits(int v) {
  long long m = v < 0 ? -static_cast<long long>(v) : v;
  int digits = 1;
  while (m >= 10) {
    m /= 10;
    ++digits;
  }
  return digits;
}

// A FIFO position not yet pushed is a negative lag; the ring reads it modulo
// its length, so reduce it to that range before it narrows to int.
int fifo_lag(long long lag, int len) { return static_cast<int>(lag < 0 ? lag % len : lag); }

std::ios::openmode open_mode(bool append) { return std::ios::out | (append ? std::ios::app : std::ios::trunc); }

// rings[0 .. nrings-1] side by side, one row per lag from 0 (newest) up to
// rows - 1, or the other way round when reverse.
template <class T>
void print_N_buffers_to_file(const Buffer<T>* rings, int nrings, int rows, const std::string& file, bool append,
                             bool reverse) {
  std::ofstream out(file, open_mode(append));
  for (int r = 0; r < rows; ++r) {
    const int lag = reverse ? rows - 1 - r : r;
    for (int k = 0; k < nrings; ++k) out << printable(rings[k][lag]) << " ";
    out << "\n";
  }
}

}  // namespace

template <class T>
BufferBank<T>::BufferBank() {
  new_all(BufferBankParam(1));
}

template <class T>
BufferBank<T>::BufferBank(const BufferBankParam& p) {
  new_all(p);
}

template <class T>
BufferBank<T>::BufferBank(const BufferBank& o) {
  *this = o;
}

template <class T>
BufferBank<T>& BufferBank<T>::operator=(const BufferBank& o) {
  if (this == &o) return *this;
  new_all(*o.param_);
  for (int i = 0; i < get_num_sig(); ++i) std::copy(o.sig_[i].get(), o.sig_[i].get() + dim_of(i), sig_[i].get());
  buf_ = o.buf_;
  count_ = o.count_;
  return *this;
}

template <class T>
int BufferBank<T>::dim_of(int i) const {
  return std::max(param_->get_sig_dim(i), 0);
}

template <class T>
void BufferBank<T>::new_all(const BufferBankParam& p) {
  param_.reset(new BufferBankParam(p));
  const int n = param_->get_num_sig();
  sig_.clear();
  buf_start_.assign(static_cast<size_t>(n), 0);
  buf_.clear();
  num_buf_ = 0;
  for (int i = 0; i < n; ++i) {
    sig_.emplace_back(new T[dim_of(i)]());
    buf_start_[i] = num_buf_;
    num_buf_ += dim_of(i);
    for (int k = 0; k < dim_of(i); ++k) buf_.emplace_back(param_->get_buf_len(i));
  }
  count_.assign(static_cast<size_t>(n), 0);
  reset_sig();
  reset_buf();
}

template <class T>
bool BufferBank<T>::operator==(const BufferBank& o) const {
  if (*param_ != *o.param_ || num_buf_ != o.num_buf_) return false;
  for (int i = 0; i < get_num_sig(); ++i)
    if (!std::equal(sig_[i].get(), sig_[i].get() + dim_of(i), o.sig_[i].get())) return false;
  return buf_start_ == o.buf_start_ && buf_ == o.buf_ && count_ == o.count_;
}

template <class T>
bool BufferBank<T>::is_sig_id_valid(int i, int dim) const {
  return i >= 0 && i < get_num_sig() && param_->get_sig_dim(i) == dim;
}

template <class T>
bool BufferBank<T>::set_sig(int i, T v) {
  if (!is_sig_id_valid(i, 1)) return false;
  sig_[i][0] = v;
  return true;
}

template <class T>
bool BufferBank<T>::set_sig(int i, const T* v, int dim) {
  if (!is_sig_id_valid(i, dim)) return false;
  std::copy(v, v + dim, sig_[i].get());
  return true;
}

template <class T>
T BufferBank<T>::get_sig(int i) const {
  return is_sig_id_valid(i, 1) ? sig_[i][0] : T(0);
}

template <class T>
bool BufferBank<T>::get_sig(int i, T* out, int dim) const {
  if (!is_sig_id_valid(i, dim)) return false;
  std::copy(sig_[i].get(), sig_[i].get() + dim, out);
  return true;
}

template <class T>
void BufferBank<T>::push() {
  for (int i = 0; i < get_num_sig(); ++i) push(i, sig_[i].get(), dim_of(i));
}

template <class T>
void BufferBank<T>::push(int i, const T* v, int /*dim*/) {
  if (i < 0 || i >= get_num_sig()) return;
  for (int k = 0; k < dim_of(i); ++k) buf_[buf_start_[i] + k].push(v[k]);
  ++count_[i];
}

template <class T>
void BufferBank<T>::push(int i, const T* const* v, int dim, int len) {
  if (i < 0 || i >= get_num_sig()) return;
  std::unique_ptr<T[]> sample(new T[std::max(dim_of(i), dim) + 1]());
  for (int t = 0; t < len; ++t) {
    for (int k = 0; k < dim; ++k) sample[k] = v[k][t];
    push(i, sample.get(), dim);
  }
}

template <class T>
void BufferBank<T>::reset_sig() {
  for (int i = 0; i < get_num_sig(); ++i) std::fill(sig_[i].get(), sig_[i].get() + dim_of(i), T(0));
}

template <class T>
void BufferBank<T>::reset_buf() {
  for (Buffer<T>& b : buf_) b.reset(T(0));
  std::fill(count_.begin(), count_.end(), 0);
}

template <class T>
void BufferBank<T>::reset_buf(const int* lens, int num_buf_len) {
  SIGNAL_UTIL_CHECK(kSourcePath, num_buf_len == param_->get_num_sig(), "num_buf_len == param_->get_num_sig()");
  for (int i = 0; i < num_buf_len; ++i) {
    if (lens[i] == param_->get_buf_len(i)) continue;
    param_->set_buf_len(i, lens[i]);
    for (int k = 0; k < dim_of(i); ++k) buf_[buf_start_[i] + k] = Buffer<T>(lens[i]);
  }
  reset_buf();
}

template <class T>
T BufferBank<T>::get_sig_lat(int i, int lag, int k) const {
  if (i < 0 || i >= get_num_sig() || k < 0 || k >= dim_of(i)) return T(0);
  return buf_[buf_start_[i] + k][lag];
}

template <class T>
int BufferBank<T>::get_sig_lat(int i, T* out, int dim, int lag) const {
  if (!is_sig_id_valid(i, dim)) return 0;
  if (lag >= param_->get_buf_len(i)) return param_->get_buf_len(i);
  for (int k = 0; k < dim; ++k) out[k] = buf_[buf_start_[i] + k][lag];
  return 1;
}

template <class T>
T BufferBank<T>::get_sig_FIFO(int i, int n) const {
  if (!is_sig_id_valid(i, 1)) return T(0);
  const long long lag = static_cast<long long>(count_[i]) - n - 1;
  if (lag >= param_->get_buf_len(i)) return T(0);
  return buf_[buf_start_[i]][fifo_lag(lag, param_->get_buf_len(i))];
}

template <class T>
int BufferBank<T>::get_sig_FIFO(int i, T* out, int dim, int n) const {
  if (!is_sig_id_valid(i, dim)) return 0;
  const long long lag = static_cast<long long>(count_[i]) - n - 1;
  if (lag >= param_->get_buf_len(i)) return param_->get_buf_len(i);
  const int at = fifo_lag(lag, param_->get_buf_len(i));
  for (int k = 0; k < dim; ++k) out[k] = buf_[buf_start_[i] + k][at];
  return 1;
}

template <class T>
const Buffer<T>& BufferBank<T>::operator[](int sig_id) const {
  // A negative index fails the same check: as an unsigned number it is huge.
  SIGNAL_UTIL_CHECK(kSourcePath, sig_id >= 0 && sig_id < param_->get_num_sig() && dim_of(sig_id) > 0,
                    "sig_id < param_->get_num_sig()");
  return buf_[buf_start_[sig_id]];
}

template <class T>
int BufferBank<T>::get_sig_id(const char* name) const {
  int ind = -1;
  for (int i = 0; i < get_num_sig() && ind == -1; ++i)
    if (param_->get_name(i) == name) ind = i;
  if (ind == -1) std::cout << "sig_name=" << name << " is invalid" << std::endl;
  SIGNAL_UTIL_CHECK(kSourcePath, ind != -1, "ind != -1");
  return ind;
}

template <class T>
void BufferBank<T>::print_to_file(bool append, bool reverse, int len) const {
  for (int i = 0; i < get_num_sig(); ++i) {
    if (!param_->get_pFlag(i)) continue;
    const int rows = len == -1 ? param_->get_buf_len(i) : std::min(param_->get_buf_len(i), len);
    const std::string file = param_->name + "_" + param_->get_name(i) + ".txt";
    print_N_buffers_to_file(buf_.data() + buf_start_[i], dim_of(i), rows, file, append, reverse);
  }
}

template <class T>
void BufferBank<T>::print_to_one_file(bool append, bool reverse, int len, bool header) const {
  const int n = get_num_sig();
  std::vector<int> width(static_cast<size_t>(n));
  int maxlen = 0;
  int columns = 0;
  for (int i = 0; i < n; ++i) {
    const int dim = param_->get_sig_dim(i);
    const int name_len = static_cast<int>(param_->get_name(i).size());
    width[i] = std::max(12, name_len + 2 + (dim > 1 ? decimal_digits(dim) + 2 : 0));
    maxlen = std::max(maxlen, param_->get_buf_len(i));
    if (param_->get_pFlag(i)) columns += dim_of(i);
  }
  // -1 means every row; any other negative length prints none.
  const int rows = len != -1 && len <= maxlen ? std::max(len, 0) : maxlen;

  std::ofstream out(param_->name + ".txt", open_mode(append));
  out << "Column: " << columns << "\t" << "Row(noHeader): " << rows << "\t" << "Header_en: " << (header ? 1 : 0)
      << "\n";
  if (header) {
    for (int i = 0; i < n; ++i) {
      if (!param_->get_pFlag(i)) continue;
      if (param_->get_sig_dim(i) == 1) {
        out << std::setw(width[i]) << param_->get_name(i);
        continue;
      }
      for (int k = 0; k < dim_of(i); ++k)
        out << std::setw(width[i] - 2 - decimal_digits(k)) << param_->get_name(i) << "[" << k << "]";
    }
    out << "\n";
  }
  out << std::setprecision(4);
  for (int r = 0; r < rows; ++r) {
    const int lag = reverse ? rows - 1 - r : r;
    for (int i = 0; i < n; ++i) {
      if (!param_->get_pFlag(i)) continue;
      if (param_->get_buf_len(i) > lag) {
        for (int k = 0; k < dim_of(i); ++k) out << std::setw(width[i]) << printable(buf_[buf_start_[i] + k][lag]);
      } else {
        out << std::setw(width[i]) << "";
      }
    }
    out << "\n";
  }
}

template class BufferBank<bool>;
template class BufferBank<int>;
template class BufferBank<double>;

template bool set_sig<double, bool>(BufferBank<double>*, int, const bool*, int);
