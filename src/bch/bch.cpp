// Construction, systematic encoding and bit-level decoding of the binary BCH
// code; see bch.h for the code, the word orders and the decoder outline.
#include "bch/bch.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <set>
#include <vector>

#include "Tools/utilities.h"
#include "bch/bchEngine.h"
#include "bch/packedBits.h"
#include "gf/gf.h"
#include "gf/gfutilities.h"
#include "randgen/classicGenerators.h"
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

BCH::BCH(GF* gf_, int n_, int t_, int b_, int k_) : BCH(gf_, n_, t_, b_, k_, nullptr) {}

BCH::BCH(GF* gf_, int n_, int t_, int b_, int k_, const BCH* tablesFrom)
    : gf(gf_),
      n(n_),
      k(k_),
      t(t_),
      b(b_),
      genPoly(nullptr),
      parity(-1),
      syndromes(nullptr),
      lambda(nullptr) {
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

  if (k >= 0 && BchEngine::supports(gf, n, t, b)) {
    genPolyStorage.assign(r + 1, 0);
    genPoly = genPolyStorage.data();
    std::shared_ptr<const FieldTables> tables;
    std::shared_ptr<const GeneratorRemainder> divider;
    if (tablesFrom && tablesFrom->engine && tablesFrom->gf == gf && tablesFrom->t == t && tablesFrom->b == b) {
      tables = tablesFrom->engine->sharedField();
      divider = tablesFrom->engine->sharedDivider();
      std::copy(tablesFrom->genPoly, tablesFrom->genPoly + r + 1, genPoly);
    } else {
      tables = std::make_shared<const FieldTables>(gf);
      const std::vector<int> g = BchEngine::generatorOf(*tables, roots);
      std::copy(g.begin(), g.end(), genPoly);
      divider = std::make_shared<const GeneratorRemainder>(genPoly, r);
    }
    engine = std::make_unique<BchEngine>(std::move(tables), std::move(divider), n, k, t, b);
    packedMessage.assign(packedbits::bytesFor(k) + 1, 0);
    packedParity.assign(packedbits::bytesFor(r) + 1, 0);
    errorPositions.assign(t + 1, 0);
  } else {
    buildGeneratorInField(roots);
  }

  const int zero = gf->getZero();
  // A fresh code reports zero syndromes and a zero locator. The syndrome
  // store has room for S1..S5 even when n-k < 5, so that the closed-form
  // solver never reads outside it.
  const int syndromeSlots = std::max(n - k, 5);
  syndromeStorage.assign(syndromeSlots, zero);
  syndromes = syndromeStorage.data();
  lambdaStorage.assign(2 * t + 1, zero);
  lambda = lambdaStorage.data();
}

void BCH::buildGeneratorInField(const std::set<int>& roots) {
  // g(x) = prod over R of (x + alpha^e), grown one linear factor at a time
  // in field form, degree order.
  const int r = static_cast<int>(roots.size());
  const int zero = gf->getZero();
  const int one = gf->getOne();
  genPolyStorage.assign(r + 1, zero);
  genPoly = genPolyStorage.data();
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
  for (int i = 0; i <= r; ++i) {
    if (genPoly[i] == one)
      genPoly[i] = 1;
    else if (genPoly[i] == zero)
      genPoly[i] = 0;
    else
      fatal("BCH constructor error!");
  }
}

BCH::~BCH() = default;

bool BCH::packWord(const int* word, bool degreeOrder) {
  const int r = n - k;
  // Both halves are always packed, whatever the first reports.
  const bool messageBinary = degreeOrder ? packedbits::packIntsReversed(word + n - 1, k, packedMessage.data())
                                         : packedbits::packInts(word, k, packedMessage.data());
  const bool parityBinary = degreeOrder ? packedbits::packIntsReversed(word + r - 1, r, packedParity.data())
                                        : packedbits::packInts(word + k, r, packedParity.data());
  return messageBinary && parityBinary;
}

int BCH::packedWeightParity() const {
  // The packing clears the tails of both buffers, so whole bytes may be XORed.
  unsigned ones = 0;
  for (size_t i = 0; i < packedbits::bytesFor(k); ++i) ones ^= packedMessage[i];
  for (size_t i = 0; i < packedbits::bytesFor(n - k); ++i) ones ^= packedParity[i];
  ones ^= ones >> 4;
  ones ^= ones >> 2;
  ones ^= ones >> 1;
  return static_cast<int>(ones & 1);
}

int BCH::parityFold(const int* word, int length) {
  int p = 0;
  for (int i = 0; i < length; ++i) p = (p + word[i]) % 2;
  return p;
}

void BCH::encode(int* msg, int* cw) {
  if (engine && packedbits::packInts(msg, k, packedMessage.data())) {
    std::copy(msg, msg + k, cw);
    engine->encodeParity(packedMessage.data(), k, packedParity.data());
    packedbits::unpackInts(packedParity.data(), n - k, cw + k);
    return;
  }
  // Degree order: x^(n-k) m(x) in the top k cells, parity below it.
  for (int i = 0; i < k; ++i) cw[n - 1 - i] = msg[i];
  std::fill(cw, cw + (n - k), 0);
  std::vector<int> remainder(n - k);
  findRemainderGF2(cw, n - 1, genPoly, n - k, remainder.data());
  std::copy(remainder.begin(), remainder.end(), cw);
  array_rev(cw, n);
}

