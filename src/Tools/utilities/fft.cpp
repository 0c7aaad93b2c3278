#include "Tools/utilities/fft.h"

#include <cmath>
#include <stdexcept>

namespace tools {

namespace {

const double kPi = std::acos(-1.0);

bool isPowerOfTwo(size_t n) { return n != 0 && (n & (n - 1)) == 0; }

// Angle 2 pi j / n reduced exactly in integers first, so large j lose nothing.
Complex unitRoot(uint64_t j, uint64_t n, double sign) {
  const double a = 2.0 * kPi * static_cast<double>(j % n) / static_cast<double>(n);
  return {std::cos(a), sign * std::sin(a)};
}

}  // namespace

Fft::Fft(size_t n) : n_(n), powerOfTwo_(n <= 1 || isPowerOfTwo(n)) {
  if (n <= 1) return;
  if (powerOfTwo_) {
    twiddle_.resize(n / 2);
    for (size_t j = 0; j < n / 2; ++j) twiddle_[j] = unitRoot(j, n, -1.0);
    return;
  }
  size_t m = 1;
  while (m < 2 * n - 1) m <<= 1;
  chirp_.resize(n);
  // t^2 mod 2n keeps exp(-pi i t^2 / n) exact in its argument.
  for (size_t t = 0; t < n; ++t) {
    const uint64_t sq = (static_cast<uint64_t>(t) * t) % (2 * static_cast<uint64_t>(n));
    chirp_[t] = unitRoot(sq, 2 * n, -1.0);
  }
  std::vector<Complex> kernel(m, Complex(0, 0));
  kernel[0] = std::conj(chirp_[0]);
  for (size_t t = 1; t < n; ++t) kernel[t] = kernel[m - t] = std::conj(chirp_[t]);
  inner_.emplace_back(m);
  inner_[0].forward(kernel);
  kernelFt_ = std::move(kernel);
}

void Fft::forward(std::vector<Complex>& x) const { transform(x, false); }

void Fft::inverse(std::vector<Complex>& x) const {
  transform(x, true);
  const double scale = 1.0 / static_cast<double>(n_ == 0 ? 1 : n_);
  for (Complex& v : x) v *= scale;
}

void Fft::transform(std::vector<Complex>& x, bool inverse) const {
  if (x.size() != n_)
    throw std::invalid_argument("Fft: input of length " + std::to_string(x.size()) + " for a plan of length " +
                                std::to_string(n_));
  if (n_ <= 1) return;
  if (powerOfTwo_) {
    radix2(x.data(), inverse);
    return;
  }
  // The inverse transform is the conjugate of the forward transform of the
  // conjugate input.
  if (inverse)
    for (Complex& v : x) v = std::conj(v);
  const size_t m = kernelFt_.size();
  std::vector<Complex> a(m, Complex(0, 0));
  for (size_t t = 0; t < n_; ++t) a[t] = x[t] * chirp_[t];
  inner_[0].forward(a);
  for (size_t j = 0; j < m; ++j) a[j] *= kernelFt_[j];
  inner_[0].inverse(a);
  for (size_t f = 0; f < n_; ++f) x[f] = a[f] * chirp_[f];
  if (inverse)
    for (Complex& v : x) v = std::conj(v);
}

void Fft::radix2(Complex* x, bool inverse) const {
  const size_t n = n_;
  for (size_t i = 1, j = 0; i < n; ++i) {
    size_t bit = n >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(x[i], x[j]);
  }
  for (size_t len = 2; len <= n; len <<= 1) {
    const size_t half = len / 2, stride = n / len;
    for (size_t start = 0; start < n; start += len)
      for (size_t j = 0; j < half; ++j) {
        const Complex w = inverse ? std::conj(twiddle_[j * stride]) : twiddle_[j * stride];
        const Complex u = x[start + j], v = x[start + j + half] * w;
        x[start + j] = u + v;
        x[start + j + half] = u - v;
      }
  }
}

std::vector<Complex> fft(std::vector<Complex> x) {
  Fft(x.size()).forward(x);
  return x;
}

std::vector<Complex> ifft(std::vector<Complex> x) {
  Fft(x.size()).inverse(x);
  return x;
}

}  // namespace tools
