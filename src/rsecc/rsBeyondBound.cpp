// Reed-Solomon decoding of one error beyond the bound.
//
// With e = tUse+1 errors, 2tUse syndromes do not determine the locator, but
// 2tUse+2 would: Berlekamp-Massey over S_0..S_(2tUse+1) ends with the true
// locator. The two missing syndromes are hypothesised through the
// discrepancies delta1, delta2 of the two extra steps (each discrepancy is
// an invertible affine function of the syndrome it brings in), so the
// candidates are exactly the locators those two steps can produce.
//
// After 2tUse steps the state is (Lambda, B, gamma, L). A weight tUse+1
// sequence has linear complexity tUse+1 over 2tUse+2 terms, and the length
// rule then forces L = tUse or L = tUse+1 after 2tUse terms:
//   L = tUse:   delta1 != 0 changes the length and
//               Lambda'' ~ (gamma + c x) Lambda + delta1 x B,     c = delta2/delta1;
//   L = tUse+1: no length change in either step and
//               Lambda'' ~ gamma^2 Lambda + delta2 x^2 B + delta1 gamma x B.
// Either way, for a fixed outer parameter h (c, resp. delta2) the candidate
// is P(x) + delta1 Q(x), and position p (root X = alpha^-p) is a root for
// the single delta1 = P(X)/Q(X). mapping() sends every position to that
// delta1; a delta1 reached by tUse+1 positions names a locator of degree
// tUse+1 with all its roots inside the word. This costs q * n field
// operations instead of the q^2 Chien searches of a blind enumeration.
//
// Each such candidate is rebuilt by really running the two steps
// (BM_beyondBchBound), which also yields the two hypothesised syndromes,
// and accepted only if its degree equals its number of roots, it generates
// every extra syndrome the code has (nParity > 2tUse), Forney gives non-zero
// values, and the corrected word is a codeword.
//
// Limits: one error beyond tUse, no erasures, b0 = 0 or 1 (where Forney is
// exact), words shorter than q. A word at distance tUse+1 from a codeword
// can be as close to several others; how often depends on
// C(n, tUse+1) / q^(nParity - tUse - 1), the expected number of other
// codewords that close. A short code over a large field, or an extra parity
// symbol, makes the answer unique almost always; decodeBeyondBchBound then
// corrects, and gives up whenever the nearest codeword is not unique.
// The stored schedule and the list parameters describe a deeper search over
// several hypothesised errors; the single extra error handled here resolves
// its two hypothesised steps in closed form and does not consult them. The
// accepted locators are kept in listWork, whose 4t rows bound the list.
#include "rsecc/rsecc.h"

#include <algorithm>
#include <iostream>
#include <vector>

#include "gf/gf.h"
#include "rsecc/rseccFatal.h"

using rsecc_detail::fatal;

int RSECC::basicInductiveStep(int* S, int r, int* lambda, int* B, int len, int& gamma, int& L, int delta) {
  const int zero = gf->getZero();
  const int lambda0 = lambda[len - 1];
  if (r < 1 || lambda0 == zero || B[0] != zero || L >= len) {
    std::cout << "RSECC::basicInductiveStep<<Logical problems" << std::endl;
    return 0;
  }
  int known = zero;
  for (int i = 1; i <= std::min(L, r - 1); ++i)
    known = gf->add(known, gf->multiply(lambda[len - 1 - i], S[r - 1 - i]));
  S[r - 1] = gf->multiply(gf->add(delta, known), gf->multInverse(lambda0));
  locatorStep(lambda, B, len, r, delta, 0, true, gamma, L);
  return 1;
}

int RSECC::BM_beyondBchBound(int* S, int nKnown, int* lambda, int* B, int len, int& gamma, int& L,
                             const int* deltas, int nDeltas) {
  std::vector<int> extended(S, S + nKnown);
  extended.resize(nKnown + nDeltas, gf->getZero());
  int r = nKnown;
  for (int i = 0; i < nDeltas; ++i) {
    if (deltas[i] == -1) continue;
    ++r;
    if (!basicInductiveStep(extended.data(), r, lambda, B, len, gamma, L, deltas[i])) {
      std::cout << "LIST ECC:: timed out!!!!!!!!!!!!!!!!" << std::endl;
      return 0;
    }
  }
  std::copy(extended.begin() + nKnown, extended.begin() + r, S + nKnown);
  return 1;
}

