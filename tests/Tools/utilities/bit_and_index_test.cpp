// Bit conversions, packing and combinatorial indexing, each checked against
// an independent formulation (the int-per-bit helpers, Pascal's triangle).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include "Tools/utilities.h"
#include "Tools/utilities/bitVector.h"
#include "Tools/utilities/combinatorics.h"
#include "Tools/utilities/packedBits.h"

using namespace tools;

TEST(BitVector, IntegerAndSymbolRoundTripsAgreeWithTheIntHelpers) {
  std::mt19937_64 rng(11);
  for (int width : {0, 1, 7, 13, 31, 32, 64}) {
    for (int rep = 0; rep < 20; ++rep) {
      const uint64_t mask = width == 64 ? ~uint64_t{0} : (uint64_t{1} << width) - 1;
      const uint64_t v = rng() & mask;
      std::vector<int> lsb(width + 1), msb(width + 1);
      intToBits(v, width, BitOrder::LsbFirst, lsb.data());
      intToBits(v, width, BitOrder::MsbFirst, msb.data());
      EXPECT_EQ(bitsToInt(lsb.data(), width, BitOrder::LsbFirst), v);
      EXPECT_EQ(bitsToInt(msb.data(), width, BitOrder::MsbFirst), v);
      EXPECT_TRUE(std::equal(lsb.begin(), lsb.begin() + width, msb.rbegin() + 1));
      if (width >= 1 && width <= 31) {  // the int-per-bit helpers: _rev is most significant bit first
        std::vector<int> rev(width), fwd(width);
        hex2binary_rev(static_cast<int>(v), rev.data(), width);
        hex2binary(static_cast<int>(v), fwd.data(), width);
        EXPECT_TRUE(std::equal(rev.begin(), rev.end(), msb.begin()) && std::equal(fwd.begin(), fwd.end(), lsb.begin()));
        EXPECT_EQ(std::make_pair(binary2hex_rev(rev.data(), width), binary2hex(fwd.data(), width)),
                  std::make_pair(static_cast<int>(v), static_cast<int>(v))) << width;
      }
    }
  }
  const std::vector<uint32_t> symbols{5, 0, 31, 17};
  for (BitOrder order : {BitOrder::LsbFirst, BitOrder::MsbFirst}) {
    const std::vector<int> bits = symbolsToBits(symbols, 5, order);
    EXPECT_EQ(bitsToSymbols(bits.data(), bits.size(), 5, order), symbols);
  }
  EXPECT_THROW(symbolsToBits({32}, 5, BitOrder::LsbFirst), std::invalid_argument);
  const int seven[7] = {1, 0, 1, 1, 0, 0, 1};
  EXPECT_THROW(bitsToSymbols(seven, 7, 3, BitOrder::LsbFirst), std::invalid_argument);
  EXPECT_THROW(intToBits(1, 65, BitOrder::LsbFirst, nullptr), std::invalid_argument);
}

TEST(PackedBits, PackUnpackAndWeightsAgreeWithPerBitForms) {
  std::mt19937 rng(3);
  for (size_t count : {size_t{1}, size_t{7}, size_t{8}, size_t{9}, size_t{64}, size_t{1001}}) {
    std::vector<int> bits(count), back(count), other(count);
    for (auto& b : bits) b = static_cast<int>(rng() & 1);
    for (auto& b : other) b = static_cast<int>(rng() & 1);
    std::vector<uint8_t> packed(packedbits::bytesFor(count), 0xFF), packedOther(packed.size());
    ASSERT_TRUE(packedbits::packInts(bits.data(), count, packed.data()));
    packedbits::packInts(other.data(), count, packedOther.data());
    packedbits::unpackInts(packed.data(), count, back.data());
    EXPECT_EQ(back, bits);
    // First bit = most significant bit of the first byte.
    EXPECT_EQ(packed[0] >> 7, bits[0]);
    EXPECT_EQ(hammingWeight(packed.data(), packed.size()), hammingWeight(bits.data(), count));
    EXPECT_EQ(hammingDistance(packed.data(), packedOther.data(), packed.size()),
              hammingDistance(bits.data(), other.data(), count));
    if (count >= 64) {
      EXPECT_EQ(packedbits::load(packed.data(), 0, 64), bitsToInt(bits.data(), 64, BitOrder::MsbFirst));
    }
  }
  const int notBinary[3] = {1, 2, 0};
  uint8_t b = 0;
  EXPECT_FALSE(packedbits::packInts(notBinary, 3, &b));
  EXPECT_EQ(b, 0xC0);  // non-zero packs as 1
}

