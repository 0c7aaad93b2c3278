// Shared by the fuzz targets: property checks that end the run with a
// message naming the broken property, so libFuzzer records the input as a
// crash like any sanitizer report.
#pragma once

#include <cstdio>
#include <cstdlib>

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
