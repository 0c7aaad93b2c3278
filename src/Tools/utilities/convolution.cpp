#include "Tools/utilities/convolution.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "Tools/utilities/fft.h"

namespace tools {

namespace {

double conjugate(double v) { return v; }
Complex conjugate(Complex v) { return std::conj(v); }
double fromComplex(Complex v, double*) { return v.real(); }
Complex fromComplex(Complex v, Complex*) { return v; }

template <typename T>
std::vector<T> reversedConjugate(const std::vector<T>& y) {
  std::vector<T> r(y.rbegin(), y.rend());
  for (T& v : r) v = conjugate(v);
  return r;
}

template <typename T>
void checkEqualLengths(const std::vector<T>& x, const std::vector<T>& y, const char* what) {
  if (x.size() != y.size())
    throw std::invalid_argument(std::string(what) + ": lengths " + std::to_string(x.size()) + " and " +
                                std::to_string(y.size()) + " differ");
}

// Circular convolution of length L of x and y (each zero-padded to L).
template <typename T>
std::vector<T> fftCircular(const std::vector<T>& x, const std::vector<T>& y, size_t L) {
  const Fft plan(L);
  std::vector<Complex> a(L, Complex(0, 0)), b(L, Complex(0, 0));
  std::copy(x.begin(), x.end(), a.begin());
  std::copy(y.begin(), y.end(), b.begin());
  plan.forward(a);
  plan.forward(b);
  for (size_t j = 0; j < L; ++j) a[j] *= b[j];
  plan.inverse(a);
  std::vector<T> out(L);
  for (size_t j = 0; j < L; ++j) out[j] = fromComplex(a[j], static_cast<T*>(nullptr));
  return out;
}

}  // namespace

template <typename T>
std::vector<T> convolveDirect(const std::vector<T>& x, const std::vector<T>& y) {
  if (x.empty() || y.empty()) return {};
  std::vector<T> out(x.size() + y.size() - 1, T(0));
  for (size_t t = 0; t < x.size(); ++t)
    for (size_t s = 0; s < y.size(); ++s) out[t + s] += x[t] * y[s];
  return out;
}

template <typename T>
std::vector<T> convolveFft(const std::vector<T>& x, const std::vector<T>& y) {
  if (x.empty() || y.empty()) return {};
  const size_t len = x.size() + y.size() - 1;
  size_t L = 1;
  while (L < len) L <<= 1;
  std::vector<T> out = fftCircular(x, y, L);
  out.resize(len);
  return out;
}

template <typename T>
std::vector<T> circularConvolveDirect(const std::vector<T>& x, const std::vector<T>& y) {
  checkEqualLengths(x, y, "circularConvolveDirect");
  const size_t n = x.size();
  std::vector<T> out(n, T(0));
  for (size_t t = 0; t < n; ++t)
    for (size_t s = 0; s < n; ++s) out[(t + s) % n] += x[t] * y[s];
  return out;
}

template <typename T>
std::vector<T> circularConvolveFft(const std::vector<T>& x, const std::vector<T>& y) {
  checkEqualLengths(x, y, "circularConvolveFft");
  return x.empty() ? std::vector<T>{} : fftCircular(x, y, x.size());
}

template <typename T>
std::vector<T> correlateDirect(const std::vector<T>& x, const std::vector<T>& y) {
  return convolveDirect(x, reversedConjugate(y));
}

template <typename T>
std::vector<T> correlateFft(const std::vector<T>& x, const std::vector<T>& y) {
  return convolveFft(x, reversedConjugate(y));
}

template <typename T>
std::vector<T> circularCorrelateDirect(const std::vector<T>& x, const std::vector<T>& y) {
  checkEqualLengths(x, y, "circularCorrelateDirect");
  const size_t n = x.size();
  std::vector<T> out(n, T(0));
  for (size_t j = 0; j < n; ++j)
    for (size_t t = 0; t < n; ++t) out[j] += x[(t + j) % n] * conjugate(y[t]);
  return out;
}

template <typename T>
std::vector<T> circularCorrelateFft(const std::vector<T>& x, const std::vector<T>& y) {
  checkEqualLengths(x, y, "circularCorrelateFft");
  if (x.empty()) return {};
  // r[j] = sum_t x[t+j] conj(y[t]) is the circular convolution of x with
  // conj(y[-t mod n]).
  const size_t n = y.size();
  std::vector<T> yr(n);
  for (size_t t = 0; t < n; ++t) yr[t] = conjugate(y[(n - t) % n]);
  return fftCircular(x, yr, n);
}

#define QFB_INSTANTIATE(T)                                                                   \
  template std::vector<T> convolveDirect(const std::vector<T>&, const std::vector<T>&);          \
  template std::vector<T> convolveFft(const std::vector<T>&, const std::vector<T>&);             \
  template std::vector<T> circularConvolveDirect(const std::vector<T>&, const std::vector<T>&);  \
  template std::vector<T> circularConvolveFft(const std::vector<T>&, const std::vector<T>&);     \
  template std::vector<T> correlateDirect(const std::vector<T>&, const std::vector<T>&);         \
  template std::vector<T> correlateFft(const std::vector<T>&, const std::vector<T>&);            \
  template std::vector<T> circularCorrelateDirect(const std::vector<T>&, const std::vector<T>&); \
  template std::vector<T> circularCorrelateFft(const std::vector<T>&, const std::vector<T>&);
QFB_INSTANTIATE(double)
QFB_INSTANTIATE(Complex)
#undef QFB_INSTANTIATE

}  // namespace tools
