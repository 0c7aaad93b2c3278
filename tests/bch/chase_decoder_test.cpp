// Chase-II decoding against the hard decoder and against itself: the same
// answers with incremental and recomputed syndromes and with or without the
// optimality stop, never worse than hard decoding, hard decoding exactly
// when there is no soft information, and the words only soft information
// can correct.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "bch/bch.h"
#include "bch/bchEngine.h"
#include "bch/chaseDecoder.h"
#include "bch/bch_testutil.h"
#include "quilPackedBCH.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct Word {
  Bytes data, parity;
  std::vector<float> reliability;
  std::vector<int> errors;  // codeword bits the channel flipped
};

void flip(Word& w, int k, int bit) {
  uint8_t& byte = bit < k ? w.data[bit / 8] : w.parity[(bit - k) / 8];
  byte = static_cast<uint8_t>(byte ^ (0x80 >> (bit < k ? bit % 8 : (bit - k) % 8)));
}

// A random codeword, every bit of reliability r.
Word randomCodeword(quil::PackedBCH& codec, std::mt19937& rng, float r) {
  Word w{Bytes(codec.dataBytes()), Bytes(codec.parityBytes()),
         std::vector<float>(codec.dataBits() + codec.parityBits(), r), {}};
  for (auto& b : w.data) b = static_cast<uint8_t>(rng());
  const int k = codec.dataBits();
  if (k % 8) w.data.back() = static_cast<uint8_t>(w.data.back() & (0xFF00 >> (k % 8)));
  codec.encode(w.data.data(), w.parity.data());
  return w;
}

// A random codeword sent as +-1 through Gaussian noise of deviation sigma:
// hard decisions and reliabilities |LLR| = 2|y| / sigma^2.
Word noisyCodeword(quil::PackedBCH& codec, std::mt19937& rng, double sigma) {
  Word w = randomCodeword(codec, rng, 0.0f);
  std::normal_distribution<double> noise(0.0, sigma);
  for (int i = 0; i < static_cast<int>(w.reliability.size()); ++i) {
    const double y = 1.0 + noise(rng);  // relative to the sent bit
    w.reliability[i] = static_cast<float>(2.0 * std::fabs(y) / (sigma * sigma));
    if (y < 0) {
      flip(w, codec.dataBits(), i);
      w.errors.push_back(i);
    }
  }
  return w;
}

std::vector<int> shuffledPositions(int n, std::mt19937& rng) {
  std::vector<int> bits(n);
  std::iota(bits.begin(), bits.end(), 0);
  std::shuffle(bits.begin(), bits.end(), rng);
  return bits;
}

double scoreOf(const std::vector<int>& changed, const std::vector<float>& reliability) {
  double s = 0.0;
  for (int bit : changed) s += reliability[bit];
  return s;
}

struct ChaseRun {
  ChaseDecoder::Outcome outcome;
  std::vector<int> flips;
  Word after;
};

