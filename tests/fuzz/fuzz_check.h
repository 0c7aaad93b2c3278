// Shared by the fuzz targets: property checks that end the run with a
// message naming the broken property, so libFuzzer records the input as a
// crash like any sanitizer report, and the small oracles several targets use.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <numeric>
#include <vector>

#define FUZZ_CHECK(condition, ...)                                               \
  do {                                                                           \
    if (!(condition)) {                                                          \
      std::fprintf(stderr, "%s:%d: property failed: %s: ", __FILE__, __LINE__,   \
                   #condition);                                                  \
      std::fprintf(stderr, __VA_ARGS__);                                         \
      std::fputc('\n', stderr);                                                  \
      std::abort();                                                              \
    }                                                                            \
  } while (0)

// Oracles written in the target are excluded from coverage instrumentation:
// their comparisons say nothing about the library's paths and would otherwise
// dominate the run time of every input.
#define FUZZ_NOT_INSTRUMENTED __attribute__((no_sanitize("coverage")))

// The library prints notes and warnings on a standard stream; thousands of
// lines per input would only slow the search, so a target mutes the stream.
#define FUZZ_MUTE_AT_START(stream)                        \
  extern "C" int LLVMFuzzerInitialize(int*, char***) {    \
    (stream).setstate(std::ios::badbit);                  \
    return 0;                                             \
  }

namespace fuzz {

// Every element within lo .. hi (bits: 0 .. 1, symbols: 0 .. q-1).
FUZZ_NOT_INSTRUMENTED inline bool allWithin(const std::vector<int>& v, int lo, int hi) {
  return std::all_of(v.begin(), v.end(), [lo, hi](int x) { return x >= lo && x <= hi; });
}

FUZZ_NOT_INSTRUMENTED inline int differences(const std::vector<int>& a, const std::vector<int>& b) {
  int d = 0;
  for (size_t i = 0; i < a.size(); ++i) d += a[i] != b[i];
  return d;
}

// count distinct positions of 0 .. n-1 chosen by the input (partial Fisher-Yates).
inline std::vector<int> distinctPositions(FuzzedDataProvider& in, int n, int count) {
  std::vector<int> order(static_cast<size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  for (int i = 0; i < count; ++i)
    std::swap(order[static_cast<size_t>(i)], order[static_cast<size_t>(in.ConsumeIntegralInRange<int>(i, n - 1))]);
  order.resize(static_cast<size_t>(count));
  return order;
}

}  // namespace fuzz
