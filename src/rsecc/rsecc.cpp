// Reed-Solomon code construction, systematic encoding and hard-decision
// decoding over GF(2^m), all in exponent form and leading-first order.
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
#include <cstdlib>
#include <fstream>
#include <iostream>

#include "Tools/code30_31nrz_v2.h"
#include "gf/gf.h"

namespace {

// The list decoder's stored schedule: each row is a zero-terminated list of
// (a, b) pairs, a in 1..6 and b in 1..2.
const int kScheduleRows = 70;
const int kScheduleCols = 24;
const int kSchedulePairs[kScheduleRows][kScheduleCols] = {
    {1, 1},
    {4, 2},
    {2, 1},
    {5, 1},
    {3, 1},
    {4, 2, 4, 1},
    {6, 1},
    {5, 1, 5, 2},
    {1, 1, 6, 1},
    {1, 1, 2, 1},
    {2, 1, 3, 1},
    {4, 2, 4, 1, 1, 1},
    {4, 2, 4, 1, 2, 1},
    {2, 1, 5, 1},
    {3, 1, 1, 1},
    {4, 2, 4, 1, 5, 1},
    {5, 1, 5, 2, 6, 1},
    {3, 1, 4, 1},
    {2, 1, 5, 1, 5, 2},
    {5, 1, 5, 2, 3, 1},
    {6, 1, 2, 1},
    {4, 2, 4, 1, 5, 1, 5, 2},
    {5, 1, 5, 2, 1, 1},
    {3, 1, 4, 1, 4, 2},
    {2, 1, 5, 1, 5, 2, 3, 1},
    {5, 1, 5, 2, 6, 1, 2, 1},
    {1, 1, 2, 1, 3, 1},
    {5, 1, 5, 2, 6, 1, 3, 1},
    {1, 1, 2, 1, 6, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 2, 1},
    {5, 1, 5, 2, 1, 1, 2, 1},
    {1, 1, 2, 1, 4, 1},
    {5, 1, 5, 2, 1, 1, 3, 1},
    {2, 1, 5, 1, 5, 2, 3, 1, 1, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 2, 1, 3, 1},
    {2, 1, 5, 1, 5, 2, 3, 1, 6, 1},
    {1, 1, 2, 1, 4, 1, 4, 2},
    {4, 2, 4, 1, 5, 1, 5, 2, 2, 1, 6, 1},
    {6, 1, 3, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 6, 1},
    {6, 1, 4, 1},
    {3, 1, 4, 1, 4, 2, 1, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 3, 1},
    {3, 1, 4, 1, 4, 2, 2, 1},
    {5, 1, 5, 2, 1, 1, 6, 1},
    {6, 1, 4, 1, 4, 2},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 6, 1},
    {3, 1, 4, 1, 4, 2, 6, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 2, 1},
    {6, 1, 3, 1, 2, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 3, 1, 1, 1},
    {6, 1, 3, 1, 1, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 3, 1, 6, 1},
    {6, 1, 4, 1, 4, 2, 1, 1},
    {5, 1, 5, 2, 1, 1, 6, 1, 3, 1},
    {6, 1, 4, 1, 4, 2, 2, 1},
    {5, 1, 5, 2, 1, 1, 6, 1, 2, 1},
    {1, 1, 2, 1, 4, 1, 4, 2, 6, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 2, 1, 6, 1},
    {1, 1, 2, 1, 4, 1, 4, 2, 3, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 2, 1, 3, 1},
    {3, 1, 4, 1, 4, 2, 6, 1, 1, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 3, 1, 6, 1, 1, 1},
    {3, 1, 4, 1, 4, 2, 6, 1, 2, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 3, 1, 6, 1, 2, 1},
    {6, 1, 3, 1, 1, 1, 2, 1},
    {5, 1, 5, 2, 1, 1, 6, 1, 2, 1, 3, 1},
    {1, 1, 2, 1, 4, 1, 4, 2, 3, 1, 6, 1},
    {4, 2, 4, 1, 5, 1, 5, 2, 1, 1, 2, 1, 3, 1, 6, 1},
};

[[noreturn]] void fatal(const char* message) {
  std::cout << message << std::endl;
  std::exit(-1);
}

// x*B in leading-first storage: every coefficient moves one place towards
// the leading end and the constant term becomes zero.
void shiftUp(int* p, int len, int zero) {
  for (int j = 0; j + 1 < len; ++j) p[j] = p[j + 1];
  p[len - 1] = zero;
}

}  // namespace

