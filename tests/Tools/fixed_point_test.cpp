// Fixed-point numbers: every mode of a 6-bit register against an integer
// model written here, then the worked cases, word accessors, text forms,
// statistics, format checks and the 64-bit words of long registers.
#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>

#include "Tools/FixedPoint.h"
#include "support/fixedPointModel.h"
#include "support/testutil.h"

namespace {

TEST(FixedPoint, SixBitRegisterInEveryModeMatchesTheModel) {
  const int scale = -2;
  const double q = 0.25;
  for (const char* sign : {"s", "u", "m", "c"})
    for (const char* overflow : {"l", "o"})
      for (const char* rounding : {"r", "z", "t"}) {
        const std::string mode = std::string(sign) + overflow + rounding;
        const qfbtest::FixedPointModel m = qfbtest::FixedPointModel::parse(6, mode);
        SCOPED_TRACE(mode);
        for (double x = -21; x <= 21; x += q / 8) {
          FixedPoint f(6, scale, mode.c_str());
          f = x;
          bool ovf;
          const double want = m.assign(x, scale, ovf);
          ASSERT_EQ(f.get_val(), want) << x;
          // Only sign-magnitude and ones' complement registers have a negative zero.
          ASSERT_TRUE(m.repr == '2' || std::signbit(f.get_val()) == std::signbit(want)) << x;
          ASSERT_EQ(f.get_overflow(), ovf) << x;
          ASSERT_EQ(f.get_unsigned_word(-1), m.encode((long long)(want / q), std::signbit(want))) << x;
          ASSERT_EQ(f.get_word(), std::floor(want / q)) << x;
        }
        FixedPoint f(6, scale, mode.c_str());
        for (unsigned p = 0; p < 64; ++p) {
          ASSERT_EQ(f.val_from_unsigned_word(p, -1), m.decode(p) * q) << p;
          f.set_unsigned_word(p, -1);
          ASSERT_TRUE(m.decode(p) == 0 || f.get_unsigned_word(-1) == p) << p;  // negative zero reads back as +0
        }
        EXPECT_FALSE(f.get_overflow());
      }
}

TEST(FixedPoint, WorkedQuantisationCases) {
  struct Case { int w, scale; const char* mode; double x, want; bool ovf; };
  // Wider registers than the model's: the 8-bit edges, and the 32-bit word,
  // which saturates before it wraps; width 0 does not quantise.
  const Case cases[] = {
      {8, 0, "slr", 127.6, 127, true}, {8, 0, "slr", -128.4, -128, false}, {8, 0, "sor", 130, -126, true},
      {32, 0, "sor", 1e10, 2147483647, false}, {0, 5, "slr", 1.0 / 3, 1.0 / 3, false},
  };
  for (const Case& c : cases) {
    FixedPoint f(c.w, c.scale, c.mode);
    f = c.x;
    EXPECT_EQ(f.get_val(), c.want) << c.mode << " " << c.x;
    EXPECT_EQ(f.get_overflow(), c.ovf) << c.mode << " " << c.x;
  }
  FixedPoint negZero(4, -2, "stm");
  negZero = -0.1;
  EXPECT_EQ(std::make_pair(std::signbit(negZero.get_val()), negZero.get_unsigned_word(-1)), std::make_pair(true, 8u));
  negZero.set_format(4, -2, "stc");
  EXPECT_EQ(negZero.get_unsigned_word(-1), 15u);
}

TEST(FixedPoint, ModeLettersAndFormatKey) {
  const char* modes[][2] = {{"", "slr"}, {nullptr, "slr"}, {"U", "ulr"}, {"uo t", "uot"}, {"m", "slrm"},
                            {"cm", "slrm"}, {"mc", "slrc"}, {"mu", "ulr"}, {"SOZC", "sozc"}, {"xz", "slz"}};
  for (const auto& m : modes) EXPECT_EQ(FixedPoint(8, 0, m[0]).get_mode(), m[1]) << (m[0] ? m[0] : "null");
  // key = ((wlen*64 + scale + 1024) << 11, then per flag s, l, r, z: (key + flag) * 2) + sm
  EXPECT_EQ(FixedPoint(8, 0, "slr").get_format_key(), 50331676u);
  EXPECT_EQ(FixedPoint(12, -4, "sozm").get_format_key(), 58589207u);
  EXPECT_EQ(FixedPoint(0, 0, "ulT").get_format_key(), 33554440u);
  EXPECT_EQ(FixedPoint().get_val(), 0.0);  // a default register holds 0
  EXPECT_EQ(FixedPoint(8, -1, "ulr").get_max(), 127.5);
  EXPECT_EQ(FixedPoint(8, -1, "slr").get_min(), -64);
  EXPECT_EQ(FixedPoint(8, -1, "slrc").get_min(), -63.5);
}

TEST(FixedPoint, FormatChecksAbortWithTheSourcePath) {
  const std::string where = "Tools/FixedPoint\\.cpp:[0-9]+: void FixedPoint::set_format\\(int, int, const char\\*\\): ";
  EXPECT_DEATH(FixedPoint(53, 0, "s"), where + "Assertion `0 <= wlen_ && wlen_ <= 52' failed\\.");
  EXPECT_DEATH(FixedPoint(-1, 0, "s"), "Assertion `0 <= wlen_ && wlen_ <= 52' failed");
  EXPECT_DEATH(FixedPoint(8, 1023, "s"), where + "Assertion `abs\\(\\(double\\)scale_\\) <= 1022' failed\\.");
  EXPECT_DEATH(FixedPoint(8, -1023, "s"), "abs\\(\\(double\\)scale_\\) <= 1022");
  FixedPoint edge(52, -1022, "s");
  EXPECT_EQ(edge.get_quantum(), std::ldexp(1.0, -1022));
}

TEST(FixedPoint, ParamTextAndReformatting) {
  FixedPointParam p;
  std::istringstream("(10,-3,slz)") >> p;
  EXPECT_EQ(p, FixedPointParam(10, -3, "slz"));
  std::ostringstream os;
  os << FixedPointParam(16, -15, "slr");
  EXPECT_EQ(os.str(), "(16,-15,slr) ");

  FixedPoint f(p);
  f = 1.3;
  EXPECT_EQ(f.get_val(), 1.25);
  f.set_format(p, false);
  EXPECT_EQ(std::make_tuple(f.get_wlen(), f.get_scale(), f.get_mode()), std::make_tuple(0, -3, std::string("slz")));
  EXPECT_EQ(f.get_quantum(), std::ldexp(1.0, -52));
  f = 1.3;
  EXPECT_EQ(f.get_val(), 1.3);
  std::istringstream("2.9") >> f;  // input is quantised
  f.set_format(4, 0, "slr");
  EXPECT_EQ(f.get_val(), 3);
  std::istringstream("-9") >> f;
  EXPECT_EQ(f.get_val(), -8);
}

TEST(FixedPoint, WordAccessorsAlignShiftAndTruncate) {
  FixedPoint f(8, -1, "slr");
  f = -3.5;  // word -7, register 0xf9
  struct Case { int nbits; unsigned want; };
  for (const Case& c : {Case{-1, 0xf9u}, Case{0, 0xf9u}, Case{4, 0xfu}, Case{12, 0xf90u}, Case{40, 0u}})
    EXPECT_EQ(f.get_unsigned_word(c.nbits), c.want) << c.nbits;
  EXPECT_EQ(f.val_from_unsigned_word(0xf, 4), -8.0);  // 0xf0 = -16 LSBs
  EXPECT_EQ(f.val_from_unsigned_word(0xf90, 12), -3.5);
  EXPECT_EQ(f.val_from_unsigned_word(0xf90, 50), 0.0);
  EXPECT_EQ(f.get_fixed_float(), 249.0);
  EXPECT_EQ(f.get_truncated_val(4), 7.5);  // top 4 bits 0xf, now positive
  EXPECT_EQ(f.get_truncated_val(8), -3.5);
  struct Shift { int n; double want; };
  for (const Shift& s : {Shift{0, -3.5}, Shift{2, -14}, Shift{-1, -2}, Shift{-40, -0.5}, Shift{31, std::ldexp(-1.0, 31) * 0.5}, Shift{32, 0}})
    EXPECT_EQ(f.left_shift(s.n), s.want) << s.n;
  EXPECT_EQ(f.get_val(), -3.5);
  f.set_fixed_float(0x85);  // -123 LSBs
  EXPECT_EQ(f.get_val(), -61.5);
  f.set_fixed_float(-4);  // negative patterns saturate to 0
  EXPECT_EQ(f.get_val(), 0.0);

  // A 32-bit register is held in a signed 32-bit word: shifts fill with the top bit.
  FixedPoint r32(32, 0, "slr");
  r32 = -1;
  EXPECT_EQ(r32.get_unsigned_word(8), 0xffffffffu);
  EXPECT_EQ(r32.get_unsigned_word(-1), 0xffffffffu);
  EXPECT_EQ(r32.get_truncated_val(8), 255.0);

  FixedPoint plain(5.75);
  EXPECT_EQ(plain.left_shift(-2), 5.75 / 4);
  EXPECT_EQ(plain.get_word(), 5.0);
  plain.set_fixed_float(-2.25);
  EXPECT_EQ(plain.get_fixed_float(), -2.25);
}

TEST(FixedPoint, TextForms) {
  struct Case { int w, scale; const char* mode; const char* precision; };
  for (const Case& c : {Case{12, -4, "ul", "UL12.-4"}, Case{12, -4, "so", "12.-4"}, Case{6, 3, "uo", "U6.3"},
                        Case{6, 3, "sl", "L6.3"}})
    EXPECT_STREQ(FixedPoint(c.w, c.scale, c.mode).print_precision(), c.precision);
  FixedPoint f(12, 0, "slr");
  EXPECT_STREQ(f.hex_(12, 0, "slr", -1), "fff");
  EXPECT_STREQ(f.hex_(10, -2, "slr", -0.25), "3ff");
  EXPECT_STREQ(f.hex_(10, -2, "slr", 1.5), "006");
  EXPECT_STREQ(f.hex_(true), "  6");
  EXPECT_STREQ(f.get_pretty(), "6*2^-2");
  f = -1.5;
  EXPECT_STREQ(f.hex_(true), "ffa");
  EXPECT_STREQ(f.hex_(false), "-1.5");
  EXPECT_STREQ(f.get_pretty(), "-6*2^-2");
  std::ostringstream os;
  f.hex_(5, 0, "uot", 33.0, os, true);
  f.hex_(5, 0, "slr", 33.0, os, false);
  EXPECT_EQ(os.str(), "0115");
  FixedPoint plain(0.1);
  EXPECT_STREQ(plain.hex_(), "0.1");
  EXPECT_STREQ(plain.get_pretty(), "0.1");
  os.str("");
  os << plain;
  EXPECT_EQ(os.str(), "0.1");
}

TEST(FixedPoint, StatisticsAndCopies) {
  FixedPoint f(8, 0, "slr");
  f.start_stats();
  for (double x : {3.2, -5.0, 200.0, 1.0}) f = x;
  const double vals[] = {3, -5, 127, 1}, mean = 126.0 / 4;
  double sq = 0;
  for (double v : vals) sq += v * v;
  char want[128];
  std::snprintf(want, sizeof want, "%12.4e %12.4e %12.4e %12.4e %s", -5.0, 127.0, mean, std::sqrt(sq / 4 - mean * mean), "OVR");
  EXPECT_STREQ(f.get_pretty_stats(), want);
  f.reset_stats();
  EXPECT_THAT(f.get_pretty_stats(), ::testing::MatchesRegex(" 1.7977e\\+308 -1.7977e\\+308 +-?nan +-?nan OVR"));
  EXPECT_TRUE(f.get_overflow());
  EXPECT_EQ(f.get_count(), 0);
  f.set_format(8, -1, "slr");  // requantising counts as an assignment
  EXPECT_EQ(f.get_count(), 1);

  FixedPoint copied(f);
  EXPECT_EQ(std::make_tuple(copied.get_overflow(), copied.stats_on(), copied.get_val(), copied.get_format_key()),
            std::make_tuple(false, false, 1.0, f.get_format_key()));
  FixedPoint target(4, 2, "uot");
  target.start_stats();
  target = 1e9;  // wraps: overflow
  target.copy(FixedPoint(6, -3, "sozc"));
  EXPECT_EQ(std::make_tuple(target.get_overflow(), target.get_count(), target.get_mode(), target.get_min()),
            std::make_tuple(true, 1, std::string("sozc"), -3.875));
  target.initialize(2.0);
  EXPECT_EQ(std::make_pair(target.get_overflow(), target.stats_on()), std::make_pair(false, false));

  f.set_part_sat_thresh(2);  // 8 bits, scale -1: reserve 2^6 LSBs of the range
  EXPECT_EQ(std::make_pair(f.get_part_sat_low(), f.get_part_sat_high()), std::make_pair(-32.0, 31.5));
  FixedPoint u(8, 0, "ulr");
  u.set_part_sat_thresh(3);
  EXPECT_EQ(u.get_part_sat_high(), 255 - 32);
}

TEST(FixedPoint, RegistersLongerThan32BitsUse64BitWords) {
  FixedPoint f(40, 0, "sor");
  const double big = std::ldexp(1.0, 35) + 3;
  f = big;
  EXPECT_EQ(std::make_tuple(f.get_val(), f.get_word(), f.get_overflow()), std::make_tuple(big, big, false));
  EXPECT_EQ(f.left_shift(-3), std::ldexp(1.0, 32));  // a positive word shifts in zeros
  f = std::ldexp(1.0, 39) + 5;  // wraps to -2^39 + 5
  EXPECT_EQ(std::make_pair(f.get_val(), f.get_overflow()), std::make_pair(-std::ldexp(1.0, 39) + 5, true));
  EXPECT_EQ(f.get_unsigned_word(32), 0x80000000u);  // top 32 of the 40 bits
  EXPECT_EQ(f.get_unsigned_word(-1), 5u);           // low 32 bits
  EXPECT_EQ(f.val_from_unsigned_word(0x80000000u, 32), -std::ldexp(1.0, 39));
  EXPECT_STREQ(f.hex_(true), "8000000005");
  ::testing::internal::CaptureStderr();
  const std::string hex = f.hex_();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "FixedPoint::hex_( void ): wlen is too long\n");
  EXPECT_EQ(hex, "8000000005");
  EXPECT_EQ(f.left_shift(-36), -8.0);
  EXPECT_EQ(f.get_truncated_val(4), 8.0);
}

}  // namespace
