// Fuzz target: FixedPointParam text input and FixedPoint assignment.
//
// Part one reads arbitrary text into a FixedPointParam. Whatever the text,
// nothing may crash; when the read succeeds, the param's own text form must
// read back into an equal param, and a param with an admissible format must
// build a FixedPoint of that word length and scale whose mode is the
// canonical 3 or 4 letters.
//
// Part two builds a number of arbitrary word length (0 .. 52), scale and
// mode letters (the meaningful ones and others) and assigns arbitrary
// doubles, NaN and infinities included: no crash and no undefined behaviour
// in any mode, and the text accessors stay within their buffers. Where the
// arithmetic is exactly representable (1 <= wlen <= 30, |scale| <= 60, the
// input within 2^29 quanta) the stored value and the overflow flag are
// compared with a model of the register written here from the rules: round
// or truncate to a multiple k of the quantum q, then saturate at the range
// or wrap k modulo 2^wlen, and give sign-magnitude and ones' complement
// numbers the input's sign (their negative zero). For word lengths up to 31
// the register word read out with get_unsigned_word must decode back to the
// stored value.
#include <fuzzer/FuzzedDataProvider.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

#include "Tools/FixedPoint.h"
#include "fuzz/fuzz_check.h"
#define QFB_ORACLE FUZZ_NOT_INSTRUMENTED
#include "support/fixedPointModel.h"

namespace {

std::string modeLetters(FuzzedDataProvider& in) {
  static const char kLetters[] = "sulorztmcSULORZTMCx)";
  std::string mode;
  const int n = in.ConsumeIntegralInRange<int>(0, 6);
  for (int i = 0; i < n; ++i) mode += kLetters[in.ConsumeIntegralInRange<size_t>(0, sizeof kLetters - 2)];
  return mode;
}

double anyDouble(FuzzedDataProvider& in) {
  switch (in.ConsumeIntegralInRange<int>(0, 2)) {
    case 0: {
      const uint64_t bits = in.ConsumeIntegral<uint64_t>();
      double d;
      std::memcpy(&d, &bits, sizeof d);
      return d;  // any pattern: NaN, infinities, subnormals
    }
    case 1: return in.ConsumeFloatingPointInRange<double>(-1e6, 1e6);
    default: return static_cast<double>(in.ConsumeIntegralInRange<int32_t>(-70000, 70000)) / 8.0;
  }
}

FUZZ_NOT_INSTRUMENTED bool canonicalMode(const std::string& mode) {
  return (mode.size() == 3 || mode.size() == 4) && (mode[0] == 's' || mode[0] == 'u') &&
         (mode[1] == 'l' || mode[1] == 'o') && (mode[2] == 'r' || mode[2] == 'z' || mode[2] == 't') &&
         (mode.size() == 3 || mode[3] == 'm' || mode[3] == 'c');
}

void checkParamText(const std::string& text) {
  std::istringstream is(text);
  FixedPointParam p;
  if (!(is >> p)) return;
  std::ostringstream os;
  os << p;
  std::istringstream back(os.str());
  FixedPointParam again;
  FUZZ_CHECK(static_cast<bool>(back >> again) && again == p, "text form \"%s\" does not read back",
             os.str().c_str());
  if (p.wlen >= 0 && p.wlen <= 52 && std::abs(p.scale) <= 1022) {
    FixedPoint x(p);
    FUZZ_CHECK(x.get_wlen() == p.wlen && x.get_scale() == p.scale, "format not taken from the param");
    FUZZ_CHECK(canonicalMode(x.get_mode()), "mode \"%s\"", x.get_mode().c_str());
  }
}

void checkAssignments(FuzzedDataProvider& in) {
  const bool modelled = in.ConsumeBool();
  const int wlen = modelled ? in.ConsumeIntegralInRange<int>(1, 30) : in.ConsumeIntegralInRange<int>(0, 52);
  const int scale = modelled ? in.ConsumeIntegralInRange<int>(-60, 60) : in.ConsumeIntegralInRange<int>(-1022, 1022);
  const std::string mode = modeLetters(in);
  FixedPoint number(wlen, scale, mode.c_str());
  const qfbtest::FixedPointModel model = qfbtest::FixedPointModel::parse(wlen, mode);
  FUZZ_CHECK(canonicalMode(number.get_mode()), "mode \"%s\"", number.get_mode().c_str());

  for (int i = 0; i < 8 && in.remaining_bytes() > 0; ++i) {
    const double x = anyDouble(in);
    FixedPoint fresh(wlen, scale, mode.c_str());
    fresh = x;
    number = x;
    FUZZ_CHECK(number.get_overflow() || !fresh.get_overflow(), "the overflow flag is not sticky");
    // The text accessors share one small buffer; ASan watches its bounds.
    (void)number.print_precision();
    (void)number.get_pretty();
    (void)number.hex_();
    (void)number.hex_(true);
    (void)number.get_word();
    (void)number.get_truncated_val(in.ConsumeIntegralInRange<int>(-2, 54));
    (void)number.left_shift(in.ConsumeIntegralInRange<int>(-40, 40));

    if (modelled && std::isfinite(x) && std::fabs(x) < std::ldexp(1.0, 29 + scale)) {
      bool overflow = false;
      const double want = model.assign(x, scale, overflow);
      const double got = fresh.get_val();
      // Only the sign-magnitude family gives a zero's sign a meaning (the
      // register's negative zero); elsewhere -0.0 and 0.0 are one value.
      FUZZ_CHECK(got == want && (model.repr == '2' || std::signbit(got) == std::signbit(want)),
                 "x %.17g (%d,%d,%s): value %.17g, model %.17g", x, wlen, scale, mode.c_str(), got, want);
      FUZZ_CHECK(fresh.get_overflow() == overflow, "x %.17g (%d,%d,%s): overflow %d, model %d", x, wlen, scale,
                 mode.c_str(), fresh.get_overflow(), overflow);
      if (got >= fresh.get_min() && got <= fresh.get_max()) {
        const double decoded = fresh.val_from_unsigned_word(fresh.get_unsigned_word(-1), -1);
        FUZZ_CHECK(decoded == got, "x %.17g (%d,%d,%s): register word decodes to %.17g, value %.17g", x, wlen,
                   scale, mode.c_str(), decoded, got);
      }
    }
  }
}

}  // namespace

// The too-long-word note of hex_() goes to standard error.
FUZZ_MUTE_AT_START(std::cerr)

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  checkParamText(in.ConsumeRandomLengthString(64));
  checkAssignments(in);
  return 0;
}
