// Reed-Solomon decoding within the bound: Berlekamp-Massey (errors only,
// or started from the erasure locator), Chien search and Forney.
//
// With syndromes S_j = r(alpha^(b0+j)), an error of value Y at position p
// contributes Y X^(b0+j), X = alpha^p. The error locator
// Lambda(x) = prod (1 + X_k x) has the roots X_k^-1, so a root alpha^e found by
// the Chien search means position p = (q-1-e) mod (q-1). Lambda is the
// shortest linear recurrence of the syndrome sequence; Berlekamp-Massey finds
// it from 2t syndromes when at most t errors occurred. With
// Omega(x) = S(x) Lambda(x) mod x^2t the error values are (Forney)
//   Y_k = X_k^(1-b0) Omega(X_k^-1) / Lambda'(X_k^-1),
// computed here from x S(x) Lambda(x), i.e. with one more factor X^-1 folded
// in, and exact for b0 = 0 and b0 = 1.
#include "rsecc/rsecc.h"

#include <algorithm>
#include <iostream>
#include <vector>

#include "gf/gf.h"
#include "rsecc/rseccFatal.h"

using rsecc_detail::fatal;

namespace {

// x*B in leading-first storage: every coefficient moves one place towards
// the leading end and the constant term becomes zero.
void shiftUp(int* p, int len, int zero) {
  for (int j = 0; j + 1 < len; ++j) p[j] = p[j + 1];
  p[len - 1] = zero;
}

}  // namespace

// Berlekamp-Massey over the syndromes S[0..2tUse-1], optionally started from
// the erasure locator prod (alpha^(n-1-e_j) x + 1) of the f erasures. The
// length rule 2L < r + f becomes the textbook r > 2L for f = 0, and the
// iteration succeeds when 2L <= f + 2tUse (e errors + f erasures with
// 2e + f <= 2tUse). The inversionless form keeps Lambda scaled by the last
// non-zero discrepancy gamma instead of dividing B by it.
int RSECC::berlekampMassey(const int* S, int* lambda, int* B, int len, int& L, int tUse, int n,
                           const int* erasures, int nErasures, bool inversionless, int* gammaOut) {
  const int zero = gf->getZero(), one = gf->getOne();
  std::fill(lambda, lambda + len, zero);
  std::fill(B, B + len, zero);
  lambda[len - 1] = one;
  B[len - 1] = one;
  L = 0;
  int gamma = one;
  if (nErasures > 0) {
    if (nErasures > len - 1) return 0;
    std::vector<int> erasureLocator(1, one), product;
    for (int j = 0; j < nErasures; ++j) {
      const int factor[2] = {n - 1 - erasures[j], one};
      product.assign(j + 2, zero);
      gf->polyMult(erasureLocator.data(), j, factor, 1, product.data(), j + 1);
      erasureLocator = product;
    }
    std::copy(erasureLocator.begin(), erasureLocator.end(), lambda + len - 1 - nErasures);
    std::copy(erasureLocator.begin(), erasureLocator.end(), B + len - 1 - nErasures);
    L = nErasures;
  }
  for (int r = nErasures + 1; r <= 2 * tUse; ++r) {
    int delta = zero;
    for (int i = 0; i <= std::min(L, r - 1); ++i)
      delta = gf->add(delta, gf->multiply(lambda[len - 1 - i], S[r - 1 - i]));
    locatorStep(lambda, B, len, r, delta, nErasures, inversionless, gamma, L);
  }
  if (gammaOut) *gammaOut = gamma;
  if (2 * L > nErasures + 2 * tUse || isZeroPoly(lambda, len)) return 0;
  return 1;
}

// Step r of the iteration once its discrepancy delta is known:
// Lambda <- gamma Lambda + delta x B (plain Lambda + delta x B with
// inversion); on a length change B takes the old Lambda (divided by delta
// with inversion) and gamma becomes delta, otherwise B <- x B.
void RSECC::locatorStep(int* lambda, int* B, int len, int r, int delta, int nErasures, bool inversionless,
                        int& gamma, int& L) {
  const int zero = gf->getZero();
  std::vector<int> old(lambda, lambda + len), T(B, B + len);
  shiftUp(T.data(), len, zero);
  if (delta != zero) {
    for (int j = 0; j < len; ++j) {
      const int scaled = inversionless ? gf->multiply(gamma, lambda[j]) : lambda[j];
      lambda[j] = gf->add(scaled, gf->multiply(delta, T[j]));
    }
  }
  if (delta != zero && 2 * L < r + nErasures) {
    L = r - L + nErasures;
    if (inversionless) {
      std::copy(old.begin(), old.end(), B);
      gamma = delta;
    } else {
      const int inv = gf->multInverse(delta);
      for (int j = 0; j < len; ++j) B[j] = gf->multiply(inv, old[j]);
    }
  } else {
    std::copy(T.begin(), T.end(), B);
  }
}

