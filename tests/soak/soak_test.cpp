// Soak: many random encode / corrupt / decode cycles over random layouts,
// every result checked. QFB_SOAK_CYCLES sets the count (default 100000; the
// sanitizer and emulated runs set it lower).
#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <random>
#include <vector>

#include "api/FlashBCH.h"
#include "support/testutil.h"

namespace {

using V = std::vector<int>;

long soakCycles() {
  const char* text = std::getenv("QFB_SOAK_CYCLES");
  return text ? std::max(1L, std::atol(text)) : 100000L;
}

TEST(Soak, RandomLayoutsEncodeCorruptDecode) {
  const long cycles = soakCycles();
  std::mt19937 rng(20261121);
  FlashBCH codec;
  V lengths, data, block, noisy, back, results, recoded, positions;
  int t = 0, stored = 0, total = 0;
  long corrected = 0, detected = 0, miscorrected = 0;
  for (long cycle = 0; cycle < cycles; ++cycle) {
    if (cycle % 200 == 0) {  // a new layout now and then: building codes costs more than using them
      lengths.assign(1 + rng() % 4, 0);
      for (int& l : lengths) l = 1 + int(rng() % 3000);
      t = int(rng() % 65);
      codec.init(int(lengths.size()), lengths.data(), t, false, true, -1, 0, 0);
      stored = codec.get_parity_length();
      total = std::accumulate(lengths.begin(), lengths.end(), 0);
    }
    data.resize(total);
    for (int& b : data) b = int(rng() & 1);
    block.assign(total + lengths.size() * stored, 0);
    codec.encode_au(data.data(), block.data());
    noisy = block;
    V errors(lengths.size());
    for (size_t i = 0, at = 0; i < lengths.size(); at += lengths[i] + stored, ++i) {
      const int span = lengths[i] + 15 * t;
      errors[i] = std::min(int(rng() % (t + 3)), span);
      positions.resize(span);
      std::iota(positions.begin(), positions.end(), 0);
      for (int e = 0; e < errors[i]; ++e) {  // partial Fisher-Yates: distinct positions
        std::swap(positions[e], positions[e + rng() % (span - e)]);
        noisy[at + positions[e]] ^= 1;
      }
    }
    back.assign(total, -1);
    results.assign(lengths.size(), -1);
    const int failed = codec.decode_au(noisy.data(), back.data(), results.data());
    ASSERT_EQ(failed, std::count(results.begin(), results.end(), 1)) << cycle;
    for (size_t i = 0, at = 0, d = 0; i < lengths.size(); at += lengths[i] + stored, d += lengths[i], ++i) {
      const auto out = back.begin() + d;
      if (errors[i] <= t) {
        ASSERT_EQ(results[i], 0) << "cycle " << cycle << " codeword " << i;
        ASSERT_TRUE(std::equal(out, out + lengths[i], data.begin() + d)) << cycle;
        corrected += errors[i] > 0;
      } else if (results[i] == 1) {
        ASSERT_TRUE(std::equal(out, out + lengths[i], noisy.begin() + at)) << cycle;
        ++detected;
      } else {
        // Claimed success beyond t: the output must be a codeword within t.
        recoded.assign(lengths[i] + stored, 0);
        codec.encode(&back[d], recoded.data(), int(i));
        int distance = 0;
        for (int j = 0; j < lengths[i] + 15 * t; ++j) distance += recoded[j] != noisy[at + j];
        ASSERT_LE(distance, t) << cycle;
        ++miscorrected;
      }
    }
  }
  RecordProperty("cycles", std::to_string(cycles));
  std::printf("soak: %ld cycles, %ld codewords corrected, %ld detected beyond t, %ld miscorrected\n", cycles,
              corrected, detected, miscorrected);
}

}  // namespace
