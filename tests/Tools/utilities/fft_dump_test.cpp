// FFT, convolution and correlation against the direct sums, and dumps that
// read back exactly (or fail with an exception on damaged input).
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>

#include "Tools/utilities/convolution.h"
#include "Tools/utilities/dump.h"
#include "Tools/utilities/fft.h"

using namespace tools;

namespace {

std::vector<Complex> randomComplex(size_t n, std::mt19937& rng) {
  std::normal_distribution<double> g;
  std::vector<Complex> v(n);
  for (auto& x : v) x = Complex(g(rng), g(rng));
  return v;
}

double maxError(const std::vector<Complex>& a, const std::vector<Complex>& b) {
  EXPECT_EQ(a.size(), b.size());
  double e = 0;
  for (size_t i = 0; i < a.size() && i < b.size(); ++i) e = std::max(e, std::abs(a[i] - b[i]));
  return e;
}

}  // namespace

TEST(Fft, MatchesTheDirectTransformAndInvertsForAnyLength) {
  std::mt19937 rng(1);
  const double pi = std::acos(-1.0);
  for (size_t n : {1, 2, 3, 5, 8, 12, 17, 64, 100, 127, 1000}) {
    const std::vector<Complex> x = randomComplex(n, rng);
    std::vector<Complex> direct(n);
    for (size_t f = 0; f < n; ++f)
      for (size_t t = 0; t < n; ++t) direct[f] += x[t] * std::polar(1.0, -2 * pi * double((f * t) % n) / double(n));
    const std::vector<Complex> X = fft(x);
    // Rounding error of an O(n log n) transform: a few ulps times sqrt(n) log n.
    EXPECT_LT(maxError(X, direct), 1e-12 * n) << n;
    EXPECT_LT(maxError(ifft(X), x), 1e-13 * (1 + std::log2(double(n)))) << n;
  }
  std::vector<Complex> wrong(3);
  EXPECT_THROW(Fft(4).forward(wrong), std::invalid_argument);
}

TEST(Convolution, FftFormsEqualTheDirectSums) {
  std::mt19937 rng(2);
  std::normal_distribution<double> g;
  for (auto [n, m] : {std::pair<size_t, size_t>{1, 1}, {5, 3}, {33, 33}, {100, 7}, {257, 300}}) {
    const std::vector<Complex> xc = randomComplex(n, rng), yc = randomComplex(m, rng);
    std::vector<double> xr(n), yr(m);
    for (auto& v : xr) v = g(rng);
    for (auto& v : yr) v = g(rng);
    const double tol = 1e-12 * (n + m);
    EXPECT_LT(maxError(convolveFft(xc, yc), convolveDirect(xc, yc)), tol);
    EXPECT_LT(maxError(correlateFft(xc, yc), correlateDirect(xc, yc)), tol);
    const auto realAsComplex = [](const std::vector<double>& v) { return std::vector<Complex>(v.begin(), v.end()); };
    EXPECT_LT(maxError(realAsComplex(convolveFft(xr, yr)), realAsComplex(convolveDirect(xr, yr))), tol);
    EXPECT_LT(maxError(realAsComplex(correlateFft(xr, yr)), realAsComplex(correlateDirect(xr, yr))), tol);
    const std::vector<Complex> yn = randomComplex(n, rng);
    EXPECT_LT(maxError(circularConvolveFft(xc, yn), circularConvolveDirect(xc, yn)), tol);
    EXPECT_LT(maxError(circularCorrelateFft(xc, yn), circularCorrelateDirect(xc, yn)), tol);
  }
  // Correlation lag convention: a delayed copy peaks at its delay.
  const std::vector<double> pulse{0, 0, 0, 1, 2, 1, 0}, shape{1, 2, 1};
  const std::vector<double> r = correlateDirect(pulse, shape);
  EXPECT_EQ(std::max_element(r.begin(), r.end()) - r.begin(), 3 + 2);  // lag 3 at index lag + M - 1
  EXPECT_THROW(circularConvolveFft(pulse, shape), std::invalid_argument);
}

TEST(Dump, TextHexAndBinaryDumpsReadBack) {
  const std::vector<double> d{0.1, -1e300, 5e-324, 3.0, INFINITY, -0.0};
  const std::vector<int64_t> i{INT64_MIN, -1, 0, 42, INT64_MAX};
  std::stringstream s1, s2, s3, s4, s5;
  writeTextDump(s1, d);
  writeTextDump(s2, i);
  writeBinaryDump(s3, d);
  writeBinaryDump(s4, i);
  const std::vector<double> dBack = readTextDumpDouble(s1);
  ASSERT_EQ(dBack.size(), d.size());
  for (size_t k = 0; k < d.size(); ++k) EXPECT_EQ(std::signbit(dBack[k]), std::signbit(d[k]));
  EXPECT_EQ(dBack, d);
  EXPECT_EQ(readTextDumpInt64(s2), i);
  EXPECT_EQ(readBinaryDumpDouble(s3), d);
  EXPECT_EQ(readBinaryDumpInt64(s4), i);
  std::vector<uint8_t> bytes(37);
  for (size_t k = 0; k < bytes.size(); ++k) bytes[k] = static_cast<uint8_t>(k * 29);
  writeHexDump(s5, bytes.data(), bytes.size());
  EXPECT_EQ(readHexDump(s5), bytes);

  std::stringstream text, binary;
  writeTextDump(text, i);
  writeBinaryDump(binary, i);
  const std::string t = text.str(), b = binary.str();
  for (const std::string& damaged : std::vector<std::string>{t.substr(0, t.rfind('\n', t.size() - 2) + 1), "qfb-dump double 1\n1\n", "junk\n",
                                                             "qfb-dump int64 1\n12x\n", "qfb-dump int64 1\n1\n2\n"}) {
    std::istringstream in(damaged);
    EXPECT_THROW(readTextDumpInt64(in), std::runtime_error) << damaged;
  }
  for (const std::string& damaged : std::vector<std::string>{b.substr(0, b.size() - 1), b.substr(0, 12), b + "x", "QFB"}) {
    std::istringstream in(damaged);
    EXPECT_THROW(readBinaryDumpInt64(in), std::runtime_error);
  }
  std::istringstream skipped("00000000  01 02\n00000010  03\n");
  EXPECT_THROW(readHexDump(skipped), std::runtime_error);
}