int RSECC::BM_inversionless(int n, const int* S, int* lambda, int* B, int len, int& L, int& L2, int tUse) {
  const int ok = berlekampMassey(S, lambda, B, len, L, tUse, n, nullptr, 0, true, nullptr);
  L2 = L;
  return ok;
}

int RSECC::BM(int n, const int* S, int* lambda, int* B, int len, int& L, int& L2, int tUse) {
  const int ok = berlekampMassey(S, lambda, B, len, L, tUse, n, nullptr, 0, false, nullptr);
  L2 = L;
  return ok;
}

int RSECC::BM_EAE_inversionless(int n, const int* S, int* lambda, int* B, int len, int& L, int& L2,
                                int tUse, const int* erasures, int nErasures) {
  const int ok = berlekampMassey(S, lambda, B, len, L, tUse, n, erasures, nErasures, true, nullptr);
  L2 = L;
  return ok;
}

int RSECC::BM_errorAndErasure(int n, const int* S, int* lambda, int* B, int len, int& L, int& L2,
                              int tUse, const int* erasures, int nErasures) {
  const int ok = berlekampMassey(S, lambda, B, len, L, tUse, n, erasures, nErasures, false, nullptr);
  L2 = L;
  return ok;
}

// Candidates in the order one, zero, alpha^(q-2), ..., alpha; the whole field
// is searched even after deg(Lambda) roots have been found.
void RSECC::chienSearch(const int* lambda, int len, int* roots, int& nRoots) {
  nRoots = 0;
  if (len <= 0 || isZeroPoly(lambda, len)) {
    std::cout << "WARNING::All zero polynomial is passed to the Chien Search" << std::endl;
    return;
  }
  std::fill(roots, roots + len - 1, -1);
  const int q = gf->getN();
  for (int step = 0; step < q; ++step) {
    const int x = step == 0 ? 0 : q - step;
    if (gf->evaluatePoly(lambda, len, x) == gf->getZero() && nRoots < len - 1) roots[nRoots++] = x;
  }
}

int RSECC::Forney(const int* S, const int* lambda, int len, const int* roots, int nRoots, int* values,
                  int tUse) {
  const int zero = gf->getZero();
  const int degXS = 2 * tUse;
  std::vector<int> xS(degXS + 1, zero);
  for (int i = 0; i < degXS; ++i) xS[degXS - 1 - i] = S[i];
  std::vector<int> product(degXS + len);
  gf->polyMult(xS.data(), degXS, lambda, len - 1, product.data(), degXS + len - 1);
  const int* omega = product.data() + product.size() - (degXS + 1);
  std::vector<int> dLambda(std::max(len - 1, 1), zero);
  gf->derivative(lambda, len - 1, dLambda.data());
  for (int k = 0; k < nRoots; ++k) {
    const int X = roots[k];
    int v = gf->evaluatePoly(dLambda.data(), len - 1, X);
    v = gf->multiply(v, X);
    v = gf->multInverse(v);
    v = gf->multiply(v, gf->evaluatePoly(omega, degXS + 1, X));
    if (b0 == 0) v = gf->multiply(v, gf->multInverse(X));
    values[k] = v;
  }
  return 1;
}

// sum_i Lambda_i S[j-i] for a locator of count coefficients (constant term
// last): zero exactly when the locator's recurrence reproduces S[j].
int RSECC::locatorSum(const int* lambda, int count, const int* S, int j) {
  int sum = gf->getZero();
  for (int i = 0; i < count && i <= j; ++i) sum = gf->add(sum, gf->multiply(S[j - i], lambda[count - 1 - i]));
  return sum;
}

