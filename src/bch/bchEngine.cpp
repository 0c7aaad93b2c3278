// The packed-bit BCH pipeline; see the header.
#include "bch/bchEngine.h"

#include <algorithm>

#include "gf/gf.h"

bool BchEngine::supports(GF* gf, int n, int t, int b) {
  if (!FieldTables::supports(gf) || t < 0 || (b != 0 && b != 1)) return false;
  const int order = gf->getN() - 1;
  return b + 2 * t - 1 < order && n <= order && n > 0;
}

std::vector<int> BchEngine::generatorOf(const FieldTables& field, const std::set<int>& roots) {
  std::vector<int> g{1};
  std::set<int> done;
  std::vector<int> coset;
  for (int e : roots) {
    if (done.count(e)) continue;
    const std::vector<int> minimal = field.minimalPolynomial(e, coset);
    done.insert(coset.begin(), coset.end());
    // g <- g M over GF(2).
    std::vector<int> product(g.size() + minimal.size() - 1, 0);
    for (size_t i = 0; i < minimal.size(); ++i)
      if (minimal[i] != 0)
        for (size_t j = 0; j < g.size(); ++j) product[i + j] ^= g[j];
    g.swap(product);
  }
  return g;
}

BchEngine::BchEngine(std::shared_ptr<const FieldTables> fieldShared,
                     std::shared_ptr<const GeneratorRemainder> dividerShared, int n_, int k_, int t_, int b_)
    : n(n_),
      k(k_),
      r(n_ - k_),
      t(t_),
      b(b_),
      fieldTables(std::move(fieldShared)),
      dividerTables(std::move(dividerShared)),
      field(*fieldTables),
      divider(*dividerTables),
      evaluator(field, b_, t_, n_ - k_, divider.kernelLevel()),
      massey(field, t_, divider.kernelLevel()),
      finder(field, t_, divider.kernelLevel()),
      rem(divider.words()),
      syndromePoly(2 * static_cast<size_t>(t_) + 1),
      lambdaPoly(2 * static_cast<size_t>(t_) + 1) {}

void BchEngine::encodeParity(const uint8_t* message, int bits, uint8_t* parity) {
  divider.shiftedRemainder(message, bits, rem.data());
  divider.storeParity(rem.data(), parity);
}

bool BchEngine::remainderIsZero() const {
  uint64_t any = 0;
  for (uint64_t w : rem) any |= w;
  return any == 0;
}

bool BchEngine::syndromes(const uint8_t* message, int bits, const uint8_t* parity, int* S) {
  divider.shiftedRemainder(message, bits, rem.data());
  divider.addParity(parity, rem.data());
  if (remainderIsZero()) {
    std::fill(S, S + 2 * t, field.order());
    return true;
  }
  evaluator.evaluate(rem.data(), r, S);
  return false;
}

void BchEngine::locator(const int* S, int tLimit, int* lambda) { locatorOf(S, tLimit, false, lambda); }

void BchEngine::locatorOf(const int* S, int tLimit, bool squaredSyndromes, int* lambda) {
  // Only S[0..2t'-1] take part; the rest may be anything.
  const int tUse = (tLimit == -1 || tLimit > t) ? t : std::max(tLimit, 0);
  for (int j = 0; j < 2 * tUse; ++j) syndromePoly[j] = field.fromExponent(S[j]);
  massey.locator(syndromePoly.data(), tLimit, lambdaPoly.data(), squaredSyndromes);
  for (int i = 0; i <= 2 * t; ++i) lambda[i] = field.toExponent(lambdaPoly[i]);
}

bool BchEngine::roots(const int* lambda, int d, int* positions) {
  for (int i = 0; i <= d; ++i) lambdaPoly[i] = field.fromExponent(lambda[i]);
  return finder.find(lambdaPoly.data(), d, n, positions);
}

int BchEngine::decode(const uint8_t* message, int bits, const uint8_t* parity, int tLimit, bool notCodeword, int* S,
                      int* lambda, int* positions, int& count) {
  count = 0;
  if (syndromes(message, bits, parity, S) && !notCodeword) {
    std::fill(lambda, lambda + 2 * t + 1, field.order());
    return 1;
  }
  // Syndromes of a word, narrow sense: S_2i = S_i^2.
  locatorOf(S, tLimit, b == 1, lambda);
  int d = 2 * t;
  while (d > 0 && lambdaPoly[d] == 0) --d;
  if (d > t || d == 0) return 0;
  if (!finder.find(lambdaPoly.data(), d, n, positions)) return 0;
  count = d;
  return 1;
}