int RSECC::mapping(const int* pAt, const int* qAt, int nPos, bool zeroAllowed, int* deltaAt) {
  const int zero = gf->getZero();
  int common = 0;
  for (int p = 0; p < nPos; ++p) {
    deltaAt[p] = -1;
    if (qAt[p] == zero) {
      if (pAt[p] == zero) ++common;
      continue;
    }
    const int delta = gf->multiply(pAt[p], gf->multInverse(qAt[p]));
    if (delta != zero || zeroAllowed) deltaAt[p] = delta;
  }
  return common;
}

// Runs the two hypothesised steps from the state after 2tUse steps and
// applies every acceptance test; on success error[] holds the error word.
// Returns 1 (accepted), 0 (rejected) or -1 (a corrected word that is not a
// codeword although every test passed: impossible unless the arithmetic is
// broken).
int RSECC::verifyBeyondBoundCandidate(const int* r, int n, int tUse, const int* S, const int* lambda,
                                      const int* B, int len, int gamma, int L, const int deltas[2],
                                      std::vector<int>& error, std::vector<int>& locator) {
  const int zero = gf->getZero();
  std::vector<int> lc(lambda, lambda + len), bc(B, B + len), Sx(S, S + 2 * tUse);
  Sx.resize(2 * tUse + 2, zero);
  if (!BM_beyondBchBound(Sx.data(), 2 * tUse, lc.data(), bc.data(), len, gamma, L, deltas, 2)) return 0;
  if (L != tUse + 1) return 0;
  std::vector<int> roots(len - 1);
  int nRoots = 0;
  chienSearch(lc.data(), len, roots.data(), nRoots);
  const int* low = lc.data() + (len - 1 - L);
  if (!isValidErrorLocator(r, n, low, L + 1, nRoots, tUse + 1, 1)) return 0;
  locator.assign(low, low + L + 1);
  if (nParity > 2 * tUse &&
      (!isValidErrorLocator(low, L + 1, tUse, S) || !fullValidityCheckErrorLocator(low, L + 1, S)))
    return 0;
  std::vector<int> values(nRoots);
  Forney(Sx.data(), lc.data(), len, roots.data(), nRoots, values.data(), tUse + 1);
  error.assign(n, zero);
  for (int k = 0; k < nRoots; ++k) {
    const int p = gf->multInverse(roots[k]);
    if (p < 0 || p >= n || values[k] == zero) return 0;
    error[n - 1 - p] = values[k];
  }
  std::vector<int> corrected(r, r + n);
  for (int i = 0; i < n; ++i) corrected[i] = gf->add(corrected[i], error[i]);
  return isValidCodeword(corrected.data(), n) ? 1 : -1;
}

// All error words of weight tUse+1 that explain the syndromes S of r, at
// most maxFound of them. Returns their number, or -1 on an impossible state.
int RSECC::collectBeyondBound(const int* r, int n, int tUse, const int* S,
                              std::vector<std::vector<int>>& errors, int maxFound) {
  errors.clear();
  const int zero = gf->getZero(), q = gf->getN();
  maxFound = std::min(maxFound, int(listWork.size()));
  if (tUse < 1 || n >= q || maxFound < 1) return 0;
  const int len = 2 * tUse + 3;
  std::vector<int> lambda(len), B(len);
  int L = 0, gamma = gf->getOne();
  berlekampMassey(S, lambda.data(), B.data(), len, L, tUse, n, nullptr, 0, true, &gamma);
  if (L != tUse && L != tUse + 1) return 0;
  const bool lengthChanges = L == tUse;

  // Lambda(X), X B(X) and X at the root X = alpha^-p of every position p.
  std::vector<int> xAt(n), lambdaAt(n), xbAt(n);
  for (int p = 0; p < n; ++p) {
    xAt[p] = gf->multInverse(p);
    lambdaAt[p] = gf->evaluatePoly(lambda.data(), len, xAt[p]);
    xbAt[p] = gf->multiply(xAt[p], gf->evaluatePoly(B.data(), len, xAt[p]));
  }
  const int gamma2 = gf->multiply(gamma, gamma);
  std::vector<int> pAt(n), qAt(n), deltaAt(n), hits(q, 0), touched;
  std::vector<int> error, locator;
  for (int h = 0; h < q && int(errors.size()) < maxFound; ++h) {
    for (int p = 0; p < n; ++p) {
      if (lengthChanges) {
        pAt[p] = gf->multiply(gf->add(gamma, gf->multiply(h, xAt[p])), lambdaAt[p]);
        qAt[p] = xbAt[p];
      } else {
        pAt[p] = gf->add(gf->multiply(gamma2, lambdaAt[p]), gf->multiply(h, gf->multiply(xAt[p], xbAt[p])));
        qAt[p] = gf->multiply(gamma, xbAt[p]);
      }
    }
    const int common = mapping(pAt.data(), qAt.data(), n, !lengthChanges, deltaAt.data());
    touched.clear();
    if (common >= tUse + 1) {
      for (int d = 0; d < q; ++d)
        if (d != zero || !lengthChanges) touched.push_back(d);
    } else {
      for (int p = 0; p < n; ++p) {
        if (deltaAt[p] < 0) continue;
        if (hits[deltaAt[p]]++ == 0) touched.push_back(deltaAt[p]);
      }
    }
    for (int d : touched) {
      const bool enough = hits[d] + common >= tUse + 1;
      hits[d] = 0;
      if (!enough || int(errors.size()) >= maxFound) continue;
      int deltas[2];
      if (lengthChanges) {
        deltas[0] = d;
        deltas[1] = gf->multiply(h, d);
      } else {
        // With a zero first discrepancy the inversionless step leaves
        // Lambda unscaled, so the second one carries a factor 1/gamma.
        deltas[0] = d;
        deltas[1] = d == zero ? gf->multiply(h, gf->multInverse(gamma)) : h;
      }
      const int verdict = verifyBeyondBoundCandidate(r, n, tUse, S, lambda.data(), B.data(), len, gamma, L,
                                                     deltas, error, locator);
      if (verdict < 0) return -1;
      if (verdict == 0 || std::find(errors.begin(), errors.end(), error) != errors.end()) continue;
      std::vector<int>& slot = listWork[errors.size()];
      std::copy(locator.begin(), locator.begin() + std::min(locator.size(), slot.size()), slot.begin());
      errors.push_back(error);
    }
  }
  return int(errors.size());
}

