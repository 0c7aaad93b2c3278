#include "Tools/mymatrix/bchParityCheck.h"

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "gf/gf.h"

namespace tools {

BinaryMatrix bchParityCheck(const GF& gf, size_t n, int t, int b) {
  const int m = gf.getM();
  const size_t order = static_cast<size_t>(gf.getN()) - 1;  // multiplicative order of alpha
  if (n == 0 || n > order || t < 1 || (b != 0 && b != 1) || static_cast<size_t>(2 * t) > order)
    throw std::invalid_argument("bchParityCheck: n = " + std::to_string(n) + ", t = " + std::to_string(t) +
                                ", b = " + std::to_string(b) + " do not fit GF(2^" + std::to_string(m) + ")");
  std::set<size_t> seen;
  std::vector<size_t> exponents;
  for (int j = 0; j < 2 * t; ++j) {
    const size_t e = static_cast<size_t>(b + j) % order;
    if (seen.count(e)) continue;
    exponents.push_back(e);
    for (size_t c = e;;) {  // mark the whole cyclotomic coset of e
      seen.insert(c);
      c = (2 * c) % order;
      if (c == e) break;
    }
  }
  BinaryMatrix h(exponents.size() * static_cast<size_t>(m), n);
  for (size_t r = 0; r < exponents.size(); ++r)
    for (size_t col = 0; col < n; ++col) {
      const size_t degree = n - 1 - col;
      const int value = gf.exp2Int(static_cast<int>((exponents[r] * degree) % order));
      for (int bit = 0; bit < m; ++bit)
        if ((value >> bit) & 1) h.flip(r * static_cast<size_t>(m) + static_cast<size_t>(bit), col);
    }
  return rightmostEchelon(h);
}

}  // namespace tools
