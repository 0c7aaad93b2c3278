// The Berlekamp-Massey iteration with degree tracking; see the header.
//
// The iteration runs on logarithms where it multiplies: the syndromes' and
// the locator's logarithms make each discrepancy term one table look-up,
// and B is kept as logarithms (its update B <- Delta^-1 Lambda is then an
// addition), so that Lambda + Delta x B is one look-up per coefficient.
#include "bch/berlekampMassey.h"

#include <algorithm>

#include "bch/fieldTables.h"

BerlekampMassey::BerlekampMassey(const FieldTables& f, int t_)
    : field(f),
      t(t_),
      B(2 * static_cast<size_t>(t_) + 2, 0),
      T(2 * static_cast<size_t>(t_) + 2, 0),
      syndromeLogs(2 * static_cast<size_t>(t_) + 2, 0),
      lambdaLogs(2 * static_cast<size_t>(t_) + 2, 0) {}

void BerlekampMassey::locator(const uint16_t* S, int tLimit, uint16_t* Lambda, bool squaredSyndromes) {
  const int zeroLog = field.logZero(), order = field.order();
  std::fill(Lambda, Lambda + 2 * t + 1, 0);
  Lambda[0] = T[0] = 1;
  const int tUse = (tLimit == -1 || tLimit > t) ? t : tLimit;
  const int top = 2 * tUse;  // highest coefficient the iteration touches
  if (top <= 0) return;
  std::fill(B.begin(), B.begin() + top + 1, zeroLog);  // B holds logarithms
  B[0] = 0;
  std::fill(lambdaLogs.begin(), lambdaLogs.begin() + top + 1, zeroLog);
  lambdaLogs[0] = 0;
  for (int j = 0; j < top; ++j) syndromeLogs[j] = field.log(S[j]);

  int L = 0;
  int degLambda = 0, degB = 0;  // no non-zero coefficient above these
  for (int r = 0; r < top; ++r) {
    if (squaredSyndromes && (r & 1)) {
      // A zero discrepancy: Lambda stays, B <- x B.
      const int newDeg = std::min(degB + 1, top);
      for (int i = newDeg; i >= 1; --i) B[i] = B[i - 1];
      B[0] = zeroLog;
      degLambda = std::max(degLambda, newDeg);
      degB = newDeg;
      continue;
    }
    uint16_t delta = 0;
    for (int j = 0; j <= std::min(L, degLambda); ++j) delta ^= field.expOfLogSum(lambdaLogs[j], syndromeLogs[r - j]);
    const bool lengthChange = delta != 0 && r >= 2 * L;
    if (lengthChange) L = r + 1 - L;

    const int degT = std::max(degLambda, std::min(degB + 1, top));
    if (delta != 0) {
      const int logDelta = field.log(delta);
      for (int i = 1; i <= degT; ++i) T[i] = Lambda[i] ^ field.expOfLogSum(B[i - 1], logDelta);
    } else {
      std::copy(Lambda + 1, Lambda + degT + 1, T.begin() + 1);
    }
    if (lengthChange) {
      // B <- Delta^-1 Lambda, the old Lambda, as logarithms.
      const int logInverse = order - field.log(delta);
      for (int i = 0; i <= degLambda; ++i) {
        const int l = lambdaLogs[i];
        B[i] = l == zeroLog ? zeroLog : (l + logInverse >= order ? l + logInverse - order : l + logInverse);
      }
      std::fill(B.begin() + degLambda + 1, B.begin() + std::max(degB, degLambda) + 1, zeroLog);
      degB = degLambda;
    } else {
      // x B, dropping a coefficient that would pass 2t'.
      const int newDeg = std::min(degB + 1, top);
      for (int i = newDeg; i >= 1; --i) B[i] = B[i - 1];
      B[0] = zeroLog;
      degB = newDeg;
    }
    for (int i = 1; i <= degT; ++i) {
      Lambda[i] = T[i];
      lambdaLogs[i] = field.log(T[i]);
    }
    degLambda = degT;
  }
}
