// The Berlekamp-Massey iteration with degree tracking; see the header.
#include "bch/berlekampMassey.h"

#include <algorithm>

#include "bch/fieldTables.h"

BerlekampMassey::BerlekampMassey(const FieldTables& f, int t_)
    : field(f), t(t_), B(2 * static_cast<size_t>(t_) + 2, 0), T(2 * static_cast<size_t>(t_) + 2, 0) {}

void BerlekampMassey::locator(const uint16_t* S, int tLimit, uint16_t* Lambda) {
  std::fill(Lambda, Lambda + 2 * t + 1, 0);
  std::fill(B.begin(), B.end(), 0);
  Lambda[0] = B[0] = T[0] = 1;
  const int tUse = (tLimit == -1 || tLimit > t) ? t : tLimit;
  const int top = 2 * tUse;  // highest coefficient the iteration touches
  int L = 0;
  int degLambda = 0, degB = 0;  // no non-zero coefficient above these
  for (int r = 0; r < top; ++r) {
    uint16_t delta = 0;
    for (int j = 0; j <= std::min(L, degLambda); ++j) delta ^= field.mul(Lambda[j], S[r - j]);
    const bool lengthChange = delta != 0 && r >= 2 * L;
    if (lengthChange) L = r + 1 - L;

    const int degT = std::max(degLambda, std::min(degB + 1, top));
    if (delta != 0) {
      const int logDelta = field.log(delta);
      for (int i = 1; i <= degT; ++i) T[i] = Lambda[i] ^ field.mulByLog(B[i - 1], logDelta);
    } else {
      std::copy(Lambda + 1, Lambda + degT + 1, T.begin() + 1);
    }
    if (lengthChange) {
      const int logInverse = field.log(field.inverse(delta));
      for (int i = 0; i <= degLambda; ++i) B[i] = field.mulByLog(Lambda[i], logInverse);
      std::fill(B.begin() + degLambda + 1, B.begin() + std::max(degB, degLambda) + 1, 0);
      degB = degLambda;
    } else {
      // x B, dropping a coefficient that would pass 2t'.
      const int newDeg = std::min(degB + 1, top);
      for (int i = newDeg; i >= 1; --i) B[i] = B[i - 1];
      B[0] = 0;
      degB = newDeg;
    }
    std::copy(T.begin() + 1, T.begin() + degT + 1, Lambda + 1);
    degLambda = degT;
  }
}
