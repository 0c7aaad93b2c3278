#include "codeFacts.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "api/FlashBCH.h"
#include "errorStatistics.h"

namespace flashbch {

namespace {

const double kLn10 = std::log(10.0);

// log10(10^a + 10^b) without leaving log space.
double log10Add(double a, double b) {
  if (a == -INFINITY) return b;
  if (b == -INFINITY) return a;
  const double hi = std::max(a, b), lo = std::min(a, b);
  return hi + std::log10(1.0 + std::pow(10.0, lo - hi));
}

double log10SumOfFailures(const BlockLayout& layout, double rawBer) {
  double sum = -INFINITY;
  for (int k : layout.dataBits) sum = log10Add(sum, log10CodewordFailureRate(k, layout.t, rawBer));
  return sum;
}

}  // namespace

double log10CodewordFailureRate(int dataBits, int t, double rawBer) {
  return logBinomialUpperTail(dataBits + kFieldDegree * t, t, rawBer) / kLn10;
}

double log10BlockFailureRate(const BlockLayout& layout, double rawBer) {
  return log10SumOfFailures(layout, rawBer) - std::log10(static_cast<double>(layout.codewords()));
}

double log10Uber(const BlockLayout& layout, double rawBer) {
  return log10SumOfFailures(layout, rawBer) - std::log10(static_cast<double>(layout.blockDataBits()));
}

std::vector<int> generatorPolynomial(int t) {
  const int r = kFieldDegree * t;
  int dataBits = 8;
  FlashBCH codec;
  codec.init(1, &dataBits, t, false, false, -1, 0, 0);
  std::vector<int> message(static_cast<size_t>(dataBits), 0);
  message.back() = 1;
  std::vector<int> stored(static_cast<size_t>(dataBits + r));
  codec.encode_au(message.data(), stored.data());
  std::vector<int> g(static_cast<size_t>(r + 1));
  g[0] = 1;
  std::copy(stored.begin() + dataBits, stored.end(), g.begin() + 1);
  return g;
}

std::string bitsToHex(const std::vector<int>& bits) {
  static const char kDigits[] = "0123456789abcdef";
  const size_t lead = (4 - bits.size() % 4) % 4;
  std::string hex;
  int digit = 0;
  for (size_t i = 0; i < lead + bits.size(); ++i) {
    digit = digit * 2 + (i < lead ? 0 : bits[i - lead]);
    if (i % 4 == 3) {
      hex += kDigits[digit];
      digit = 0;
    }
  }
  return hex;
}

}  // namespace flashbch
