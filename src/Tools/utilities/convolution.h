// Linear and circular convolution and correlation of real and complex
// sequences, by the direct sums and through the FFT.
//
//   linear convolution    (x * y)[j] = sum_t x[t] y[j-t],           j = 0 .. N+M-2
//   circular convolution  (x (*) y)[j] = sum_t x[t] y[(j-t) mod N],   j = 0 .. N-1
//   linear correlation    r[j] = sum_t x[t + j - (M-1)] conj(y[t]),  j = 0 .. N+M-2
//                         (lag j - (M-1), from -(M-1) to N-1)
//   circular correlation  r[j] = sum_t x[(t+j) mod N] conj(y[t]),   j = 0 .. N-1
//
// The FFT forms compute the same sums through the convolution theorem; their
// error against the direct sums is about 1e-15 * log2(L) * sum|x| * max|y|
// per output (L the transform length), the bound the tests check. Circular
// forms need x and y of equal length (std::invalid_argument otherwise); an
// empty input gives an empty result.
#pragma once

#include <complex>
#include <vector>

namespace tools {

template <typename T>
std::vector<T> convolveDirect(const std::vector<T>& x, const std::vector<T>& y);
template <typename T>
std::vector<T> convolveFft(const std::vector<T>& x, const std::vector<T>& y);
template <typename T>
std::vector<T> circularConvolveDirect(const std::vector<T>& x, const std::vector<T>& y);
template <typename T>
std::vector<T> circularConvolveFft(const std::vector<T>& x, const std::vector<T>& y);
template <typename T>
std::vector<T> correlateDirect(const std::vector<T>& x, const std::vector<T>& y);
template <typename T>
std::vector<T> correlateFft(const std::vector<T>& x, const std::vector<T>& y);
template <typename T>
std::vector<T> circularCorrelateDirect(const std::vector<T>& x, const std::vector<T>& y);
template <typename T>
std::vector<T> circularCorrelateFft(const std::vector<T>& x, const std::vector<T>& y);

// Instantiated for double and std::complex<double>.

}  // namespace tools
