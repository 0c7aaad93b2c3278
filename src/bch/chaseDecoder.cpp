// Chase-II decoding on the packed engine; see the header.
#include "bch/chaseDecoder.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>

#include "bch/bchEngine.h"
#include "bch/packedBits.h"
#include "Tools/utilities/selection.h"

ChaseDecoder::ChaseDecoder(BchEngine& engine_, int b_, Options options_)
    : engine(engine_),
      n(engine_.codeLength()),
      k(engine_.messageLength()),
      t(engine_.correctionPower()),
      b(b_),
      options(options_),
      massey(*engine_.sharedField(), t, engine_.sharedDivider()->kernelLevel()),
      finder(*engine_.sharedField(), t, engine_.sharedDivider()->kernelLevel()),
      flipTerms(static_cast<size_t>(kMaxPositions) * 2 * t),
      base(2 * static_cast<size_t>(t)),
      current(2 * static_cast<size_t>(t)),
      lambda(2 * static_cast<size_t>(t) + 1),
      exponents(2 * static_cast<size_t>(t)),
      roots(static_cast<size_t>(t) + 1),
      scratchMessage(packedbits::bytesFor(k)),
      scratchParity(packedbits::bytesFor(engine_.parityLength())) {
  smallest.reserve(std::max(2 * static_cast<size_t>(t) + 1, static_cast<size_t>(kMaxPositions)));
  errors.reserve(static_cast<size_t>(t));
  changed.reserve(static_cast<size_t>(t) + kMaxPositions);
  bestChanged.reserve(static_cast<size_t>(t) + kMaxPositions);
}

void ChaseDecoder::rankLeastReliable(const float* reliability) {
  // The optimality bound needs the 2t + 1 least reliable bits, the test
  // patterns the eta least reliable.
  const int keep = std::min(n, std::max(2 * t + 1, eta));
  // One pass rejects negative values and NaNs (!(r >= 0) holds for both)
  // and notes whether the reliabilities differ at all; counting rather than
  // branching lets the compiler vectorise it.
  const float first = reliability[0];
  int bad = 0, differ = 0;
  for (int i = 0; i < n; ++i) {
    bad += !(reliability[i] >= 0.0f);
    differ += reliability[i] != first;
  }
  if (bad != 0)
    for (int i = 0; i < n; ++i)
      if (!(reliability[i] >= 0.0f))
        throw std::invalid_argument("Chase decoding: reliability of bit " + std::to_string(i) +
                                    " is negative or not a number");
  if (differ == 0) eta = 0;  // nothing to rank: no position is less reliable than another
  tools::smallestK(reliability, static_cast<size_t>(n), static_cast<size_t>(keep), order);
  smallest.resize(order.size());
  for (size_t i = 0; i < order.size(); ++i) smallest[i] = {reliability[order[i]], static_cast<int>(order[i])};
}

void ChaseDecoder::flipBit(uint8_t* message, uint8_t* parity, int bit) const {
  uint8_t* byte = bit < k ? &message[bit / 8] : &parity[(bit - k) / 8];
  const int offset = bit < k ? bit % 8 : (bit - k) % 8;
  *byte = static_cast<uint8_t>(*byte ^ (0x80 >> offset));
}

bool ChaseDecoder::decodeTestWord(const uint8_t* message, const uint8_t* parity) {
  errors.clear();
  if (!options.incrementalSyndromes) {
    if (engine.syndromes(message, k, parity, exponents.data())) return true;
    const FieldTables& field = *engine.sharedField();
    for (int j = 0; j < 2 * t; ++j) current[j] = field.fromExponent(exponents[j]);
  }
  uint16_t any = 0;
  for (uint16_t s : current) any |= s;
  if (any == 0) return true;
  ++locatorCount;
  // A test word is a binary word, so with b = 1 its syndromes satisfy
  // S_2i = S_i^2 and Berlekamp's binary shortcut applies.
  massey.locator(current.data(), -1, lambda.data(), b == 1);
  int d = 2 * t;
  while (d > 0 && lambda[d] == 0) --d;
  if (d == 0 || d > t || !finder.find(lambda.data(), d, n, roots.data())) return false;
  for (int e = 0; e < d; ++e) errors.push_back(n - 1 - roots[e]);
  return true;
}

double ChaseDecoder::scoreOf(const float* reliability, unsigned pattern) const {
  // Bits in F but not E, plus bits in E but not F: no subtraction, so
  // infinite reliabilities stay well defined.
  double score = 0.0;
  unsigned unmatched = pattern;
  for (int bit : errors) {
    bool inPattern = false;
    for (int i = 0; i < eta; ++i)
      if ((pattern >> i & 1u) && smallest[i].bit == bit) {
        inPattern = true;
        unmatched &= ~(1u << i);
      }
    if (!inPattern) score += reliability[bit];
  }
  for (int i = 0; i < eta; ++i)
    if (unmatched >> i & 1u) score += smallest[i].reliability;
  return score;
}

