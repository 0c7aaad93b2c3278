// Signal banks: recording until full, the register-word reads against the
// encodings worked out by hand, copy_sig_t, and the exact text of the table,
// word, one-file and Matlab dumps.
#include <climits>
#include <filesystem>
#include <string>
#include <vector>

#include "Tools/SignalUtil/SignalBank.h"
#include "bankParam.h"

namespace {

using banktest::makeParam;
using banktest::pad;
using qfbtest::readFile;

TEST(SignalBank, RecordsUntilFullAndRewinds) {
  SignalBank<int> bank(makeParam("b", {"s", "v"}, {1, 2}, {3, 2}), nullptr);
  for (int v = 1; v <= 5; ++v) bank.push(0, v);
  EXPECT_EQ(bank.get_push_cnt(0), 3);
  for (int t = 0; t < 3; ++t) EXPECT_EQ(bank.get_sig_t(0, t, 0), t + 1);
  EXPECT_EQ(bank.get_sig_t(0), 3);
  EXPECT_EQ(std::vector<int>({bank.get_sig_t(0, 3, 0), bank.get_sig_t(0, -1, 0)}), std::vector<int>({0, 0}));

  const int pair[2] = {7, 8};
  bank.push(1, pair, 1);  // only the first component written
  bank.set_sig(1, pair, 2);
  EXPECT_EQ(std::vector<int>({bank.get_sig(1), bank.get_sig(5)}), std::vector<int>({0, 0}));  // no scalar there
  bank.push();
  EXPECT_EQ(std::vector<int>({bank.get_sig_t(1, 0, 0), bank.get_sig_t(1, 0, 1), bank.get_sig_t(1, 1, 1)}),
            std::vector<int>({7, 0, 8}));
  EXPECT_EQ(bank.get_push_cnt(0), 3);  // the full record ignored the push of the current 0
  bank.write(1, 2, 0, 9);              // no such component: ignored
  EXPECT_EQ(bank.get_sig_t(1, 0, 2), 0);

  bank.reset_push_cnt();
  bank.push(0, 40);
  EXPECT_EQ(std::vector<int>({bank.get_sig_t(0, 0, 0), bank.get_sig_t(0, 1, 0)}), std::vector<int>({40, 2}));
  bank.reset_buf_onesig(0, 5);
  EXPECT_EQ(std::vector<int>({bank.get_buf_len(0), bank.get_sig_t(0, 1, 0), bank.get_push_cnt(0)}),
            std::vector<int>({5, 0, 0}));
  EXPECT_EQ(bank.get_sig_t(1, 1, 1), 8);  // the other signal is untouched
  bank.reset_buf_onesig(1, 2);  // same length: every component cleared in place
  EXPECT_EQ(std::vector<int>({bank.get_sig_t(1, 1, 0), bank.get_sig_t(1, 1, 1)}), std::vector<int>({0, 0}));

  SignalBank<int> copy(bank);
  EXPECT_TRUE(copy == bank);
  copy.push(1, pair, 2);
  EXPECT_TRUE(copy != bank);
  EXPECT_DEATH(bank.get_sig_id("nope"), "Tools/SignalUtil/SignalBank\\.cpp:[0-9]+: .*Assertion `ind != -1' failed\\.");
}

TEST(SignalBank, RegisterWordEncodings) {
  struct Case {
    FixedPointParam format;
    double sample;
    unsigned uint, sm, oc;
    int integer;
  };
  const unsigned kAll = 0xFFFFFFFFu;
  const Case cases[] = {
      {{8, 0, "s"}, -1, 255, 128 + 1, 255 - 1, -1},
      {{8, 0, "sm"}, -1, kAll, 128 + 1, 255 - 1, -1},  // no sign-magnitude code from the unsigned read
      {{8, 0, "sc"}, -3, kAll - 2, 128 + 3, 255 - 3, -3},
      {{8, 0, "s"}, -3, 256 - 3, 131, 252, -3},
      {{8, -2, "s"}, 1.3, 5, 5, 5, 5},            // 1.3 / 0.25 = 5.2 rounds to 5
      {{8, 0, "s"}, 200, 127, 127, 127, 127},     // saturates
      {{8, 0, "u"}, -3, 0, 0, 0, 0},              // unsigned: saturates at 0
      {{32, 0, "s"}, -1, kAll, 0x80000001u, kAll - 1, -1},
      {{0, 0, ""}, -3.7, kAll - 2, kAll - 2, kAll - 2, INT_MIN},  // unquantised: truncated value
      {{0, 0, ""}, 3.7, 3, 3, 3, INT_MAX},
  };
  for (const Case& c : cases) {
    SignalBank<double> bank(makeParam("b", {"s"}, {1}, {1}), &c.format);
    bank.push(0, c.sample);
    EXPECT_EQ(bank.get_sig_t_uint(0, 0, 0), c.uint) << c.format << c.sample;
    EXPECT_EQ(bank.get_sig_t_sm(0, 0, 0, false), c.sm) << c.format << c.sample;
    EXPECT_EQ(bank.get_sig_t_1C(0, 0, 0, false), c.oc) << c.format << c.sample;
    EXPECT_EQ(bank.get_sig_t_int(0, 0, 0), c.integer) << c.format << c.sample;
  }
  SignalBank<double> bank(makeParam("b", {"s"}, {1}, {1}), std::vector<FixedPointParam>{{8, -2, "s"}});
  bank.push(0, 1.3);
  EXPECT_EQ(bank.get_sig_t_int_w_fraction(0, 0, 0), 1.3 / 0.25);
  EXPECT_EQ(std::vector<unsigned>({bank.get_sig_t_sm(0, 0, 0, true), bank.get_sig_t_1C(0, 0, 0, true)}),
            std::vector<unsigned>({128u, 255u}));
  bank.push(0, 0.0);
  bank.reset_buf();
  bank.push(0, 100.0);
  EXPECT_FALSE(bank.get_quantizer(0).get_overflow());
  bank.get_sig_t_uint(0, 0, 0);
  EXPECT_TRUE(bank.get_quantizer(0).get_overflow());
  // A format list of the wrong size leaves the signal unquantised.
  SignalBank<double> plain(makeParam("b", {"s"}, {1}, {1}), std::vector<FixedPointParam>{{8, 0, "s"}, {8, 0, "s"}});
  EXPECT_EQ(plain.get_quant_param(0), FixedPointParam(0, 0, ""));
}

TEST(SignalBank, CopySigT) {
  SignalBank<double> bank(makeParam("b", {"s", "v"}, {1, 2}, {6, 2}), nullptr);
  for (int t = 0; t < 6; ++t) bank.push(0, t + 0.75);
  std::vector<int> out(10, -1);
  copy_sig_t(&bank, 0, 10, out.data());
  EXPECT_EQ(out, std::vector<int>({0, 1, 2, 3, 4, 5, 0, 0, 0, 0}));
  const double v[2] = {2.5, 9};
  bank.push(1, v, 2);
  double one = 0;
  testing::internal::CaptureStderr();
  copy_sig_t(&bank, 1, 1, &one);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "copy_sig_t() only support 1-d signal\n");
  EXPECT_EQ(one, 2.5);
  EXPECT_EXIT(copy_sig_t(&bank, 2, 1, &one), testing::ExitedWithCode(255), "");
}

