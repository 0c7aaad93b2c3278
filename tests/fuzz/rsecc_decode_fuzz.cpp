// Fuzz target: RSECC::decode and RSECC::decodeErrorAndErasure.
//
// Byte-driven choice of the code: field GF(2^m), m in {4, 5, 6, 8}; t from 1
// up to what the field allows; nParity = 2t or up to two extra syndromes;
// first root exponent b0 in {0, 1}; word length n from nParity+1 to q-1;
// tUse from -1 to t+2. Then one of three words:
//  - arbitrary symbols, decoded without erasures;
//  - a codeword with e errors at distinct positions and f erasures, 2e+f
//    within 2*tEff, decoded with the erasure list;
//  - arbitrary symbols with an arbitrary erasure list (indices -2 .. n+1,
//    possibly repeated, up to 2*tEff+1 of them).
// tEff is the limit the decoder really applies: t for tUse = -1, else tUse
// capped to nParity/2.
//
// Properties, beyond "no crash, no sanitizer report":
//  - the result is 0 or 1, and every symbol stays a field element;
//  - no decode changes more than tEff + (number of erasures) symbols, and
//    one that returns 1 leaves a word whose first 2*tEff syndromes, computed
//    here by Horner's rule, are zero;
//  - within the bound the codeword is restored exactly, with result 1;
//  - an erasure index outside the word, or more than 2*tEff erasures, makes
//    the decoder give up with the word untouched, unless it had nothing to
//    do (tEff 0, or the first 2*tEff syndromes already zero);
//  - the masked decoder equals the plain decoder run on word + mask, with
//    the correction applied to the unmasked word.
#include <memory>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "gf/gf2m.h"
#include "rsecc/rsecc.h"
#include "support/fields.h"

namespace {

GF2m& fieldOfDegree(int m) {
  static std::unique_ptr<GF2m> fields[qfbtest::kMaxFieldDegree + 1];
  if (!fields[m]) fields[m] = qfbtest::computedField(m);
  return *fields[m];
}

// r(alpha^(b0+j)) for j < count, r leading first.
FUZZ_NOT_INSTRUMENTED bool leadingSyndromesVanish(GF& f, const std::vector<int>& r, int b0, int count) {
  for (int j = 0; j < count; ++j) {
    const int x = (b0 + j) % (f.getN() - 1);
    int acc = f.getZero();
    for (int c : r) acc = f.add(f.multiply(acc, x), c);
    if (acc != f.getZero()) return false;
  }
  return true;
}

}  // namespace