TEST(Combinatorics, BinomialsMatchPascalUpToTheOverflowEdge) {
  constexpr uint64_t kMax = std::numeric_limits<uint64_t>::max();
  std::vector<uint64_t> row{1};  // saturated Pascal row n
  for (int n = 1; n <= 70; ++n) {
    std::vector<uint64_t> next(n + 1, 1);
    for (int k = 1; k < n; ++k) next[k] = row[k - 1] > kMax - row[k] ? kMax : row[k - 1] + row[k];
    row = next;
    for (int k = 0; k <= n; ++k) {
      const auto c = binomialChecked(n, k);
      if (row[k] == kMax) {
        EXPECT_FALSE(c.has_value()) << n << " " << k;
        EXPECT_THROW(binomial(n, k), std::overflow_error);
      } else {
        ASSERT_TRUE(c.has_value()) << n << " " << k;
        EXPECT_EQ(*c, row[k]);
        EXPECT_NEAR(logBinomial(n, k), std::log(static_cast<double>(row[k])), 1e-12 * (1 + n));
      }
    }
  }
  EXPECT_EQ(binomial(5, 7), 0u);
  EXPECT_EQ(logBinomial(5, 7), -std::numeric_limits<double>::infinity());
}

TEST(Combinatorics, RankAndUnrankAreInverseBijectionsInColexOrder) {
  for (int n = 0; n <= 10; ++n)
    for (int k = 0; k <= n; ++k) {
      const SubsetIndexer idx(n, k);
      ASSERT_EQ(idx.count(), binomial(n, k));
      std::vector<int> prev, stepped(k);
      std::iota(stepped.begin(), stepped.end(), 0);
      for (uint64_t r = 0; r < idx.count(); ++r) {
        const std::vector<int> s = idx.unrank(r);
        ASSERT_EQ(s, stepped);
        ASSERT_EQ(nextSubset(stepped, n), r + 1 < idx.count());
        ASSERT_TRUE(std::is_sorted(s.begin(), s.end()) && std::adjacent_find(s.begin(), s.end()) == s.end());
        ASSERT_TRUE(s.empty() || (s.front() >= 0 && s.back() < n));
        ASSERT_EQ(idx.rank(s), r);
        // Colex: compare from the largest element down.
        if (r > 0) {
          ASSERT_TRUE(std::lexicographical_compare(prev.rbegin(), prev.rend(), s.rbegin(), s.rend()));
        }
        prev = s;
      }
    }
  const SubsetIndexer big(1000, 6);
  const std::vector<int> s{3, 99, 100, 512, 777, 999};
  EXPECT_EQ(big.unrank(big.rank(s)), s);
  EXPECT_EQ(big.rank({994, 995, 996, 997, 998, 999}), big.count() - 1);
  EXPECT_THROW(big.rank({5, 4, 6, 7, 8, 9}), std::invalid_argument);
  EXPECT_THROW(big.rank({1, 2, 3, 4, 5, 1000}), std::invalid_argument);
  EXPECT_THROW(big.unrank(big.count()), std::out_of_range);
  EXPECT_THROW(SubsetIndexer(200, 100), std::overflow_error);
  for (const auto& [n, k] : {std::pair{5, 6}, {5, -1}, {-1, 0}})
    EXPECT_THROW(SubsetIndexer(n, k), std::invalid_argument) << n << " choose " << k;
}