TEST(SignalBankPrint, TablesWordsAndOneFile) {
  qfbtest::ScratchDir dir;
  BufferBankParam p = makeParam("sb", {"s", "v", "off"}, {1, 2, 1}, {3, 2, 4});
  p.pFlag[2] = false;
  const FixedPointParam formats[] = {{4, 0, "s"}, {6, -1, "s"}, {8, 0, "s"}};
  SignalBank<double> bank(p, formats);
  for (double s : {-1.0, 2.5, 7.0}) bank.push(0, s);
  const double v0[2] = {0.5, -2}, v1[2] = {1.25, 3};
  bank.push(1, v0, 2);
  bank.push(1, v1, 2);

  bank.print_to_file(false, -1, 0, 0);
  EXPECT_EQ(readFile("sb_s.txt"), "-1 2.5 7 \n");
  EXPECT_EQ(readFile("sb_v.txt"), "0.5 1.25 \n-2 3 \n");
  EXPECT_FALSE(std::filesystem::exists("sb_off.txt"));
  // 4-bit s: -1 -> 15, 2.5 rounds to 3, 7 is the maximum; 6-bit, LSB 0.5: 0.5 -> 1, -2 -> -4 -> 60,
  // 1.25 -> 2.5 LSBs rounds up to 3, 3 -> 6
  bank.print_to_file(false, 2, 1, 3);
  EXPECT_EQ(readFile("sb_s_word.txt"), " 15   3 \n");
  EXPECT_EQ(readFile("sb_v_word.txt"), "  1   3 \n 60   6 \n");
  bank.print_to_file(true, -1, 1, 0);
  EXPECT_EQ(readFile("sb_s_word.txt"), " 15   3 \n15 3 7 \n");
  EXPECT_EXIT(bank.print_to_file(false, -1, 2, 0), testing::ExitedWithCode(255), "");
  bank.reset_file();
  EXPECT_EQ(readFile("sb_s_word.txt") + readFile("sb_v.txt"), "");

  bank.print_to_one_file(false, -1, true, 8, false, false, 3);
  EXPECT_EQ(readFile("sb.txt"), "Column: 3\tRow(noHeader): 4\tHeader_en: 1\n" + pad("s", 8) + pad("v", 5) + "[0]" +
                                    pad("v", 5) + "[1]\n" + pad("-1", 8) + pad("0.5", 8) + pad("-2", 8) + "\n" +
                                    pad("2.5", 8) + pad("1.25", 8) + pad("3", 8) + "\n" + pad("7", 8) +
                                    std::string(8, ' ') + "\n" + std::string(16, ' ') + "\n");
  // minimum width 4: "v" needs 6 for its name and "[k]"; newest row first, as words
  bank.print_to_one_file(false, 2, false, 4, true, true, 3);
  EXPECT_EQ(readFile("sb.txt"), "Column: 3\tRow(noHeader): 2\tHeader_en: 0\n" + pad("3", 4) + pad("3", 6) +
                                    pad("6", 6) + "\n" + pad("15", 4) + pad("1", 6) + pad("60", 6) + "\n");

  SignalBank<unsigned char> bytes(makeParam("u", {"c"}, {1}, {2}), nullptr);
  bytes.push(0, 'A');
  bytes.print_to_file(false, -1, 0, 0);
  EXPECT_EQ(readFile("u_c.txt"), "65 0 \n");
}

TEST(SignalBankPrint, MatlabScriptWithContinuation) {
  qfbtest::ScratchDir dir;
  SignalBank<int> bank(makeParam("sb", {"v"}, {2}, {3}), nullptr);
  const int rows[3][2] = {{1, 2}, {3, 4}, {5, 6}};
  for (const auto& r : rows) bank.push(0, r, 2);
  bank.print_to_M_file("m", -1, 6, 5);  // five values per script: two rows, then a continuation
  EXPECT_EQ(readFile("m.m"), "msb_v\n");
  EXPECT_EQ(readFile("msb_v.m"),
            "sb_v = [\n1 2\n3 4\n];\nmsb_vxMx1\nsb_v = [sb_v; sb_vxMx1];\nclear sb_vxMx1;\n");
  EXPECT_EQ(readFile("msb_vxMx1.m"), "sb_vxMx1 = [\n5 6\n];\n");
}

}  // namespace
