// ChaseDecoder: soft-decision decoding of a binary BCH code by the Chase-II
// algorithm on top of a hard-decision BchEngine.
//
// Given the hard decisions y and a reliability |L_i| per codeword bit, the
// eta least reliable positions are selected; for each of the 2^eta subsets
// F of them the test word y + F is hard-decoded, and every decoded codeword
// c is scored by the sum of |L_i| over the bits where c differs from y
// (F symmetric-difference the decoder's flips E). The lowest score wins
// (ties keep the first found, so the plain hard decision is preferred); no
// decodable test word means a decoding failure. [D. Chase, "A class of
// algorithms for decoding block codes with channel measurement
// information", IEEE Trans. Inf. Theory 18(1), 1972.]
//
// Speed:
// - syndromes are computed once: flipping the bit of degree p adds
//   alpha^((b+j) p) to S_j, and the test words are visited in Gray-code
//   order, so each step is one flip, 2t XORs;
// - a test word whose syndromes vanish is a codeword: no locator work;
// - the other test words go straight to Berlekamp-Massey and the root
//   finder on polynomial-basis syndromes; a test word is a binary word, so
//   for b = 1 its syndromes satisfy S_2i = S_i^2 and the binary iteration
//   (every other discrepancy is zero) gives the same locator at half the
//   discrepancy work;
// - optimality stop [D. J. Taipale and M. B. Pursley, "An improvement to
//   generalized-minimum-distance decoding", IEEE Trans. Inf. Theory 37(1),
//   1991]: any other codeword c' differs from c in at least d = 2t + 1
//   places, hence from y in at least d - |D| places outside the set D where
//   c differs from y, so its score is at least the sum of the d - |D|
//   smallest reliabilities outside D. When c's score is no higher, no test
//   word can beat it and the search stops with the answer the full search
//   would give;
// - a test word within distance t of a codeword c already found decodes to
//   c again (bounded-distance decoding is unique), which cannot improve the
//   score: such patterns are skipped from the distance |F xor D| alone.
//   With e errors corrected in y itself, every pattern of at most t - e
//   flips is skipped, so words well inside the radius cost one decode.
// Near and beyond t these shortcuts rarely apply: a test word with more
// than t errors gets a locator of degree t like one with exactly t (with 2t
// syndromes the iteration lengthens the register at every other step), so
// only the root search tells them apart, and each such test word costs a
// locator and a rejected root search.
// The reliabilities needed (the max(2t + 1, eta) smallest) come from the
// library's partial selection (tools::smallestK).
#pragma once

#include <cstdint>
#include <vector>

#include "bch/berlekampMassey.h"
#include "bch/locatorRoots.h"

class BchEngine;

class ChaseDecoder {
 public:
  static constexpr int kMaxPositions = 10;

  enum class Outcome { Clean, Corrected, Failed };
  struct Options {
    bool incrementalSyndromes = true;  // false: recompute S from the word for every test pattern
    bool stopWhenOptimal = true;       // false: always try all 2^eta test patterns
  };

  // engine: the code's hard decoder (borrowed); b: its first root exponent.
  ChaseDecoder(BchEngine& engine, int b, Options options);
  ChaseDecoder(BchEngine& engine, int b) : ChaseDecoder(engine, b, Options()) {}

  // message (k bits) and parity (r bits) hold the hard decisions, packed;
  // reliability[i] >= 0 for codeword bit i (message bits, then parity).
  // On success the flipped codeword bit indices, ascending, are left in
  // flips() (at most t + eta) and applied to message and parity; a failure
  // changes nothing. A word whose reliabilities are all equal carries no
  // soft information and is hard-decoded only. Throws std::invalid_argument
  // for eta outside 0..kMaxPositions or a negative or NaN reliability.
  Outcome decode(uint8_t* message, uint8_t* parity, const float* reliability, int eta);

  const std::vector<int>& flips() const { return changed; }
  // Test patterns that went through the locator in the last decode.
  int locatorRuns() const { return locatorCount; }

 private:
  struct Ranked {
    float reliability;
    int bit;
  };
  void rankLeastReliable(const float* reliability);
  // Decodes the current test word; on success E (codeword bits) in errors.
  bool decodeTestWord(const uint8_t* message, const uint8_t* parity);
  double scoreOf(const float* reliability, unsigned pattern) const;
  bool provablyBest(double score) const;
  void flipBit(uint8_t* message, uint8_t* parity, int bit) const;
  void rememberCandidate();
  bool nearKnownCandidate(unsigned pattern) const;

  BchEngine& engine;
  int n, k, t, b;
  Options options;
  int eta = 0;
  int locatorCount = 0;
  // Codewords found so far: D (where they differ from y) as its size and its
  // part among the selected positions.
  static constexpr int kKnownCandidates = 16;
  struct Known {
    unsigned mask;
    int size;
  };
  Known known[kKnownCandidates];
  int knownCount = 0;
  BerlekampMassey massey;
  LocatorRoots finder;
  std::vector<Ranked> smallest;  // the max(2t+1, eta) least reliable bits, ascending
  std::vector<size_t> order;
  std::vector<uint16_t> flipTerms;  // per selected position i: alpha^((b+j) p_i), j = 0..2t-1
  std::vector<uint16_t> base, current, lambda;
  std::vector<int> exponents, roots, errors, changed, bestChanged;
  std::vector<uint8_t> scratchMessage, scratchParity;
};