void BCH::encode_parity(const int* msg, int* parityBits) {
  if (engine && packedbits::packInts(msg, k, packedMessage.data())) {
    engine->encodeParity(packedMessage.data(), k, packedParity.data());
    packedbits::unpackInts(packedParity.data(), n - k, parityBits);
    return;
  }
  std::vector<int> shifted(n, 0);
  for (int i = 0; i < k; ++i) shifted[n - 1 - i] = msg[i];
  findRemainderGF2(shifted.data(), n - 1, genPoly, n - k, parityBits);
  array_rev(parityBits, n - k);
}

void BCH::findRemainderGF2(int* a, int degA, int* g, int degG, int* rem) {
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

bool BCH::computeSyndromes(int* r, int* S) {
  if (!engine) return plainSyndromes(r, S);
  // Syndromes see non-zero entries as ones; the parity member adds the raw
  // values, which only differs from the bit parity for other entries.
  const bool binary = packWord(r, true);
  bool codeword = engine->syndromes(packedMessage.data(), k, packedParity.data(), S);
  if (binary) {
    parity = packedWeightParity();
  } else {
    parity = parityFold(r, n);
  }
  if (b == 0 && parity == 1) codeword = false;
  return codeword;
}

bool BCH::plainSyndromes(int* r, int* S) {
  parity = parityFold(r, n);
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

bool BCH::isCodeword(int* cw) {
  std::vector<int> word(cw, cw + n);
  array_rev(word.data(), n);
  return computeSyndromes(word.data(), syndromes);
}

void BCH::returnSyndromes(int* out, int len) {
  if (len > n - k) fatal("syndrome size cannot be greater than n-k");
  std::copy(syndromes, syndromes + len, out);
}

void BCH::BMA(int* S, int* Lambda, int tLimit) {
  if (engine)
    engine->locator(S, tLimit, Lambda);
  else
    plainBMA(S, Lambda, tLimit);
}

void BCH::plainBMA(int* S, int* Lambda, int tLimit) {
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

void BCH::returnLambda(int* out, int len) {
  if (len > 2 * t + 1) {
    std::cerr << "lambda size cannot be greater than 2t+1." << std::endl;
    std::exit(-1);
  }
  std::copy(lambda, lambda + len, out);
}

int BCH::decode(int* in, int* out, bool rsMode, int tLimit) {
  return rsMode ? decodeRS(in, out, tLimit) : decodeBCH(in, out, tLimit);
}

int BCH::decodeBCH(int* in, int* out, int tLimit) {
  std::copy(in, in + n, out);
  if (tLimit == 0) return 1;
  if (engine) {
    // The word is read in interface order; the parity member folds it in
    // degree order, as the plain decoder reverses it first.
    const bool binary = packWord(in, false);
    if (binary) {
      parity = packedWeightParity();
    } else {
      parity = 0;
      for (int i = n - 1; i >= 0; --i) parity = (parity + in[i]) % 2;
    }
    int count = 0;
    const int result = engine->decode(packedMessage.data(), k, packedParity.data(), tLimit, b == 0 && parity == 1,
                                      syndromes, lambda, errorPositions.data(), count);
    for (int e = 0; e < count; ++e) {
      int& bit = out[n - 1 - errorPositions[e]];
      bit = (bit + 1) % 2;
    }
    return result;
  }

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

int BCH::chienSearch(int* locator, int* word) {
  const int zero = gf->getZero();
  // The degree is taken from the full 2t+1 entries whatever limit produced
  // the locator. Lambda[0] is one for every locator a decoder builds; a
  // caller's all-zero array is rejected instead of read below its start.
  int d = 2 * t;
  while (d >= 0 && locator[d] == zero) --d;
  if (d < 0 || d > t) return 0;
  if (!engine) return plainChienSearch(locator, word, d);
  if (d == 0 || !engine->roots(locator, d, errorPositions.data())) return 0;
  for (int e = 0; e < d; ++e) word[errorPositions[e]] = (word[errorPositions[e]] + 1) % 2;
  return 1;
}

int BCH::plainChienSearch(int* locator, int* word, int d) {
  const int zero = gf->getZero();
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

int BCH::decodeRS(int* in, int* out, int tLimit) {
  // Bits become the symbols one and zero, in interface order, which is
  // also the Reed-Solomon decoder's leading-first order.
  const int zero = gf->getZero();
  const int one = gf->getOne();
  // nParity -1 gives 2t parity symbols with roots alpha^0 .. alpha^(2t-1).
  if (!rsecc) rsecc = std::make_unique<RSECC>(gf, t, -1, false, 0);
  for (int i = 0; i < n; ++i) out[i] = in[i] == 1 ? one : zero;
  const int result = rsecc->decode(out, n, tLimit, nullptr);
  for (int i = 0; i < n; ++i) out[i] = out[i] == one ? 1 : 0;
  return result;
}

int BCH::decodeForSmallT(int* in, int* out, int tLimit) {
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

void BCH::injectHardErrors(int* in, int* out, int numErrors, long& seed) {
  // Positions are drawn until an unflipped one comes up, so the flips are
  // distinct; with numErrors > n no free position would remain and the
  // draw would never end.
  if (numErrors > n) fatal("injectHardErrors: more errors than the word has bits.");
  std::copy(in, in + n, out);
  for (int e = 0; e < numErrors; ++e) {
    int p;
    do {
      p = static_cast<int>(std::floor(ran1(&seed) * n));
    } while (p < 0 || p >= n || out[p] != in[p]);
    out[p] ^= 1;
  }
}