// Construction and decoding warnings go to standard output.
FUZZ_MUTE_AT_START(std::cout)

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  static const int kDegrees[] = {4, 5, 6, 8};
  const int m = kDegrees[in.ConsumeIntegralInRange<int>(0, 3)];
  GF2m& field = fieldOfDegree(m);
  const int q = field.getN();
  const int t = in.ConsumeIntegralInRange<int>(1, std::min(8, (q - 4) / 2));
  const int extra = in.ConsumeIntegralInRange<int>(0, 2);
  const int nParity = 2 * t + extra;
  const int b0 = in.ConsumeIntegralInRange<int>(0, 1);
  const int n = in.ConsumeIntegralInRange<int>(nParity + 1, q - 1);
  const int k = n - nParity;
  const int tUse = in.ConsumeIntegralInRange<int>(-1, t + 2);
  const int tEff = std::max(0, std::min(tUse == -1 ? t : tUse, nParity / 2));
  const int mode = in.ConsumeIntegralInRange<int>(0, 2);
  const bool masked = in.ConsumeBool();

  RSECC code(&field, t, extra == 0 ? -1 : nParity, false, b0);
  std::vector<int> word(static_cast<size_t>(n)), codeword, erasures;
  bool withinBound = false, givesUp = false;
  if (mode == 1) {
    std::vector<int> msg(static_cast<size_t>(k));
    for (int& s : msg) s = in.ConsumeIntegralInRange<int>(0, q - 1);
    codeword.assign(static_cast<size_t>(n), 0);
    code.encode(msg.data(), k, codeword.data(), n);
    const int f = in.ConsumeIntegralInRange<int>(0, 2 * tEff);
    const int e = in.ConsumeIntegralInRange<int>(0, (2 * tEff - f) / 2);
    const std::vector<int> positions = fuzz::distinctPositions(in, n, std::min(n, e + f));
    word = codeword;
    for (size_t i = 0; i < positions.size(); ++i) {
      const int p = positions[i];
      if (i < static_cast<size_t>(e))  // an error: add a nonzero value
        word[p] = field.add(word[p], in.ConsumeIntegralInRange<int>(0, q - 2));
      else {  // an erasure: any value, listed for the decoder
        word[p] = in.ConsumeIntegralInRange<int>(0, q - 1);
        erasures.push_back(p);
      }
    }
    withinBound = true;
  } else {
    for (int& s : word) s = in.ConsumeIntegralInRange<int>(0, q - 1);
    if (mode == 2) {
      const int f = in.ConsumeIntegralInRange<int>(0, 2 * tEff + 1);
      for (int i = 0; i < f; ++i) erasures.push_back(in.ConsumeIntegralInRange<int>(-2, n + 1));
      // A clean word, or tEff 0, returns 1 before the list is looked at.
      givesUp = (f > 2 * tEff ||
                 std::any_of(erasures.begin(), erasures.end(), [n](int e) { return e < 0 || e >= n; })) &&
                tEff > 0 && !leadingSyndromesVanish(field, word, b0, 2 * tEff);
    }
  }
  const int nErasures = static_cast<int>(erasures.size());

  auto decodeWith = [&](RSECC& c, std::vector<int>& w, const int* mask) {
    return mode == 0 ? c.decode(w.data(), n, tUse, mask)
                     : c.decodeErrorAndErasure(w.data(), n, erasures.data(), nErasures, tUse, mask);
  };
  std::vector<int> decoded = word;
  const int result = decodeWith(code, decoded, nullptr);
  FUZZ_CHECK(result == 0 || result == 1, "result %d", result);
  FUZZ_CHECK(fuzz::allWithin(decoded, 0, q - 1), "a decoded symbol left the field");
  FUZZ_CHECK(fuzz::differences(word, decoded) <= tEff + nErasures, "%d symbols changed, limit %d + %d",
             fuzz::differences(word, decoded), tEff, nErasures);
  if (result == 1)
    FUZZ_CHECK(leadingSyndromesVanish(field, decoded, b0, 2 * tEff), "result 1 but not a codeword");
  if (withinBound)
    FUZZ_CHECK(result == 1 && decoded == codeword, "within the bound (tEff %d, %d erasures) not restored",
               tEff, nErasures);
  if (givesUp) FUZZ_CHECK(result == 0 && decoded == word, "a bad erasure list did not make it give up");

  if (masked && mode != 2) {
    RSECC maskedCode(&field, t, extra == 0 ? -1 : nParity, true, b0);
    std::vector<int> mask(static_cast<size_t>(n)), plain(static_cast<size_t>(n));
    for (size_t i = 0; i < mask.size(); ++i) {
      mask[i] = in.ConsumeIntegralInRange<int>(0, q - 1);
      plain[i] = field.add(word[i], mask[i]);
    }
    std::vector<int> viaMask = word;
    const int r1 = decodeWith(maskedCode, viaMask, mask.data()), r2 = decodeWith(code, plain, nullptr);
    FUZZ_CHECK(r1 == r2, "masked result %d, plain result %d", r1, r2);
    for (size_t i = 0; i < mask.size(); ++i)
      FUZZ_CHECK(field.add(viaMask[i], mask[i]) == plain[i], "masked correction differs at %zu", i);
  }
  return 0;
}
