// The plain BCH algorithms, step by step as the library first had them: a
// test oracle and the benchmark baseline for the fast engine. Keep this file
// unoptimised; its value is that it is obviously the described algorithm.
#include "support/referenceBch.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <set>
#include <vector>

#include "Tools/utilities.h"
#include "gf/gf.h"
#include "gf/gfutilities.h"
#include "rsecc/rsecc.h"

namespace {

[[noreturn]] void fatal(const char* message) {
  std::cout << message << std::endl;
  std::exit(-1);
}

// Union of the cyclotomic cosets {e * 2^j mod (q-1)} of e = b .. b+2t-1.
// The shift is 32-bit signed arithmetic, wrapping as such, computed
// through unsigned to stay defined.
std::set<int> rootExponents(int b, int t, int m, int q) {
  std::set<int> roots;
  for (int i = b; i <= b + 2 * t - 1; ++i)
    for (int j = 0; j < m; ++j) {
      const int32_t shifted = static_cast<int32_t>(static_cast<uint32_t>(i) << j);
      roots.insert(shifted % (q - 1));
    }
  return roots;
}

}  // namespace

ReferenceBCH::ReferenceBCH(GF* gf_, int n_, int t_, int b_, int k_) : gf(gf_), n(n_), k(k_), t(t_), b(b_) {
  const int m = gf->getM();
  const int q = gf->getN();
  if (b != 0 && b != 1) fatal("only b=1 and b=0 are supported.");
  if (b == 0 && t > 1) fatal("b=0 only supported for t=1.");

  const std::set<int> roots = rootExponents(b, t, m, q);
  const int r = static_cast<int>(roots.size());
  if (k != 0)
    n = k + r;
  else
    k = n - r;

  // g(x) = prod over R of (x + alpha^e), grown one linear factor at a time
  // in field form, degree order.
  const int zero = gf->getZero();
  const int one = gf->getOne();
  genPoly = new int[r + 1];
  std::fill(genPoly, genPoly + r + 1, zero);
  genPoly[0] = one;
  std::vector<int> product(r + 1, zero);
  int factor[2] = {zero, one};
  int degree = 0;
  for (int e : roots) {
    factor[0] = e;
    polyMult(gf, factor, 1, genPoly, degree, product.data());
    ++degree;
    std::copy(product.begin(), product.begin() + degree + 1, genPoly);
  }
  // R is closed under doubling, so g is its own Frobenius image and every
  // coefficient is 0 or 1; anything else means the field is broken.
  for (int i = 0; i <= n - k; ++i) {
    if (genPoly[i] == one)
      genPoly[i] = 1;
    else if (genPoly[i] == zero)
      genPoly[i] = 0;
    else
      fatal("BCH constructor error!");
  }

  // nParity -1 gives 2t parity symbols with roots alpha^0 .. alpha^(2t-1).
  rsecc = new RSECC(gf, t, -1, false, 0);

  // A fresh code reports zero syndromes and a zero locator. The syndrome
  // store has room for S1..S5 even when n-k < 5, so that the closed-form
  // solver never reads outside it.
  const int syndromeSlots = std::max(n - k, 5);
  syndromes = new int[syndromeSlots];
  std::fill(syndromes, syndromes + syndromeSlots, zero);
  lambda = new int[2 * t + 1];
  std::fill(lambda, lambda + 2 * t + 1, zero);
}

ReferenceBCH::~ReferenceBCH() {
  delete[] genPoly;
  delete rsecc;
  delete[] syndromes;
  delete[] lambda;
}

void ReferenceBCH::encode(int* msg, int* cw) {
  // Degree order: x^(n-k) m(x) in the top k cells, parity below it.
  for (int i = 0; i < k; ++i) cw[n - 1 - i] = msg[i];
  std::fill(cw, cw + (n - k), 0);
  std::vector<int> remainder(n - k);
  findRemainderGF2(cw, n - 1, genPoly, n - k, remainder.data());
  std::copy(remainder.begin(), remainder.end(), cw);
  array_rev(cw, n);
}

void ReferenceBCH::encode_parity(const int* msg, int* parityBits) {
  std::vector<int> shifted(n, 0);
  for (int i = 0; i < k; ++i) shifted[n - 1 - i] = msg[i];
  findRemainderGF2(shifted.data(), n - 1, genPoly, n - k, parityBits);
  array_rev(parityBits, n - k);
}

