// The Berlekamp-Massey iteration with degree tracking; see the header.
//
// The iteration runs on logarithms where it multiplies: the syndromes' and
// the locator's logarithms make each discrepancy term one table look-up,
// and B0 is kept as logarithms (its update B0 <- Delta^-1 Lambda is then an
// addition), so that Lambda + Delta x B is one look-up per coefficient.
// Degrees, with L the register length before step r: Lambda + Delta x B
// has degree at most max(L, r + 1 - L), the new length when the step changes
// it and L otherwise (a step with Delta != 0 and no length change has
// r < 2L). So only x B's own span, s + 1 .. s + 1 + deg B0, is updated.
#include "bch/berlekampMassey.h"

#include <algorithm>

#include "bch/fieldTables.h"

BerlekampMassey::BerlekampMassey(const FieldTables& f, int t_, KernelLevel level)
    : field(f),
      t(t_),
      B0(2 * static_cast<size_t>(t_) + 2, 0),
      nextB0(2 * static_cast<size_t>(t_) + 2, 0),
      syndromeLogs(2 * static_cast<size_t>(t_) + 2, 0),
      lambdaLogs(2 * static_cast<size_t>(t_) + 2, 0) {
  if (ClmulMassey::supports(f, t_, level)) vectorIteration = std::make_unique<ClmulMassey>(f, t_);
}

void BerlekampMassey::locator(const uint16_t* S, int tLimit, uint16_t* Lambda, bool squaredSyndromes) {
  const int zeroLog = field.logZero(), order = field.order();
  std::fill(Lambda, Lambda + 2 * t + 1, 0);
  Lambda[0] = 1;
  const int tUse = (tLimit == -1 || tLimit > t) ? t : tLimit;
  const int top = 2 * tUse;  // steps, and the highest coefficient the iteration touches
  if (top <= 0) return;
  if (vectorIteration) {
    vectorIteration->locator(S, top, Lambda, squaredSyndromes);
    return;
  }
  for (int j = 0; j < top; ++j) syndromeLogs[j] = field.log(S[j]);
  lambdaLogs[0] = 0;
  B0[0] = 0;
  int L = 0, shift = 0, degB0 = 0;  // B = x^shift B0
  for (int r = 0; r < top; ++r) {
    if (squaredSyndromes && (r & 1)) {
      ++shift;  // a zero discrepancy: Lambda stays, B <- x B
      continue;
    }
    uint16_t delta = 0;
    for (int j = 0; j <= L; ++j) delta ^= field.expOfLogSum(lambdaLogs[j], syndromeLogs[r - j]);
    if (delta == 0) {
      ++shift;
      continue;
    }
    const int logDelta = field.log(delta);
    const bool lengthChange = r >= 2 * L;
    if (lengthChange) {
      // B0 <- Delta^-1 Lambda (the old Lambda), made before Lambda changes.
      const int logInverse = order - logDelta;
      for (int i = 0; i <= L; ++i) {
        const int l = lambdaLogs[i];
        nextB0[i] = l == zeroLog ? zeroLog : (l + logInverse >= order ? l + logInverse - order : l + logInverse);
      }
    }
    const int newL = lengthChange ? r + 1 - L : L;
    for (int i = L + 1; i <= newL; ++i) lambdaLogs[i] = zeroLog;
    const int32_t* b = B0.data();
    for (int i = 0; i <= degB0; ++i) {
      const int at = i + shift + 1;
      Lambda[at] ^= field.expOfLogSum(b[i], logDelta);
      lambdaLogs[at] = field.log(Lambda[at]);
    }
    if (lengthChange) {
      B0.swap(nextB0);
      degB0 = L;
      shift = 0;
      L = newL;
    } else {
      ++shift;
    }
  }
}