int RSECC::listDecode(const int* cw, int n, int tUse, const int* mask, int** list, int maxList) {
  if (b0 != 0 && b0 != 1) fatal("RSECC:: Logical error, exiting...");
  tUse = effectiveT(tUse);
  maxList = std::min(maxList, int(listWork.size()));
  if (maxList < 1) return 0;
  std::vector<int> r(cw, cw + n);
  if (maskInput)
    for (int i = 0; i < n; ++i) r[i] = gf->add(cw[i], mask[i]);

  int count = 0;
  std::vector<int> within(cw, cw + n), check(n);
  if (tUse > 0 && decode(within.data(), n, tUse, mask) == 1) {
    for (int i = 0; i < n; ++i) check[i] = maskInput ? gf->add(within[i], mask[i]) : within[i];
    if (isValidCodeword(check.data(), n)) {
      std::copy(within.begin(), within.end(), list[0]);
      count = 1;
    }
  }
  std::vector<int> S(nParity);
  syndromesCompute(r.data(), n, S.data(), nParity);
  std::vector<std::vector<int>> errors;
  if (collectBeyondBound(r.data(), n, tUse, S.data(), errors, maxList - count) < 0)
    fatal("RSECC:: Logical error, exiting...");
  for (const std::vector<int>& e : errors) {
    for (int i = 0; i < n; ++i) list[count][i] = gf->add(cw[i], e[i]);
    ++count;
  }
  return count;
}

int RSECC::decodeBeyondBchBound(int* cw, int n, int tUse, const int* mask) {
  if (b0 != 0 && b0 != 1) fatal("RSECC:: Logical error, exiting...");
  tUse = effectiveT(tUse);
  std::vector<int> r(cw, cw + n);
  if (maskInput)
    for (int i = 0; i < n; ++i) r[i] = gf->add(cw[i], mask[i]);

  std::vector<int> within(cw, cw + n), check(n);
  if (decode(within.data(), n, tUse, mask) == 1) {
    for (int i = 0; i < n; ++i) check[i] = maskInput ? gf->add(within[i], mask[i]) : within[i];
    if (isValidCodeword(check.data(), n)) {
      std::copy(within.begin(), within.end(), cw);
      return 1;
    }
  }
  std::vector<int> S(nParity);
  syndromesCompute(r.data(), n, S.data(), nParity);
  std::vector<std::vector<int>> errors;
  const int found = collectBeyondBound(r.data(), n, tUse, S.data(), errors, 2);
  if (found < 0) fatal("RSECC:: Logical error, exiting...");
  if (found != 1) return 0;
  for (int i = 0; i < n; ++i) cw[i] = gf->add(cw[i], errors[0][i]);
  return 1;
}
