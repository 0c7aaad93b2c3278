// Fuzz target: the run-length-limited decoders on arbitrary codewords.
//
// The input is read as a stream of bits (one per byte, the low bit); byte 0
// first picks how much of it goes to each decoder. Properties, beyond "no
// crash, no sanitizer report":
//  - every decoded bit is 0 or 1, and the decoders leave their input alone;
//  - rate 12/13: decode() reports Invalid exactly when invalidCodewordFlag
//    raises its flag, and an invalid codeword decodes to its first two bits
//    followed by ten zeros;
//  - since every user word encodes and decodes back, any decoded word w must
//    survive decode(encode(w)) == w, whatever codeword it came from;
//  - rate 30/31: bits 0..7 and 21..30 of each codeword pass straight to user
//    bits 0..7 and 20..29, the middle 13 decode as the 12/13 code does, and
//    the partial codewords (10 bits copied, 21 bits = 8 copied + 13 coded)
//    agree with the same rules;
//  - the precoder and its inverse filter undo each other from equal start
//    delays, for taps whose current-symbol tap is set.
#include <cstdint>
#include <vector>

#include "Tools/code12_13_v2.h"
#include "Tools/code30_31nrz_v2.h"
#include "Tools/precoder.h"
#include "fuzz/fuzz_check.h"

namespace {

std::vector<int> takeBits(FuzzedDataProvider& in, size_t n) {
  std::vector<int> bits(n, 0);
  for (int& b : bits) b = in.ConsumeIntegral<uint8_t>() & 1;
  return bits;
}

void checkCode12_13(Code12_13_v2& code, const std::vector<int>& codeword) {
  std::vector<int> in = codeword, word(12), again(12), reencoded(13);
  const int route = code.decode(in.data(), word.data());
  FUZZ_CHECK(in == codeword, "12/13 decode changed its input");
  FUZZ_CHECK(route >= Code12_13_v2::Invalid && route <= Code12_13_v2::ViaTable3, "route %d", route);
  FUZZ_CHECK(fuzz::allWithin(word, 0, 1), "12/13 decoded a non-bit");
  int flag = -1;
  code.invalidCodewordFlag(in.data(), flag);
  FUZZ_CHECK(flag == (route == Code12_13_v2::Invalid ? 1 : 0), "flag %d for route %d", flag, route);
  if (route == Code12_13_v2::Invalid) {
    std::vector<int> expected(12, 0);
    expected[0] = codeword[0];
    expected[1] = codeword[1];
    FUZZ_CHECK(word == expected, "an invalid codeword decoded to something else than u0 u1 0..0");
  }
  std::vector<int> w = word;
  code.encode(w.data(), reencoded.data());
  code.decode(reencoded.data(), again.data());
  FUZZ_CHECK(again == word, "decode(encode(w)) != w for a decoded w");
}

void checkCode30_31(Code30_31nrz_v2& code, Code12_13_v2& inner, const std::vector<int>& stream, int nblocks) {
  std::vector<int> in = stream, out(static_cast<size_t>(30 * nblocks), -1);
  FUZZ_CHECK(code.block_decode(in.data(), out.data(), nblocks, false) == 30 * nblocks, "block_decode count");
  FUZZ_CHECK(in == stream, "30/31 block_decode changed its input");
  FUZZ_CHECK(fuzz::allWithin(out, 0, 1), "30/31 decoded a non-bit");
  for (int b = 0; b < nblocks; ++b) {
    const int* cw = stream.data() + 31 * b;
    const int* w = out.data() + 30 * b;
    FUZZ_CHECK(std::equal(cw, cw + 8, w) && std::equal(cw + 21, cw + 31, w + 20), "pass-through bits");
    std::vector<int> middle(cw + 8, cw + 21), word12(12);
    inner.decode(middle.data(), word12.data());
    FUZZ_CHECK(std::equal(word12.begin(), word12.end(), w + 8), "middle 13 bits differ from the 12/13 decoder");
  }
  std::vector<int> reencoded(stream.size()), again(out.size());
  std::vector<int> words = out;
  code.block_encode(words.data(), reencoded.data(), nblocks, false);
  code.block_decode(reencoded.data(), again.data(), nblocks, false);
  FUZZ_CHECK(again == out, "30/31 decode(encode(w)) != w for a decoded w");
}

void checkPartialCodewords(Code30_31nrz_v2& code, Code12_13_v2& inner, const std::vector<int>& bits21) {
  std::vector<int> in = bits21, out(20, -1);
  FUZZ_CHECK(code.decodePartialCodeword(in.data(), out.data(), 10, false) == 10, "partial 10 count");
  FUZZ_CHECK(std::equal(bits21.begin(), bits21.begin() + 10, out.begin()), "partial 10 is not a copy");
  FUZZ_CHECK(code.decodePartialCodeword(in.data(), out.data(), 21, false) == 20, "partial 21 count");
  FUZZ_CHECK(in == bits21, "decodePartialCodeword changed its input");
  std::vector<int> middle(bits21.begin() + 8, bits21.end()), word12(12);
  inner.decode(middle.data(), word12.data());
  FUZZ_CHECK(std::equal(bits21.begin(), bits21.begin() + 8, out.begin()) &&
                 std::equal(word12.begin(), word12.end(), out.begin() + 8),
             "partial 21 disagrees with 8 copied + 13 decoded");
}

void checkPrecoderInverse(FuzzedDataProvider& in, const std::vector<int>& stream) {
  const int L = in.ConsumeIntegralInRange<int>(1, 6);
  std::vector<int> taps(static_cast<size_t>(L));
  taps[0] = 1;
  for (int j = 1; j < L; ++j) taps[static_cast<size_t>(j)] = in.ConsumeIntegralInRange<int>(-1, 1);
  std::vector<int> start(static_cast<size_t>(std::max(L - 1, 0)));
  for (int& d : start) d = in.ConsumeIntegralInRange<int>(-1, 1);

  Precoder forward(taps.data(), L), inverse(taps.data(), L);
  forward.init_delays(start.data());
  inverse.init_delays(start.data());
  std::vector<int> x = stream;
  inverse.unprecode(x.data(), static_cast<int>(x.size()));
  FUZZ_CHECK(fuzz::allWithin(x, 0, 1), "unprecode produced a non-bit");
  forward.precode(x.data(), static_cast<int>(x.size()));
  FUZZ_CHECK(x == stream, "precode(unprecode(x)) != x");
}

}  // namespace

// "ENDEC PROBLEMS" and similar notes go to standard output.
FUZZ_MUTE_AT_START(std::cout)

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Code12_13_v2 inner;
  static Code30_31nrz_v2 code;
  FuzzedDataProvider in(data, size);
  const int nblocks = in.ConsumeIntegralInRange<int>(0, 8);

  checkCode12_13(inner, takeBits(in, 13));
  checkPartialCodewords(code, inner, takeBits(in, 21));
  checkCode30_31(code, inner, takeBits(in, static_cast<size_t>(31 * nblocks)), nblocks);
  checkPrecoderInverse(in, takeBits(in, in.remaining_bytes() / 2));
  return 0;
}
