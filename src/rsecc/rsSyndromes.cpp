// Syndromes S_j = r(alpha^(b0+j)) of a received word, and the codeword
// test: r is a codeword exactly when the generator divides it.
#include "rsecc/rsecc.h"

#include <algorithm>
#include <iostream>
#include <vector>

#include "gf/gf.h"

int RSECC::isValidCodeword(const int* cw, int n) {
  std::vector<int> rem(nParity);
  gf->findRemainder(cw, n - 1, genPoly.data(), nParity, rem.data());
  return isZeroPoly(rem.data(), nParity) ? 1 : 0;
}

void RSECC::returnSyndromes(int* out, int count) const {
  std::copy(syndromes.begin(), syndromes.begin() + count, out);
}

void RSECC::syndromesCompute(const int* cw, int n, int* S, int count) {
  if (n >= gf->getN()) std::cout << "Warning: RSECC::syndromesCompute: invalid codeword size" << std::endl;
  for (int j = 1; j <= count; ++j) S[j - 1] = gf->evaluatePoly(cw, n, b0 + j - 1);
  std::copy(S, S + std::min(count, nParity), syndromes.begin());
}

int RSECC::isValidSyndromes(const int* S, int tUse) {
  if (2 * tUse < 1) return 1;
  return isZeroPoly(S, 2 * tUse) ? 1 : 0;
}