TEST(ChaseDecoder, AgreesAcrossSyndromePathsAndNeverLosesToHardDecoding) {
  struct Code {
    int k, t, words;
  } codes[] = {{1000, 5, 150}, {8192, 40, 12}};
  std::mt19937 rng(17);
  for (const Code& c : codes) {
    SCOPED_TRACE(::testing::Message() << "k=" << c.k << " t=" << c.t);
    quil::PackedBCH codec(c.k, c.t);
    BCH code(&bchtest::gf32768(), 0, c.t, 1, c.k);
    BchEngine& engine = *code.packedEngine();
    ChaseDecoder fast(engine, 1), recomputing(engine, 1, {false, true}), exhaustive(engine, 1, {true, false});
    int hardWins = 0, chaseWins = 0;
    for (int i = 0; i < c.words; ++i) {
      const Word received = noisyCodeword(codec, rng, 0.39);
      Word hard = received;
      std::vector<int> hardFlips(c.t);
      const quil::DecodeResult h = codec.decode(hard.data.data(), hard.parity.data(), hardFlips.data());
      hardFlips.resize(h.correctedBits);
      hardWins += h.status != quil::DecodeStatus::Uncorrectable;
      // Without soft information (all reliabilities equal) it is the hard decoder.
      Word flat = received;
      std::vector<int> flatFlips(c.t + 6);
      const std::vector<float> same(received.reliability.size(), 2.5f);
      const auto s = codec.decodeSoft(flat.data.data(), flat.parity.data(), same.data(), 6, flatFlips.data());
      EXPECT_EQ(std::make_pair(s.status, s.correctedBits), std::make_pair(h.status, h.correctedBits));
      EXPECT_EQ(flat.data, hard.data);
      EXPECT_TRUE(std::equal(hardFlips.begin(), hardFlips.end(), flatFlips.begin()));
      for (int eta : {0, 3, 6}) {
        SCOPED_TRACE(::testing::Message() << "word " << i << " eta " << eta);
        std::vector<ChaseRun> runs;
        for (ChaseDecoder* d : {&fast, &recomputing, &exhaustive}) {
          Word w = received;
          const auto outcome = d->decode(w.data.data(), w.parity.data(), w.reliability.data(), eta);
          runs.push_back({outcome, d->flips(), w});
        }
        for (size_t r = 1; r < runs.size(); ++r) {
          EXPECT_EQ(runs[r].outcome, runs[0].outcome) << "decoder " << r;
          EXPECT_EQ(runs[r].flips, runs[0].flips) << "decoder " << r;
        }
        const ChaseRun& chase = runs[0];
        if (chase.outcome == ChaseDecoder::Outcome::Failed) {
          EXPECT_EQ(h.status, quil::DecodeStatus::Uncorrectable) << "Chase failed where hard decoding succeeded";
          EXPECT_EQ(chase.after.data, received.data);
          continue;
        }
        if (eta == 6) chaseWins++;
        std::vector<int> S(2 * c.t);
        EXPECT_TRUE(engine.syndromes(chase.after.data.data(), c.k, chase.after.parity.data(), S.data()))
            << "the result is not a codeword";
        if (eta == 0) {
          EXPECT_EQ(chase.flips, hardFlips);
        } else if (h.status != quil::DecodeStatus::Uncorrectable) {
          EXPECT_LE(scoreOf(chase.flips, received.reliability), scoreOf(hardFlips, received.reliability));
        }
      }
    }
    EXPECT_GT(chaseWins, hardWins) << "soft information corrected nothing more";
  }
}

// rank >= 0: eta unreliable bits, one of them an error (at `rank` in
// reliability order), the other t errors reliable; with eta above 2t + 1 the
// selection must still reach the eta-th least reliable bit. rank < 0: up to
// t - eta errors every test word lies within t of the codeword sent, so the
// search returns it however the reliabilities mislead (here the errors are
// the most reliable bits); simulations skip those error counts.
TEST(ChaseDecoder, CorrectsWhatItsTestWordsReach) {
  struct Case { int k, t, eta, rank; };
  const Case cases[] = {{2000, 5, 3, 1}, {2000, 40, 3, 1}, {2000, 3, 10, 8},
                        {3000, 5, 3, -1}, {3000, 40, 6, -1}, {3000, 12, 10, -1}};
  std::mt19937 rng(3);
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "t=" << c.t << " eta=" << c.eta << " rank=" << c.rank);
    quil::PackedBCH codec(c.k, c.t);
    const int n = c.k + codec.parityBits();
    for (int trial = 0; trial < (c.rank < 0 ? 5 : 1); ++trial) {
      Word w = randomCodeword(codec, rng, 4.0f);
      const Word sent = w;
      const std::vector<int> bits = shuffledPositions(n, rng);
      if (c.rank >= 0) {
        for (int e = 0; e <= c.t; ++e) flip(w, c.k, bits[e]);
        for (int i = 0; i < c.eta; ++i) w.reliability[i == c.rank ? bits[0] : bits[c.t + 1 + i]] = 0.1f * (i + 1);
        Word hard = w;
        EXPECT_NE(codec.decode(hard.data.data(), hard.parity.data()).status, quil::DecodeStatus::Corrected);
      } else {
        std::uniform_real_distribution<float> low(0.01f, 1.0f);
        for (float& r : w.reliability) r = low(rng);
        for (int e = 0; e < c.t - c.eta; ++e) {
          flip(w, c.k, bits[e]);
          w.reliability[bits[e]] = 50.0f;
        }
      }
      std::vector<int> positions(c.t + c.eta);
      const quil::DecodeResult r = codec.decodeSoft(w.data.data(), w.parity.data(), w.reliability.data(), c.eta,
                                                    positions.data());
      ASSERT_EQ(r.status, quil::DecodeStatus::Corrected);
      EXPECT_EQ(w.data, sent.data);
      EXPECT_EQ(w.parity, sent.parity);
      std::vector<int> expected(bits.begin(), bits.begin() + (c.rank >= 0 ? c.t + 1 : c.t - c.eta));
      std::sort(expected.begin(), expected.end());
      positions.resize(r.correctedBits);
      EXPECT_EQ(positions, expected);
    }
  }
}