void ReferenceBCH::findRemainderGF2(int* a, int degA, int* g, int degG, int* rem) {
  std::fill(rem, rem + degG, 0);
  if (degA < degG) {
    std::copy(a, a + degA + 1, rem);
    return;
  }
  for (int i = 0; i < degG; ++i) rem[degG - 1 - i] = a[degA - i];
  // Each step is R(x) <- (x R(x) + a_s) mod g(x): the bit leaving the top
  // cell is fed back through the taps of g, whose x^degG and x^0 terms are 1.
  for (int s = degA - degG; s >= 0; --s) {
    const int feedback = rem[degG - 1];
    for (int i = degG - 1; i >= 1; --i) rem[i] = g[i] != 0 ? (rem[i - 1] + feedback) % 2 : rem[i - 1];
    rem[0] = (a[s] + feedback) % 2;
  }
}

bool ReferenceBCH::computeSyndromes(int* r, int* S) {
  parity = 0;
  for (int i = 0; i < n; ++i) parity = (parity + r[i]) % 2;

  const int zero = gf->getZero();
  const int one = gf->getOne();
  std::fill(S, S + 2 * t, zero);
  // Horner's rule for all 2t evaluation points at once, top degree first;
  // the point of S[j] is alpha^(b+j), which is b+j in exponent form.
  for (int i = n - 1; i >= 0; --i)
    for (int j = 0; j < 2 * t; ++j) {
      if (r[i] != 0) S[j] = gf->add(S[j], one);
      if (i > 0) S[j] = gf->multiply(S[j], b + j);
    }

  bool codeword = std::all_of(S, S + 2 * t, [zero](int s) { return s == zero; });
  // With b = 0 the root 1 already forces even weight, but the parity bit
  // is the authority: it also counts entries other than 0/1 by value.
  if (b == 0 && parity == 1) codeword = false;
  return codeword;
}

bool ReferenceBCH::isCodeword(int* cw) {
  std::vector<int> word(cw, cw + n);
  array_rev(word.data(), n);
  return computeSyndromes(word.data(), syndromes);
}

void ReferenceBCH::returnSyndromes(int* out, int len) {
  if (len > n - k) fatal("syndrome size cannot be greater than n-k");
  std::copy(syndromes, syndromes + len, out);
}

void ReferenceBCH::BMA(int* S, int* Lambda, int tLimit) {
  const int zero = gf->getZero();
  const int one = gf->getOne();
  // B is the correction polynomial, kept scaled by the inverse of the
  // discrepancy at the last length change; T is the next locator.
  std::vector<int> B(2 * t + 1, zero);
  std::vector<int> T(2 * t + 1, zero);
  std::fill(Lambda + 1, Lambda + 2 * t + 1, zero);
  Lambda[0] = B[0] = T[0] = one;

  const int tUse = (tLimit == -1 || tLimit > t) ? t : tLimit;
  int L = 0;
  for (int r = 0; r < 2 * tUse; ++r) {
    // L <= r holds before every step, so S[r-j] stays in range.
    int delta = zero;
    for (int j = 0; j <= L; ++j) delta = gf->add(delta, gf->multiply(Lambda[j], S[r - j]));
    const bool lengthChange = delta != zero && r >= 2 * L;
    if (lengthChange) L = r + 1 - L;

    for (int i = 1; i <= 2 * tUse; ++i) T[i] = gf->add(Lambda[i], gf->multiply(delta, B[i - 1]));
    if (lengthChange) {
      const int inverse = gf->multInverse(delta);
      for (int i = 0; i <= 2 * tUse; ++i) B[i] = gf->multiply(inverse, Lambda[i]);
    } else {
      for (int i = 2 * tUse; i >= 1; --i) B[i] = B[i - 1];
      B[0] = zero;
    }
    std::copy(T.begin(), T.begin() + 2 * tUse + 1, Lambda);
  }
}

void ReferenceBCH::returnLambda(int* out, int len) {
  if (len > 2 * t + 1) {
    std::cerr << "lambda size cannot be greater than 2t+1." << std::endl;
    std::exit(-1);
  }
  std::copy(lambda, lambda + len, out);
}

int ReferenceBCH::decode(int* in, int* out, bool rsMode, int tLimit) {
  return rsMode ? decodeRS(in, out, tLimit) : decodeBCH(in, out, tLimit);
}

int ReferenceBCH::decodeBCH(int* in, int* out, int tLimit) {
  std::copy(in, in + n, out);
  if (tLimit == 0) return 1;

  array_rev(out, n);
  if (computeSyndromes(out, syndromes)) {
    array_rev(out, n);
    std::fill(lambda, lambda + 2 * t + 1, gf->getZero());
    return 1;
  }
  std::vector<int> locator(2 * t + 1);
  BMA(syndromes, locator.data(), tLimit);
  std::copy(locator.begin(), locator.end(), lambda);
  const int result = chienSearch(locator.data(), out);
  array_rev(out, n);
  return result;
}

