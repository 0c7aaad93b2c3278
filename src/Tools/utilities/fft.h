// Discrete Fourier transform of any length.
//
//   X[f] = sum_t x[t] exp(-2 pi i f t / n),   x[t] = (1/n) sum_f X[f] exp(+2 pi i f t / n).
//
// Powers of two use an iterative radix-2 decimation-in-time transform
// (Cooley-Tukey) with twiddles computed directly, not by recurrence, so the
// rounding error stays O(log n) ulps. Other lengths use Bluestein's chirp-z
// identity ft = (t^2 + f^2 - (f-t)^2) / 2, which turns the transform into
// a circular convolution of length m >= 2n - 1, a power of two (L. I.
// Bluestein, "A linear filtering approach to the computation of the discrete
// Fourier transform", IEEE Trans. Audio Electroacoust. 18(4), 1970).
#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace tools {

using Complex = std::complex<double>;

// Plans are cheap to build and reusable for one length; transforms are in
// place. Length 0 is an empty transform.
class Fft {
 public:
  explicit Fft(size_t n);
  size_t size() const { return n_; }
  void forward(std::vector<Complex>& x) const;
  // Includes the 1/n factor, so inverse(forward(x)) == x to rounding.
  void inverse(std::vector<Complex>& x) const;

 private:
  void transform(std::vector<Complex>& x, bool inverse) const;
  void radix2(Complex* x, bool inverse) const;
  size_t n_;
  bool powerOfTwo_;
  std::vector<Complex> twiddle_;   // exp(-2 pi i j / n), j < n/2 (power-of-two lengths)
  std::vector<Complex> chirp_;     // exp(-pi i t^2 / n), t < n (Bluestein)
  std::vector<Complex> kernelFt_;  // transform of the conjugate chirp, padded to m
  std::vector<Fft> inner_;         // the length-m radix-2 plan (empty for powers of two)
};

// One-shot helpers.
std::vector<Complex> fft(std::vector<Complex> x);
std::vector<Complex> ifft(std::vector<Complex> x);

}  // namespace tools