// t = 1 (distance 3): y is the zero word with one reliable error, which hard
// decoding removes; the weight-3 codeword x^0 + x^p + x^q (alpha^q = 1 +
// alpha^p) differs from y only in two unreliable bits, so it is the better
// answer, and it only shows up after the first decodable test word.
TEST(ChaseDecoder, KeepsSearchingUntilTheBestCandidateIsProven) {
  GF2m& field = bchtest::gf32768();
  const int k = 600, n = k + 15;
  int p = 1, q = 0;
  for (; p < n; ++p) {
    q = field.int2Exp(field.exp2Int(p) ^ 1);
    if (q < n && q != p) break;
  }
  ASSERT_LT(p, n) << "no weight-3 codeword within the shortened length";
  BCH code(&field, 0, 1, 1, k);
  BchEngine& engine = *code.packedEngine();
  for (bool stop : {true, false}) {
    ChaseDecoder chase(engine, 1, {true, stop});
    Word w{Bytes((k + 7) / 8, 0), Bytes(2, 0), std::vector<float>(n, 10.0f), {}};
    flip(w, k, n - 1 - 0);
    w.reliability[n - 1 - p] = w.reliability[n - 1 - q] = 0.1f;
    ASSERT_EQ(chase.decode(w.data.data(), w.parity.data(), w.reliability.data(), 2), ChaseDecoder::Outcome::Corrected);
    std::vector<int> expected{n - 1 - p, n - 1 - q};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(chase.flips(), expected) << "stop " << stop;
  }
}

TEST(ChaseDecoder, ATestWordThatIsACodewordSkipsTheLocator) {
  quil::PackedBCH codec(1000, 5);
  BCH code(&bchtest::gf32768(), 0, 5, 1, 1000);
  ChaseDecoder exhaustive(*code.packedEngine(), 1, {true, false});
  const int n = 1000 + 75;
  Word w{Bytes(codec.dataBytes(), 0x5A), Bytes(codec.parityBytes()), std::vector<float>(n, 3.0f), {}};
  codec.encode(w.data.data(), w.parity.data());
  for (int bit : {7, 500, 1050}) {
    flip(w, 1000, bit);
    w.reliability[bit] = 0.25f;
  }
  EXPECT_EQ(exhaustive.decode(w.data.data(), w.parity.data(), w.reliability.data(), 3),
            ChaseDecoder::Outcome::Corrected);
  EXPECT_EQ(exhaustive.flips(), (std::vector<int>{7, 500, 1050}));
  EXPECT_EQ(exhaustive.locatorRuns(), 7) << "8 test words, one of them a codeword";
}

TEST(ChaseDecoder, RefusesBadArguments) {
  quil::PackedBCH codec(100, 3);
  Bytes data(codec.dataBytes()), parity(codec.parityBytes());
  auto messageOf = [&](int eta, float bit17) -> std::string {
    std::vector<float> reliability(145, 1.0f);
    reliability[17] = bit17;
    try {
      codec.decodeSoft(data.data(), parity.data(), reliability.data(), eta);
    } catch (const std::invalid_argument& e) {
      return e.what();
    }
    return "(accepted)";
  };
  const std::string eta = "Chase decoding: the number of flipped positions must be 0 .. 10, got ";
  const std::string bit = "Chase decoding: reliability of bit 17 is negative or not a number";
  EXPECT_EQ(messageOf(11, 1.0f), eta + "11");
  EXPECT_EQ(messageOf(-1, 1.0f), eta + "-1");
  EXPECT_EQ(messageOf(2, -1.0f), bit);
  EXPECT_EQ(messageOf(2, std::numeric_limits<float>::quiet_NaN()), bit);
}

}  // namespace