RSECC::RSECC(GF* field, int t_, int nParity_, bool maskInput_, int b0_)
    : gf(field->clone()), t(t_), b0(b0_), maskInput(maskInput_) {
  nParity = nParity_;
  if (nParity == -1) {
    nParity = 2 * t;
  } else if (nParity < 2 * t) {
    std::cout << "RSECC::RSECC: _nPritySymbols is less than the 2*t" << std::endl;
  }
  genPoly.assign(nParity + 1, gf->getZero());
  buildGenerator(nParity, genPoly.data());

  listWork.assign(4 * t > 0 ? 4 * t : 0, std::vector<int>(3 * t + 2 > 0 ? 3 * t + 2 : 0, 0));
  if (nParity_ != -1 && nParity_ > 2 * t) {
    trueValidityTest = true;
    std::cout << "ADV ECC::USING TRUE VALIDITY TEST" << std::endl;
  }
  listStepsPerError = 2;
  readSchedule();
  rll = std::make_unique<Code30_31nrz_v2>();
  eccRll = true;
  listParamA = 16;
  listParamB = 18;
  listParamC = 34;
  listParamD = 27;
  listParamE = 27;
  useUpperSyndromes = 0;
  listDebug = false;
  syndromes.assign(nParity > 0 ? nParity : 0, gf->getZero());
}

RSECC::~RSECC() = default;

// g = (x + alpha^b0) ... (x + alpha^(b0+degree-1)), leading first, degree+1 entries.
// The root exponents are handed to multiply() unreduced.
void RSECC::buildGenerator(int degree, int* g) {
  const int one = gf->getOne();
  g[0] = one;
  if (degree < 1) return;
  g[1] = b0;
  std::vector<int> product(degree + 1);
  for (int i = 2; i <= degree; ++i) {
    const int factor[2] = {one, b0 + i - 1};
    gf->polyMult(g, i - 1, factor, 1, product.data(), i);
    std::copy(product.begin(), product.begin() + i + 1, g);
  }
}

void RSECC::readSchedule() {
  scheduleKind = 3;
  scheduleRows = kScheduleRows;
  scheduleCols = kScheduleCols;
  schedule.assign(scheduleRows, std::vector<int>());
  for (int r = 0; r < scheduleRows; ++r)
    schedule[r].assign(kSchedulePairs[r], kSchedulePairs[r] + scheduleCols);
}

std::vector<int> RSECC::getSchedule() const {
  std::vector<int> flat;
  for (const std::vector<int>& row : schedule) flat.insert(flat.end(), row.begin(), row.end());
  return flat;
}

void RSECC::encode(const int* msg, int k, int* cw, int n) {
  std::copy(msg, msg + k, cw);
  std::fill(cw + k, cw + n, gf->getZero());
  std::vector<int> rem(nParity);
  gf->findRemainder(cw, n - 1, genPoly.data(), nParity, rem.data());
  std::copy(rem.begin(), rem.end(), cw + k);
}

void RSECC::dummyEncoder(const int* msg, int k, int* cw, int n) {
  const int degH = nParity - 1;
  std::vector<int> h(degH + 1, gf->getZero()), product(degH + 1);
  h[0] = gf->getOne();
  for (int i = 1; i <= degH; ++i) {
    const int factor[2] = {gf->getOne(), i};
    gf->polyMult(h.data(), i - 1, factor, 1, product.data(), i);
    std::copy(product.begin(), product.begin() + i + 1, h.begin());
  }
  std::copy(msg, msg + k, cw);
  std::fill(cw + k, cw + n, gf->getZero());
  std::vector<int> rem1(nParity), rem2(degH > 0 ? degH : 1);
  gf->findRemainder(cw, n - 1, genPoly.data(), nParity, rem1.data());
  cw[k] = rem1[0];
  if (degH < 1) return;
  gf->findRemainder(cw, n - 1, h.data(), degH, rem2.data());
  std::copy(rem2.begin(), rem2.begin() + degH, cw + k + 1);
}

int RSECC::isValidCodeword(const int* cw, int n) {
  std::vector<int> rem(nParity);
  gf->findRemainder(cw, n - 1, genPoly.data(), nParity, rem.data());
  return isZeroPoly(rem.data(), nParity) ? 1 : 0;
}

void RSECC::getGenPoly(int* out, int count) const {
  std::copy(genPoly.begin(), genPoly.begin() + count, out);
}

void RSECC::returnSyndromes(int* out, int count) const {
  std::copy(syndromes.begin(), syndromes.begin() + count, out);
}