bool ChaseDecoder::provablyBest(double score) const {
  // changed (sorted) is D for this candidate.
  const int need = 2 * t + 1 - static_cast<int>(changed.size());
  if (need <= 0) return score <= 0.0;
  double bound = 0.0;
  int taken = 0;
  for (const Ranked& r : smallest) {
    if (taken == need) break;
    if (std::binary_search(changed.begin(), changed.end(), r.bit)) continue;
    bound += r.reliability;
    ++taken;
  }
  return taken == need && score <= bound;
}

void ChaseDecoder::rememberCandidate() {
  if (knownCount == kKnownCandidates) return;
  unsigned mask = 0;
  for (int i = 0; i < eta; ++i)
    if (std::binary_search(changed.begin(), changed.end(), smallest[i].bit)) mask |= 1u << i;
  for (int c = 0; c < knownCount; ++c)
    if (known[c].mask == mask && known[c].size == static_cast<int>(changed.size())) return;
  known[knownCount++] = {mask, static_cast<int>(changed.size())};
}

bool ChaseDecoder::nearKnownCandidate(unsigned pattern) const {
  // d(y + F, c) = |F xor D| = |F| + |D| - 2 |F and D|, F within the selected bits.
  const int flipped = __builtin_popcount(pattern);
  for (int c = 0; c < knownCount; ++c)
    if (flipped + known[c].size - 2 * __builtin_popcount(pattern & known[c].mask) <= t) return true;
  return false;
}

ChaseDecoder::Outcome ChaseDecoder::decode(uint8_t* message, uint8_t* parity, const float* reliability, int eta_) {
  if (eta_ < 0 || eta_ > kMaxPositions)
    throw std::invalid_argument("Chase decoding: the number of flipped positions must be 0 .. " +
                                std::to_string(kMaxPositions) + ", got " + std::to_string(eta_));
  eta = std::min(eta_, n);
  locatorCount = 0;
  rankLeastReliable(reliability);

  const FieldTables& field = *engine.sharedField();
  const int order = field.order();
  for (int i = 0; i < eta; ++i) {
    // alpha^((b+j) p) for j = 0..2t-1: the exponent steps by p modulo the order.
    const int degree = n - 1 - smallest[i].bit;
    int e = static_cast<int>(static_cast<long long>(b) * degree % order);
    for (int j = 0; j < 2 * t; ++j) {
      flipTerms[static_cast<size_t>(i) * 2 * t + j] = field.exp(e);
      e += degree;
      if (e >= order) e -= order;
    }
  }
  const size_t messageBytes = packedbits::bytesFor(k), parityBytes = packedbits::bytesFor(engine.parityLength());
  if (options.incrementalSyndromes) {
    engine.syndromes(message, k, parity, exponents.data());
    for (int j = 0; j < 2 * t; ++j) base[j] = field.fromExponent(exponents[j]);
    current = base;
  } else {
    std::copy(message, message + messageBytes, scratchMessage.begin());
    std::copy(parity, parity + parityBytes, scratchParity.begin());
  }

  double best = std::numeric_limits<double>::infinity();
  bool found = false;
  knownCount = 0;
  bestChanged.clear();
  unsigned pattern = 0;
  const unsigned patterns = 1u << eta;
  for (unsigned g = 0; g < patterns; ++g) {
    if (g > 0) {
      // Gray order: pattern g differs from pattern g-1 in the lowest set bit of g.
      int i = 0;
      while (!(g >> i & 1u)) ++i;
      pattern ^= 1u << i;
      if (options.incrementalSyndromes) {
        const uint16_t* term = &flipTerms[static_cast<size_t>(i) * 2 * t];
        for (int j = 0; j < 2 * t; ++j) current[j] ^= term[j];
      } else {
        flipBit(scratchMessage.data(), scratchParity.data(), smallest[i].bit);
      }
    }
    if (options.stopWhenOptimal && nearKnownCandidate(pattern)) continue;
    if (!decodeTestWord(scratchMessage.data(), scratchParity.data())) continue;
    const double score = scoreOf(reliability, pattern);
    changed = errors;
    for (int i = 0; i < eta; ++i)
      if (pattern >> i & 1u) {
        auto at = std::find(changed.begin(), changed.end(), smallest[i].bit);
        if (at == changed.end())
          changed.push_back(smallest[i].bit);
        else
          changed.erase(at);
      }
    std::sort(changed.begin(), changed.end());
    rememberCandidate();
    if (found && !(score < best)) continue;
    found = true;
    best = score;
    bestChanged = changed;
    if (options.stopWhenOptimal && provablyBest(score)) break;
  }
  changed = bestChanged;
  if (!found) return Outcome::Failed;
  for (int bit : changed) flipBit(message, parity, bit);
  return changed.empty() ? Outcome::Clean : Outcome::Corrected;
}