int ReferenceBCH::chienSearch(int* locator, int* word) {
  const int zero = gf->getZero();
  // The degree is taken from the full 2t+1 entries whatever limit produced
  // the locator. Lambda[0] is one for every locator a decoder builds; a
  // caller's all-zero array is rejected instead of read below its start.
  int d = 2 * t;
  while (d >= 0 && locator[d] == zero) --d;
  if (d < 0 || d > t) return 0;

  // An error at degree p makes alpha^-p a root. Only the n degrees of the
  // shortened code are tried, so a root among the removed high degrees
  // shows up as a missing root below.
  std::vector<int> errorDegrees;
  for (int i = 0; i < n; ++i)
    if (evaluatePoly(gf, locator, d, gf->multInverse(i)) == zero) errorDegrees.push_back(i);
  if (static_cast<int>(errorDegrees.size()) != d || errorDegrees.empty()) return 0;

  for (int p : errorDegrees) word[p] = (word[p] + 1) % 2;
  return 1;
}

int ReferenceBCH::decodeRS(int* in, int* out, int tLimit) {
  // Bits become the symbols one and zero, in interface order, which is
  // also the Reed-Solomon decoder's leading-first order.
  const int zero = gf->getZero();
  const int one = gf->getOne();
  for (int i = 0; i < n; ++i) out[i] = in[i] == 1 ? one : zero;
  const int result = rsecc->decode(out, n, tLimit, nullptr);
  for (int i = 0; i < n; ++i) out[i] = out[i] == one ? 1 : 0;
  return result;
}

int ReferenceBCH::decodeForSmallT(int* in, int* out, int tLimit) {
  std::copy(in, in + n, out);
  if (tLimit == 0) return 1;

  array_rev(out, n);
  if (computeSyndromes(out, syndromes)) {
    array_rev(out, n);
    return 1;
  }

  const int zero = gf->getZero();
  const int one = gf->getOne();
  const int u = tLimit == -1 ? t : tLimit;
  // Room for the cubic locator even when t < 3; the Chien search reads
  // only the first 2t+1 entries.
  std::vector<int> locator(std::max(2 * t, 3) + 1, zero);
  locator[0] = one;
  if (b != 1 && u >= 2) fatal("decodeSmallT::b must be 1 for t>1");

  // Peterson's direct solution of the Newton identities, with S_j = r(alpha^j):
  //   one error:    sigma1 = S1
  //   two errors:   sigma1 = S1, sigma2 = (S1^3 + S3) / S1
  //   three errors: D = S1^3 + S3, sigma1 = S1,
  //                 sigma2 = (S5 + S3 S1^2) / D, sigma3 = D + sigma2 S1
  // The three "return 0" exits below leave out in degree order.
  const int S1 = syndromes[0];
  const int S3 = syndromes[2];
  const int S5 = syndromes[4];
  switch (u) {
    case 1:
      if (b == 0) {
        // S[0] = r(1) is one exactly for odd weight; S[1] = r(alpha) is the
        // single error's location.
        if (syndromes[0] == zero || parity == 0) return 0;
        locator[1] = syndromes[1];
      } else {
        locator[1] = S1;
      }
      break;
    case 2:
      if (S1 != zero) {
        locator[1] = S1;
        locator[2] = gf->multiply(gf->add(gf->power(S1, 3), S3), gf->multInverse(S1));
      } else if (S3 == zero) {
        return 0;
      }
      // S1 = 0 with S3 != 0 has no two-error solution; the locator stays 1
      // and the Chien search rejects it.
      break;
    case 3: {
      const int S1cubed = gf->power(S1, 3);
      if (S3 != S1cubed) {
        const int D = gf->add(S3, S1cubed);
        locator[1] = S1;
        locator[2] = gf->multiply(gf->add(S5, gf->multiply(S3, gf->power(S1, 2))), gf->multInverse(D));
        locator[3] = gf->add(D, gf->multiply(locator[2], S1));
      } else {
        // S3 = S1^3 fits a single error only if S5 = S1^5 as well.
        if (S5 != gf->power(S1, 5)) return 0;
        locator[1] = S1;
      }
      break;
    }
    default:
      fatal("t>3 is not supported. ");
  }

  const int result = chienSearch(locator.data(), out);
  array_rev(out, n);
  return result;
}
