// Page image geometry, bit order and file checks, without the command line.
#include "pageImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "Tools/utilities.h"
#include "flashbchRunner.h"

namespace {

using namespace flashbch;
using flashbchtest::messageOf;

// The packed swaps against the library's int-per-bit swap, for word and
// group sizes on and off byte boundaries, with a partial last group.
TEST(PageImage, PackedSwapsMatchTheBitArraySwap) {
  const int bits = 2208;
  std::mt19937 rng(11);
  std::vector<std::uint8_t> image(bits / 8);
  for (auto& b : image) b = static_cast<std::uint8_t>(rng());
  const BitOrder orders[] = {{16, 0}, {32, 8}, {0, 13}, {96, 24}, {48, 1000}, {0, 2208}, {16, 2}};
  for (const BitOrder& order : orders) {
    std::vector<int> expected(bits);
    for (int i = 0; i < bits; ++i) expected[i] = (image[i / 8] >> (7 - i % 8)) & 1;
    byte_and_bit_swap(expected.data(), bits, expected.data(), order.byteSwapWordBits, order.bitSwapGroupBits,
                      order.byteSwapWordBits != 0, order.bitSwapGroupBits != 0);
    std::vector<std::uint8_t> swapped = image;
    swapBlockImage(order, swapped.data(), bits);
    for (int i = 0; i < bits; ++i)
      ASSERT_EQ((swapped[i / 8] >> (7 - i % 8)) & 1, expected[i])
          << "bit " << i << ", swaps " << order.byteSwapWordBits << "/" << order.bitSwapGroupBits;
    unswapBlockImage(order, swapped.data(), bits);
    EXPECT_EQ(swapped, image);
  }
}

TEST(PageImage, BlockCountAndPartialBlock) {
  EXPECT_EQ(countBlocks("f", 3 * 276, 276), 3);
  EXPECT_EQ(messageOf([] { countBlocks("f.bin", 2 * 276 + 5, 276); }),
            "f.bin: trailing partial block at byte offset 552 (5 bytes; a block takes 276 bytes)");
  EXPECT_EQ(messageOf([] { countBlocks("f.bin", 0, 276); }), "f.bin: the file is empty; it holds no block");
}

TEST(PageImage, SwapChecksNameTheFlag) {
  const BlockLayout layout = makeLayout({1024, 1024}, 5, true);  // 2208 image bits
  struct Case {
    int word, group;
    const char* prefix;  // nullptr: accepted
  } cases[] = {
      {32, 8, nullptr},           {16, 2208, nullptr},      {12, 0, "--byte-swap: 12"},   {8, 0, "--byte-swap: 8 "},
      {64, 0, "--byte-swap: 64"}, {0, 1, "--bit-swap: 1 "}, {0, 2209, "--bit-swap: 2209"}};
  for (const Case& c : cases) {
    const std::string message = messageOf([&] { checkBitOrder({c.word, c.group}, layout); });
    if (c.prefix)
      EXPECT_EQ(message.rfind(c.prefix, 0), 0u) << message;
    else
      EXPECT_EQ(message, "(accepted)");
  }
}

// The codec applies the swaps to what it writes and undoes them on what it
// reads (what the swaps do to bits is checked against a model elsewhere).
TEST(PageImage, CodecWritesAndReadsTheSwappedImage) {
  const BlockLayout layout = makeLayout({1024, 1024}, 5, true);
  const BitOrder order{32, 8};
  PageCodec plain(layout, {}), swapped(layout, order);
  std::mt19937 rng(7);
  std::vector<std::uint8_t> data(static_cast<size_t>(plain.dataBytes()));
  for (auto& b : data) b = static_cast<std::uint8_t>(rng());
  std::vector<std::uint8_t> a(static_cast<size_t>(plain.imageBytes())), b(a.size()), out(data.size());
  plain.encodeBlock(data.data(), a.data());
  swapped.encodeBlock(data.data(), b.data());
  swapBlockImage(order, a.data(), 8 * plain.imageBytes());
  EXPECT_EQ(b, a);
  const BlockReport report = swapped.decodeBlock(b.data(), out.data(), 5);
  EXPECT_EQ(out, data);
  EXPECT_FALSE(report.hasUncorrectable());
}

}  // namespace
