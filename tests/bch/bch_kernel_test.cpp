// The accelerated kernels against the portable ones: for every kernel level
// this processor has, engines that differ only in their divider's level
// give identical parity, syndromes, verdicts and error positions, on random
// words and on the edges of the word (all zeros, all ones, errors in the
// first and last bit), for every t from 1 to 128 at a few lengths.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "bch/bchEngine.h"
#include "bch/clmulRemainder.h"
#include "bch/kernelLevel.h"
#include "bch/locatorRoots.h"
#include "bch/packedBits.h"
#include "bch/splitCheck.h"
#include "bch_testutil.h"

namespace {

using Bytes = std::vector<uint8_t>;

std::vector<KernelLevel> acceleratedLevels() {
  std::vector<KernelLevel> levels;
  for (KernelLevel l : {KernelLevel::Clmul, KernelLevel::VectorClmul})
    if (ClmulRemainder::supports(l, 64)) levels.push_back(l);
  return levels;
}

std::shared_ptr<const FieldTables> field32768() {
  static const auto field = std::make_shared<const FieldTables>(&bchtest::gf32768());
  return field;
}

struct Engines {
  Engines(int k, int t, KernelLevel level) {
    std::set<int> roots;
    for (int e = 1; e <= 2 * t; ++e) roots.insert(e);
    const std::vector<int> g = BchEngine::generatorOf(*field32768(), roots);
    const int r = static_cast<int>(g.size()) - 1;
    auto make = [&](KernelLevel l) {
      return std::make_unique<BchEngine>(field32768(), std::make_shared<const GeneratorRemainder>(g.data(), r, l),
                                         k + r, k, t, 1);
    };
    scalar = make(KernelLevel::Scalar);
    fast = make(level);
    accelerated = fast->sharedDivider()->kernelLevel();
  }
  std::unique_ptr<BchEngine> scalar, fast;
  KernelLevel accelerated;
};

void flip(Bytes& word, int bit) { word[bit / 8] = static_cast<uint8_t>(word[bit / 8] ^ (0x80 >> (bit % 8))); }

// Both engines on one word (message then parity, each from a byte boundary).
void expectSameResults(Engines& e, const Bytes& message, const Bytes& parity) {
  const int k = e.scalar->messageLength(), t = e.scalar->correctionPower();
  std::vector<int> sA(2 * t), sB(2 * t), lA(2 * t + 1), lB(2 * t + 1), pA(t + 1, -1), pB(t + 1, -1);
  EXPECT_EQ(e.scalar->syndromes(message.data(), k, parity.data(), sA.data()),
            e.fast->syndromes(message.data(), k, parity.data(), sB.data()));
  EXPECT_EQ(sA, sB);
  int cA = -1, cB = -1;
  EXPECT_EQ(e.scalar->decode(message.data(), k, parity.data(), -1, false, sA.data(), lA.data(), pA.data(), cA),
            e.fast->decode(message.data(), k, parity.data(), -1, false, sB.data(), lB.data(), pB.data(), cB));
  EXPECT_EQ(lA, lB);
  // Positions are defined for the count found (none when rejected).
  ASSERT_EQ(cA, cB);
  EXPECT_TRUE(std::equal(pA.begin(), pA.begin() + cA, pB.begin()));
}

void compareCode(Engines& e, std::mt19937& rng) {
  const int k = e.scalar->messageLength(), r = e.scalar->parityLength(), t = e.scalar->correctionPower();
  const size_t mBytes = packedbits::bytesFor(k), pBytes = packedbits::bytesFor(r);
  for (int kind = 0; kind < 3; ++kind) {
    SCOPED_TRACE(::testing::Message() << "message kind " << kind);
    Bytes message(mBytes, kind == 1 ? 0xff : 0), pA(pBytes + 1, 0xa5), pB(pBytes + 1, 0x5a);
    if (kind == 2) std::generate(message.begin(), message.end(), [&] { return static_cast<uint8_t>(rng()); });
    e.scalar->encodeParity(message.data(), k, pA.data());
    e.fast->encodeParity(message.data(), k, pB.data());
    ASSERT_EQ(Bytes(pA.begin(), pA.begin() + pBytes), Bytes(pB.begin(), pB.begin() + pBytes));
    // The clean word; its first and last bit in error; t random errors;
    // t + 1 errors (beyond the code); a random parity.
    Bytes word(message), parity(pA);
    expectSameResults(e, word, parity);
    flip(word, 0);
    flip(parity, r - 1);
    expectSameResults(e, word, parity);
    word = message;
    parity = pA;
    for (int extra = 0; extra < 2; ++extra) {
      for (int i = 0; i < (extra == 0 ? t : 1); ++i) {
        const int at = static_cast<int>(rng() % static_cast<unsigned>(k + r));
        if (at < k)
          flip(word, at);
        else
          flip(parity, at - k);
      }
      expectSameResults(e, word, parity);
    }
    std::generate(parity.begin(), parity.end(), [&] { return static_cast<uint8_t>(rng()); });
    expectSameResults(e, message, parity);
  }
}

TEST(BchKernels, AcceleratedAndScalarAgreeForEveryT) {
  const std::vector<KernelLevel> levels = acceleratedLevels();
  if (levels.empty()) GTEST_SKIP() << "no carry-less multiply on this processor";
  std::mt19937 rng(21);
  for (KernelLevel level : levels)
    for (int k : {1, 100, 4133}) {
      for (int t = 1; t <= 128; ++t) {
        SCOPED_TRACE(::testing::Message() << kernelLevelName(level) << " k=" << k << " t=" << t);
        Engines e(k, t, level);
        ASSERT_EQ(e.accelerated, level);
        compareCode(e, rng);
        if (HasFailure()) return;
      }
    }
}

TEST(BchKernels, AcceleratedAndScalarAgreeOnTheBenchmarkCodes) {
  const std::vector<KernelLevel> levels = acceleratedLevels();
  if (levels.empty()) GTEST_SKIP() << "no carry-less multiply on this processor";
  std::mt19937 rng(22);
  struct Code { int k, t; };
  for (KernelLevel level : levels)
    for (const Code& c : {Code{8192, 40}, Code{16384, 72}, Code{4096, 8}, Code{32767 - 15 * 128, 128}}) {
      SCOPED_TRACE(::testing::Message() << kernelLevelName(level) << " k=" << c.k << " t=" << c.t);
      Engines e(c.k, c.t, level);
      for (int round = 0; round < 4; ++round) compareCode(e, rng);
    }
}

// Words on which a level once disagreed with the portable one, as found
// (the message in hex, packed from its first bit; the flipped bits of the
// word, message then parity). Row 1: a 3-error block of the flash-codec
// fuzz target that the 512-bit root search rejected in clang builds, where
// the step matrices were read from the wrong address.
TEST(BchKernels, LevelsAgreeOnBlocksThatOnceDisagreed) {
  const std::vector<KernelLevel> levels = acceleratedLevels();
  if (levels.empty()) GTEST_SKIP() << "no carry-less multiply on this processor";
  struct Block {
    int k, t;
    const char* message;
    std::vector<int> flips;
  };
  const Block blocks[] = {{90, 3, "9361a0bcea0775616caf5300", {59, 76, 96}}};
  for (KernelLevel level : levels)
    for (const Block& b : blocks) {
      SCOPED_TRACE(::testing::Message() << kernelLevelName(level) << " k=" << b.k << " t=" << b.t);
      Engines e(b.k, b.t, level);
      Bytes message(packedbits::bytesFor(b.k));
      for (size_t i = 0; i < message.size(); ++i)
        message[i] = static_cast<uint8_t>(std::stoi(std::string(b.message + 2 * i, 2), nullptr, 16));
      Bytes parity(packedbits::bytesFor(e.scalar->parityLength()));
      e.scalar->encodeParity(message.data(), b.k, parity.data());
      Bytes word(message);
      for (int at : b.flips) {
        if (at < b.k)
          flip(word, at);
        else
          flip(parity, at - b.k);
      }
      expectSameResults(e, word, parity);
    }
}

// Locators built from their factors: prod (1 + alpha^p x) over the positions
// p (root alpha^-p), times x^2 + x + c with no root in the field when
// `irreducible`. The split test must hold exactly when the roots are d
// distinct field elements, whatever their positions; the root finder of
// every level must accept exactly when they are also below n. Degrees
// cross the 16-coefficient registers of the vector split test.
TEST(BchKernels, SplitTestAndRootFinderOnLocatorsOfKnownRoots) {
  const FieldTables& field = *field32768();
  uint16_t noRoot = 1;
  while (field.quadraticRoot(noRoot) >= 0) ++noRoot;
  struct Case {
    std::vector<int> positions;
    bool irreducible, splits;
  };
  auto spread = [](int count, int first, int gap) {
    std::vector<int> p(count);
    for (int i = 0; i < count; ++i) p[i] = first + i * gap;
    return p;
  };
  const int n = 9000;
  const Case cases[] = {{{5, 700}, false, true},          {spread(16, 3, 500), false, true},
                        {spread(17, 0, 529), false, true}, {spread(40, 11, 219), false, true},
                        {spread(72, 1, 124), false, true}, {spread(40, 300, 700), false, true},  // beyond n
                        {{9, 9}, false, false},           {{4, 17, 17, 8000}, false, false},
                        {spread(38, 2, 230), true, false}, {spread(15, 7, 600), true, false}};
  std::vector<KernelLevel> levels = acceleratedLevels();
  levels.insert(levels.begin(), KernelLevel::Scalar);
  for (const Case& c : cases) {
    std::vector<uint16_t> lambda{1};
    auto times = [&](std::vector<uint16_t> factor) {
      std::vector<uint16_t> product(lambda.size() + factor.size() - 1, 0);
      for (size_t i = 0; i < lambda.size(); ++i)
        for (size_t j = 0; j < factor.size(); ++j) product[i + j] ^= field.mul(lambda[i], factor[j]);
      lambda.swap(product);
    };
    for (int p : c.positions) times({1, field.exp(p)});
    if (c.irreducible) times({noRoot, 1, 1});
    const int d = static_cast<int>(lambda.size()) - 1;
    std::vector<int> sorted(c.positions);
    std::sort(sorted.begin(), sorted.end());
    const bool accepted = c.splits && sorted.back() < n;
    SCOPED_TRACE(::testing::Message() << "degree " << d << " first position " << sorted.front());
    if (SplitCheck::supports(KernelLevel::VectorClmul)) {
      EXPECT_EQ(SplitCheck(field, 72).splits(lambda.data(), d), c.splits);
    }
    for (KernelLevel level : levels) {
      LocatorRoots finder(field, 72, level);
      std::vector<int> found(d, -1);
      EXPECT_EQ(finder.find(lambda.data(), d, n, found.data()), accepted) << kernelLevelName(level);
      if (accepted) {
        EXPECT_EQ(found, sorted) << kernelLevelName(level);
      }
    }
  }
}

// The codec's own engines run the default level, so that the differential
// tests against the plain reference exercise the path this machine takes;
// QFB_FORCE_SCALAR=1 makes that the portable one, QFB_KERNEL_LEVEL a lower
// one than the processor's best.
TEST(BchKernels, CodecUsesTheDefaultLevel) {
  const char* force = std::getenv("QFB_FORCE_SCALAR");
  const char* cap = std::getenv("QFB_KERNEL_LEVEL");
  KernelLevel expected = detectedKernelLevel(), named;
  if (force != nullptr && std::string(force) == "1") expected = KernelLevel::Scalar;
  else if (cap != nullptr && kernelLevelFromName(cap, named) && named < expected) expected = named;
  EXPECT_EQ(defaultKernelLevel(), expected);
  BCH code(&bchtest::gf32768(), 0, 40, 1, 8192);
  ASSERT_NE(code.packedEngine(), nullptr);
  EXPECT_EQ(code.packedEngine()->sharedDivider()->kernelLevel(), defaultKernelLevel());
  RecordProperty("kernel_level", kernelLevelName(defaultKernelLevel()));
}

}  // namespace