// One line per generator degree, for the two families of codes with
// t = 16, 18, ..., 36: 2t parity symbols, and 2t+1 (one extra syndrome for
// the validity test).
void RSECC::logValidRsEccGenPoly() {
  std::ofstream out("validRsEccGenPoly.txt", std::ios::out | std::ios::trunc);
  std::vector<int> g(74);
  const char* headers[2] = {"Valid RS ECC generator polynomials, t=16:2:36, AECC off",
                            "Valid RS ECC generator polynomials, t=16:2:36, AECC on"};
  for (int extra = 0; extra < 2; ++extra) {
    out << headers[extra] << "\n";
    for (int d = 32 + extra; d < 76; d += 4) {
      buildGenerator(d, g.data());
      for (int i = 0; i <= d; ++i) out << gf->exp2Int(g[i]) << " ";
      out << "\n";
    }
  }
}

// Whole words go through the block coder; a tail shorter than a word is
// one of the run-length-limited code's partial words.
int RSECC::lrRllEncode(int* in, int nIn, int* out, int /*nOut*/) {
  const int w = rll->getK(), c = rll->getN();
  const int words = nIn / w;
  int result = rll->block_encode(in, out, words, true);
  if (nIn % w != 0) result = rll->encodePartialWord(in + words * w, out + words * c, nIn - words * w, true);
  return result;
}

// The partial codeword's length is derived from the expected output: a
// 10-bit tail was copied as is, any other tail gained one coded bit.
int RSECC::lrRllDecode(int* in, int nIn, int* out, int nOut) {
  const int w = rll->getK(), c = rll->getN();
  const int words = nIn / c;
  if (nIn % c == 0) return rll->block_decode(in, out, words, true);
  int rest = nOut - words * w;
  if (rest != 10) rest += 1;
  rll->block_decode(in, out, words, true);
  return rll->decodePartialCodeword(in + words * c, out + words * w, rest, true);
}

int RSECC::decodeErrorAndUnknownErasure(int* /*cw*/, int /*n*/, int /*nUnknown*/, int /*tUse*/) {
  fatal("RSECC::decodeErrorAndUnknownErasure() has not been finished");
}

bool RSECC::isZeroPoly(const int* p, int count) const {
  for (int i = 0; i < count; ++i)
    if (p[i] != gf->getZero()) return false;
  return true;
}

int RSECC::effectiveT(int tUse) const {
  if (tUse == -1) tUse = t;
  return std::max(0, std::min(tUse, nParity / 2));
}

// ---------------------------------------------------------------------------
// Decoding

void RSECC::syndromesCompute(const int* cw, int n, int* S, int count) {
  if (n >= gf->getN()) std::cout << "Warning: RSECC::syndromesCompute: invalid codeword size" << std::endl;
  for (int j = 1; j <= count; ++j) S[j - 1] = gf->evaluatePoly(cw, n, b0 + j - 1);
  std::copy(S, S + std::min(count, nParity), syndromes.begin());
}

int RSECC::isValidSyndromes(const int* S, int tUse) {
  if (2 * tUse < 1) return 1;
  return isZeroPoly(S, 2 * tUse) ? 1 : 0;
}

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

// ---------------------------------------------------------------------------
// One error beyond the bound
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

// ---------------------------------------------------------------------------
// Bit and symbol packing (m bits per symbol, most significant first)

void RSECC::bitStream2symbolStream(const int* bits, int nBits, int* symbols, int nSymbols, int m) {
  for (int i = 0; i < nSymbols; ++i) {
    const int start = i * m, count = std::min(nBits - start, m);
    int value = 0;
    for (int b = 0; b < count; ++b) value = (value << 1) | (bits[start + b] > 0 ? 1 : 0);
    symbols[i] = gf->int2Exp(value);
  }
}

void RSECC::bitStream2symbolStreamReverseOrderInt(const int* values, int /*nValues*/, int* symbols,
                                                  int nSymbols, int m) {
  for (int i = 0; i < nSymbols; ++i) {
    int value = 0;
    for (int b = 0; b < m; ++b) value = (value << 1) | ((values[i * m + b] + 1) / 2);
    symbols[i] = value;
  }
}

void RSECC::symbolStream2bitStream(const int* symbols, int nSymbols, int* bits, int nBits, int m) {
  for (int i = 0; i < nSymbols; ++i) {
    const int start = i * m, count = std::min(nBits - start, m);
    const int value = gf->exp2Int(symbols[i]);
    for (int b = 0; b < count; ++b) bits[start + b] = (value >> (count - 1 - b)) & 1;
  }
}