int RSECC::isValidErrorLocator(const int* cw, int n, const int* lambda, int count, int nRoots, int tUse,
                               int method) {
  if (count < 1 || isZeroPoly(lambda, count)) return 0;
  if (method == 1) return count - 1 == nRoots ? 1 : 0;
  if (method == 2) {
    if (2 * tUse >= nParity) return 1;
    std::vector<int> S(nParity);
    syndromesCompute(cw, n, S.data(), nParity);
    for (int j = 2 * tUse; j < nParity; ++j)
      if (locatorSum(lambda, count, S.data(), j) != gf->getZero()) return 0;
    return 1;
  }
  std::cout << "WARNING:::RS_ECC::isValidErrorLocator: no valid method os cnosen to check the validity "
               "of error locator polynomial"
            << std::endl;
  return 0;
}

int RSECC::isValidErrorLocator(const int* lambda, int count, int tUse, const int* S) {
  if (2 * tUse >= nParity)
    fatal("RSECC::isValidErrorLocator: Need to insert extra syndromes to run simplified error locator "
          "poly validity test, exiting...");
  const int j = useUpperSyndromes ? count - 1 : 2 * tUse;
  return locatorSum(lambda, count, S, j) == gf->getZero() ? 1 : 0;
}

int RSECC::fullValidityCheckErrorLocator(const int* lambda, int count, const int* S) {
  if (count - 1 >= nParity) return 1;
  for (int j = count - 1; j < nParity; ++j)
    if (locatorSum(lambda, count, S, j) != gf->getZero()) return 0;
  return 1;
}

int RSECC::decode(int* cw, int n, int tUse, const int* mask) {
  return decodeWithLocator(cw, n, tUse, mask, nullptr, 0, false);
}

int RSECC::decodeErrorAndErasure(int* cw, int n, const int* erasures, int nErasures, int tUse,
                                 const int* mask) {
  return decodeWithLocator(cw, n, tUse, mask, erasures, nErasures, true);
}

// The shared driver of decode and decodeErrorAndErasure. The word is left
// untouched on every failure except a root outside the word, where the
// in-range corrections have already been applied.
int RSECC::decodeWithLocator(int* cw, int n, int tUse, const int* mask, const int* erasures,
                             int nErasures, bool withErasures) {
  tUse = effectiveT(tUse);
  useUpperSyndromes = 0;
  std::vector<int> masked;
  const int* r = cw;
  if (maskInput) {
    masked.resize(n);
    for (int i = 0; i < n; ++i) masked[i] = gf->add(cw[i], mask[i]);
    r = masked.data();
  }
  std::vector<int> S(nParity);
  syndromesCompute(r, n, S.data(), nParity);
  if (2 * tUse > 0 && isValidSyndromes(S.data(), tUse)) return 1;
  if (tUse == 0) return 1;

  if (withErasures) {
    if (nErasures > 2 * tUse) return 0;
    for (int j = 0; j < nErasures; ++j)
      if (erasures[j] < 0 || erasures[j] >= n) return 0;
  }
  const int len = 2 * tUse + 1;
  const int* usedS = S.data() + (useUpperSyndromes ? nParity - 2 * tUse : 0);
  std::vector<int> lambda(len), B(len);
  int L = 0, L2 = 0;
  const int ok = withErasures
                     ? BM_EAE_inversionless(n, usedS, lambda.data(), B.data(), len, L, L2, tUse, erasures,
                                            nErasures)
                     : BM_inversionless(n, usedS, lambda.data(), B.data(), len, L, L2, tUse);
  if (!ok) return 0;

  std::vector<int> roots(len - 1);
  int nRoots = 0;
  chienSearch(lambda.data(), len, roots.data(), nRoots);
  if (!isValidErrorLocator(r, n, lambda.data() + (len - 1 - L), L + 1, nRoots, tUse, 1)) return 0;

  std::vector<int> values(nRoots);
  Forney(usedS, lambda.data(), len, roots.data(), nRoots, values.data(), tUse);
  int result = 1;
  for (int k = 0; k < nRoots; ++k) {
    const int p = gf->multInverse(roots[k]);
    if (p >= 0 && p < n) {
      cw[n - 1 - p] = gf->add(cw[n - 1 - p], values[k]);
    } else {
      result = 0;
    }
  }
  return result;
}
