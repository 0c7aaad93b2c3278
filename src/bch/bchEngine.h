// BchEngine: encoding and decoding of one shortened binary BCH code on
// packed bit strings (see packedBits.h), with every result equal to that of
// the plain algorithms of BCH.
//
// Encoding: parity = x^r m(x) mod g(x) by GeneratorRemainder.
// Decoding: R(x) = c(x) mod g(x) from the message part and the parity;
// R = 0 exactly when every syndrome is zero, so clean words stop there.
// Otherwise the syndromes come from R (SyndromeEvaluator), the locator from
// Berlekamp-Massey (BerlekampMassey) and the error positions from
// LocatorRoots. The engine runs the kernels of its divider's level
// (GeneratorRemainder::kernelLevel()). All scratch space is allocated here, once. The field's
// tables and the generator's division tables depend only on the field, t
// and b; codes of different lengths share them.
//
// Valid for a field that FieldTables supports, with b + 2t - 1 below the
// multiplicative order (so every root exponent is a non-zero element) and
// n no longer than the order (so positions do not alias); supports() says
// whether a code qualifies.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "bch/berlekampMassey.h"
#include "bch/fieldTables.h"
#include "bch/generatorRemainder.h"
#include "bch/locatorRoots.h"
#include "bch/syndromeEvaluator.h"

class GF;

class BchEngine {
 public:
  static bool supports(GF* gf, int n, int t, int b);
  // g(x) = product over the cosets in `roots` of their minimal polynomials,
  // as r+1 bits in degree order (roots: a union of cyclotomic cosets).
  static std::vector<int> generatorOf(const FieldTables& field, const std::set<int>& roots);
  // divider: division by this code's generator.
  BchEngine(std::shared_ptr<const FieldTables> field, std::shared_ptr<const GeneratorRemainder> divider, int n,
            int k, int t, int b);
  BchEngine(const BchEngine&) = delete;
  BchEngine& operator=(const BchEngine&) = delete;

  int codeLength() const { return n; }
  int messageLength() const { return k; }
  int parityLength() const { return r; }
  int correctionPower() const { return t; }
  const std::shared_ptr<const FieldTables>& sharedField() const { return fieldTables; }
  const std::shared_ptr<const GeneratorRemainder>& sharedDivider() const { return dividerTables; }

  // Messages may be given with fewer than k bits: leading zeros of a
  // polynomial change nothing, so a message whose first bits are zero
  // fill can be passed without them.

  // parity: bytesFor(r) bytes, the r parity bits of the message.
  void encodeParity(const uint8_t* message, int bits, uint8_t* parity);

  // Decodes the word whose k message bits and r parity bits are given.
  // S receives the 2t syndromes and lambda the 2t+1 locator coefficients,
  // both in exponent form (lambda all zero for a clean word); positions
  // receives the error degrees, ascending, and count their number. With
  // notCodeword set a word whose syndromes vanish still goes through the
  // locator (the parity rule of b = 0 codes). Returns 1 when the word is
  // clean or corrected (positions to flip), 0 when it is not correctable.
  int decode(const uint8_t* message, int bits, const uint8_t* parity, int tLimit, bool notCodeword, int* S, int* lambda,
             int* positions, int& count);

  // The pieces, for the members of BCH that take them one by one.
  // Returns true when R = 0; S (2t, exponent form) is written either way.
  bool syndromes(const uint8_t* message, int bits, const uint8_t* parity, int* S);
  void locator(const int* S, int tLimit, int* lambda);
  // lambda: exponent form, degree d (1 <= d <= t). True when accepted.
  bool roots(const int* lambda, int d, int* positions);

 private:
  bool remainderIsZero() const;
  void locatorOf(const int* S, int tLimit, bool squaredSyndromes, int* lambda);

  int n, k, r, t, b;
  std::shared_ptr<const FieldTables> fieldTables;
  std::shared_ptr<const GeneratorRemainder> dividerTables;
  const FieldTables& field;
  const GeneratorRemainder& divider;
  SyndromeEvaluator evaluator;
  BerlekampMassey massey;
  LocatorRoots finder;
  std::vector<uint64_t> rem;
  std::vector<uint16_t> syndromePoly, lambdaPoly;
};
