// Chase-II decoding against the hard decoder and against itself: the same
// answers with incremental and recomputed syndromes and with or without the
// optimality stop, never worse than hard decoding, hard decoding exactly
// when there is no soft information, and the words only soft information
// can correct.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
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

// A random codeword sent as +-1 through Gaussian noise of deviation sigma:
// hard decisions and reliabilities |LLR| = 2|y| / sigma^2.
Word noisyCodeword(quil::PackedBCH& codec, std::mt19937& rng, double sigma) {
  const int k = codec.dataBits(), n = k + codec.parityBits();
  Word w{Bytes(codec.dataBytes()), Bytes(codec.parityBytes()), std::vector<float>(n), {}};
  for (auto& b : w.data) b = static_cast<uint8_t>(rng());
  if (k % 8) w.data.back() = static_cast<uint8_t>(w.data.back() & (0xFF00 >> (k % 8)));
  codec.encode(w.data.data(), w.parity.data());
  std::normal_distribution<double> noise(0.0, sigma);
  for (int i = 0; i < n; ++i) {
    const double y = 1.0 + noise(rng);  // relative to the sent bit
    w.reliability[i] = static_cast<float>(2.0 * std::fabs(y) / (sigma * sigma));
    if (y < 0) {
      flip(w, k, i);
      w.errors.push_back(i);
    }
  }
  return w;
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

// eta unreliable bits, one of them an error (at `rank` in reliability
// order), the other t errors reliable. With eta above 2t + 1 the
// selection must still reach the eta-th least reliable bit.
TEST(ChaseDecoder, CorrectsTPlusOneErrorsWhenOneIsAmongTheLeastReliable) {
  struct Case {
    int t, eta, rank;
  } cases[] = {{5, 3, 1}, {40, 3, 1}, {3, 10, 8}};
  std::mt19937 rng(3);
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "t=" << c.t << " eta=" << c.eta);
    quil::PackedBCH codec(2000, c.t);
    const int k = codec.dataBits(), n = k + codec.parityBits();
    Word w{Bytes(codec.dataBytes()), Bytes(codec.parityBytes()), std::vector<float>(n, 4.0f), {}};
    for (auto& b : w.data) b = static_cast<uint8_t>(rng());
    codec.encode(w.data.data(), w.parity.data());
    const Word sent = w;
    std::vector<int> bits(n);
    for (int i = 0; i < n; ++i) bits[i] = i;
    std::shuffle(bits.begin(), bits.end(), rng);
    for (int e = 0; e <= c.t; ++e) flip(w, k, bits[e]);
    for (int i = 0; i < c.eta; ++i) w.reliability[i == c.rank ? bits[0] : bits[c.t + 1 + i]] = 0.1f * (i + 1);
    Word hard = w;
    EXPECT_NE(codec.decode(hard.data.data(), hard.parity.data()).status, quil::DecodeStatus::Corrected);
    std::vector<int> positions(c.t + c.eta);
    const quil::DecodeResult r = codec.decodeSoft(w.data.data(), w.parity.data(), w.reliability.data(), c.eta,
                                                  positions.data());
    ASSERT_EQ(r.status, quil::DecodeStatus::Corrected);
    EXPECT_EQ(r.correctedBits, c.t + 1);
    EXPECT_EQ(w.data, sent.data);
    EXPECT_EQ(w.parity, sent.parity);
    std::vector<int> expected(bits.begin(), bits.begin() + c.t + 1);
    std::sort(expected.begin(), expected.end());
    positions.resize(r.correctedBits);
    EXPECT_EQ(positions, expected);
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

// Up to t - eta errors every test word lies within t of the codeword sent,
// so the search returns it however the reliabilities mislead (here the
// errors are the most reliable bits); simulations skip those error counts.
TEST(ChaseDecoder, AlwaysCorrectsUpToTMinusEtaErrors) {
  std::mt19937 rng(23);
  for (const auto& [t, eta] : {std::pair{5, 3}, std::pair{40, 6}, std::pair{12, 10}}) {
    quil::PackedBCH codec(3000, t);
    const int k = codec.dataBits(), n = k + codec.parityBits();
    for (int trial = 0; trial < 5; ++trial) {
      Word w{Bytes(codec.dataBytes()), Bytes(codec.parityBytes()), std::vector<float>(n), {}};
      for (auto& b : w.data) b = static_cast<uint8_t>(rng());
      codec.encode(w.data.data(), w.parity.data());
      const Word sent = w;
      std::uniform_real_distribution<float> low(0.01f, 1.0f);
      for (float& r : w.reliability) r = low(rng);
      std::vector<int> bits(n);
      for (int i = 0; i < n; ++i) bits[i] = i;
      std::shuffle(bits.begin(), bits.end(), rng);
      for (int e = 0; e < t - eta; ++e) {
        flip(w, k, bits[e]);
        w.reliability[bits[e]] = 50.0f;
      }
      codec.decodeSoft(w.data.data(), w.parity.data(), w.reliability.data(), eta);
      EXPECT_EQ(w.data, sent.data) << "t=" << t << " eta=" << eta;
      EXPECT_EQ(w.parity, sent.parity) << "t=" << t << " eta=" << eta;
    }
  }
}

TEST(ChaseDecoder, WithoutSoftInformationItIsTheHardDecoder) {
  std::mt19937 rng(11);
  quil::PackedBCH codec(1000, 5);
  for (int i = 0; i < 40; ++i) {
    Word w = noisyCodeword(codec, rng, 0.39);
    std::vector<float> flat(w.reliability.size(), 2.5f);
    Word hard = w;
    std::vector<int> hardFlips(5), softFlips(5 + 6);
    const auto h = codec.decode(hard.data.data(), hard.parity.data(), hardFlips.data());
    const auto s = codec.decodeSoft(w.data.data(), w.parity.data(), flat.data(), 6, softFlips.data());
    EXPECT_EQ(s.status, h.status);
    EXPECT_EQ(s.correctedBits, h.correctedBits);
    EXPECT_EQ(w.data, hard.data);
    EXPECT_TRUE(std::equal(hardFlips.begin(), hardFlips.begin() + h.correctedBits, softFlips.begin()));
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
  std::vector<float> reliability(145, 1.0f);
  auto messageOf = [&](int eta) {
    try {
      codec.decodeSoft(data.data(), parity.data(), reliability.data(), eta);
    } catch (const std::invalid_argument& e) {
      return std::string(e.what());
    }
    return std::string("(accepted)");
  };
  EXPECT_EQ(messageOf(11), "Chase decoding: the number of flipped positions must be 0 .. 10, got 11");
  EXPECT_EQ(messageOf(-1), "Chase decoding: the number of flipped positions must be 0 .. 10, got -1");
  reliability[17] = -1.0f;
  EXPECT_EQ(messageOf(2), "Chase decoding: reliability of bit 17 is negative or not a number");
  reliability[17] = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(messageOf(2), "Chase decoding: reliability of bit 17 is negative or not a number");
}

}  // namespace
