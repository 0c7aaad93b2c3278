// Buffer banks: the ring's look-back, latency and FIFO reads against a plain
// history kept by the test, validity results, resizing, the exact text of
// both print formats, and the aborting checks.
#include <deque>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "Tools/SignalUtil/BufferBank.h"
#include "bankParam.h"

namespace {

using banktest::makeParam;
using banktest::pad;
using qfbtest::readFile;

TEST(Buffer, RingLooksBackAndAbortsPastItsLength) {
  Buffer<int> ring(3);
  ring.reset(0);
  for (int v = 1; v <= 4; ++v) ring.push(v);
  // negative lags wrap to the oldest slot
  EXPECT_EQ(std::vector<int>({ring[0], ring[1], ring[2], ring[-1]}), std::vector<int>({4, 3, 2, 2}));
  Buffer<int> copy(1);
  copy = ring;
  EXPECT_TRUE(copy == ring);
  copy.push(5);
  EXPECT_TRUE(copy != ring);
  EXPECT_EQ(ring[0], 4);
  EXPECT_DEATH(ring[3], "Tools/SignalUtil/SmallTCL\\.cpp:[0-9]+: .*Buffer<T>::operator\\[\\].*Assertion `lag < size' failed\\.");
}

TEST(BufferBankParam, DeepCopiesAndEquality) {
  // The defaults show in the default bank's file name and text (BufferBankPrint).
  const BufferBankParam p(3);
  BufferBankParam q(p);
  EXPECT_TRUE(q == p);
  const std::vector<void (*)(BufferBankParam&)> changes = {
      [](BufferBankParam& x) { x.name = "other"; },  [](BufferBankParam& x) { x.sig_dim[2] = 2; },
      [](BufferBankParam& x) { x.set_buf_len(1, 9); }, [](BufferBankParam& x) { x.names[0] = "a"; },
      [](BufferBankParam& x) { x.pFlag[2] = false; },  [](BufferBankParam& x) { x.init(4); }};
  for (auto change : changes) {
    BufferBankParam r(1);
    r = p;
    change(r);
    EXPECT_TRUE(r != p);
    EXPECT_TRUE(q == p);  // the copy owns its arrays
  }
  q = q;
  EXPECT_TRUE(q == p);
}

TEST(BufferBank, SetAndGetReportValidity) {
  BufferBank<int> bank(makeParam("b", {"s", "v"}, {1, 2}, {2, 2}));
  const int two[2] = {7, 8};
  int out[2] = {0, 0};
  struct Case { int i, dim; bool valid; };
  for (const Case& c : {Case{0, 1, true}, Case{1, 2, true}, Case{1, 1, false}, Case{0, 2, false}, Case{2, 1, false},
                        Case{-1, 1, false}}) {
    EXPECT_EQ(bank.is_sig_id_valid(c.i, c.dim), c.valid) << c.i << "," << c.dim;
    EXPECT_EQ(bank.set_sig(c.i, two, c.dim), c.valid);
    EXPECT_EQ(bank.get_sig(c.i, out, c.dim), c.valid);
  }
  EXPECT_EQ(bank.get_sig(0), 7);
  EXPECT_EQ(bank.get_sig(1), 0);  // vector signal: not a scalar read
  EXPECT_FALSE(bank.set_sig(1, 5));
  bank.get_sig(1, out, 2);
  EXPECT_EQ(std::vector<int>(out, out + 2), std::vector<int>({7, 8}));
  bank.reset_sig();
  EXPECT_EQ(bank.get_sig(0), 0);
}

// Latency and FIFO reads of a length-4 history against a deque of every value.
TEST(BufferBank, LatencyAndFifoReadsFollowTheHistory) {
  BufferBank<double> bank(makeParam("b", {"s", "v"}, {1, 2}, {4, 4}));
  std::deque<double> history;  // newest first
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> value(-10, 10);
  for (int step = 0; step < 11; ++step) {
    const double s = value(rng);
    const double v[2] = {s * 2, s * 3};
    bank.set_sig(0, s);
    bank.set_sig(1, v, 2);
    bank.push();
    history.push_front(s);
    const int count = step + 1;
    ASSERT_EQ(bank.get_count(0), count);
    for (int lag = 0; lag < 4; ++lag) {
      const double expected = lag < count ? history[lag] : 0.0;
      EXPECT_EQ(bank.get_sig_lat(0, lag, 0), expected);
      EXPECT_EQ(bank.get_sig_lat(1, lag, 1), expected * 3);
      double pair[2];
      ASSERT_EQ(bank.get_sig_lat(1, pair, 2, lag), 1);
      EXPECT_EQ(pair[0], expected * 2);
    }
    for (int n = 0; n < count; ++n) {
      const bool held = count - n - 1 < 4;
      EXPECT_EQ(bank.get_sig_FIFO(0, n), held ? history[count - 1 - n] : 0.0) << step << " " << n;
      double pair[2] = {-1, -1};
      EXPECT_EQ(bank.get_sig_FIFO(1, pair, 2, n), held ? 1 : 4);
      if (held) {
        EXPECT_EQ(pair[1], history[count - 1 - n] * 3);
      }
    }
  }
  double pair[2];
  // too far back: the length, nothing copied; a wrong dimension: 0
  EXPECT_EQ(std::vector<int>({bank.get_sig_lat(1, pair, 2, 4), bank.get_sig_lat(1, pair, 1, 0)}),
            std::vector<int>({4, 0}));
  EXPECT_EQ(bank.get_sig_FIFO(1, 0), 0.0);       // not a scalar signal
  EXPECT_EQ(bank.get_sig_lat(0, 0, 1), 0.0);     // no such component
  EXPECT_DEATH(bank.get_sig_lat(0, 4, 0), "Assertion `lag < size' failed");
}

TEST(BufferBank, PushVariantsAndFifoEdges) {
  BufferBank<int> bank(makeParam("b", {"s", "v"}, {1, 2}, {4, 3}));
  bank.push(0, std::vector<int>{5}.data(), 1);
  bank.push(0, std::vector<int>{6}.data(), 1);
  EXPECT_EQ(bank.get_sig_FIFO(0, 0), 5);
  EXPECT_EQ(bank.get_sig_FIFO(0, 2), 0);  // one past the count: lag -1 = lag 3, still the reset value
  for (int v = 7; v <= 10; ++v) bank.push(0, &v, 1);
  EXPECT_EQ(bank.get_sig_FIFO(0, 0), 0);  // six pushed into four slots: lag 5
  EXPECT_EQ(bank.get_sig_FIFO(0, 2), 7);
  EXPECT_EQ(bank.get_sig_FIFO(0, 6), 7);  // lag -1 wraps to the oldest sample held

  const int three[3] = {1, 2, 3};
  bank.push(1, three, 3);  // the dimension argument is ignored: two components pushed
  EXPECT_EQ(bank.get_count(1), 1);
  EXPECT_EQ(std::vector<int>({bank.get_sig_lat(1, 0, 0), bank.get_sig_lat(1, 0, 1)}), std::vector<int>({1, 2}));
  const int c0[] = {10, 11, 12}, c1[] = {20, 21, 22};
  const int* block[] = {c0, c1};
  bank.push(1, block, 2, 3);
  EXPECT_EQ(bank.get_count(1), 4);
  for (int lag = 0; lag < 3; ++lag) {
    EXPECT_EQ(bank.get_sig_lat(1, lag, 0), 12 - lag);
    EXPECT_EQ(bank.get_sig_lat(1, lag, 1), 22 - lag);
  }
  bank.push(1, block, 1, 1);  // a block without the second component pushes 0 there
  EXPECT_EQ(bank.get_sig_lat(1, 0, 1), 0);
  bank.push(5, three, 1);     // unknown signal: ignored
  // bank[1] is the first ring of the vector signal
  EXPECT_EQ(std::vector<int>({bank[0][0], bank[1][0], bank[1][1]}), std::vector<int>({10, 10, 12}));
  bank.push(0, block, 1, 2);  // signal 0 takes blocks too
  EXPECT_EQ(std::vector<int>({bank.get_sig_lat(0, 0, 0), bank.get_sig_lat(0, 1, 0)}), std::vector<int>({11, 10}));
}

TEST(BufferBank, ResizeCopyAndCompare) {
  BufferBank<int> bank(makeParam("b", {"s", "v"}, {1, 2}, {2, 2}));
  bank.set_sig(0, 4);
  bank.push();
  BufferBank<int> copy(bank);
  EXPECT_TRUE(copy == bank);
  copy.push();
  EXPECT_TRUE(copy != bank);
  copy = bank;
  EXPECT_TRUE(copy == bank);
  EXPECT_EQ(copy.get_sig(0), 4);

  const int lens[2] = {5, 2};
  bank.reset_buf(lens, 2);
  EXPECT_EQ(std::vector<int>({bank.get_param().get_buf_len(0), bank[0].get_size(), bank.get_count(0)}),
            std::vector<int>({5, 5, 0}));
  EXPECT_EQ(bank.get_sig_lat(0, 0, 0), 0);
  EXPECT_EQ(bank.get_sig(0), 4);  // the staged values survive a buffer reset
}

TEST(BufferBank, ChecksAbortWithTheirTexts) {
  BufferBank<int> bank(makeParam("b", {"s", "v"}, {1, 2}, {2, 2}));
  const int lens[1] = {3};
  const std::string where = "Tools/SignalUtil/BufferBank\\.cpp:[0-9]+: .*";
  EXPECT_DEATH(bank.reset_buf(lens, 1), where + "Assertion `num_buf_len == param_->get_num_sig\\(\\)' failed\\.");
  EXPECT_DEATH(bank[2], where + "Assertion `sig_id < param_->get_num_sig\\(\\)' failed\\.");
  EXPECT_DEATH(bank[-1], "Assertion `sig_id < param_->get_num_sig\\(\\)' failed");
  EXPECT_DEATH(
      {
        std::fflush(stdout);
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        bank.get_sig_id("nope");
      },
      "^sig_name=nope is invalid\n.*" + where + "Assertion `ind != -1' failed\\.");
  EXPECT_EQ(bank.get_sig_id("v"), 1);
}

// a_signal: 3 samples kept, a name 12 columns hold; x: a 3-vector keeping 2; h: not printed but the longest;
// abcdefghi: a 2-vector keeping 1, with a name too wide for 12 columns.
BufferBank<double> printBank() {
  BufferBankParam p = makeParam("bb", {"a_signal", "x", "h", "abcdefghi"}, {1, 3, 1, 2}, {3, 2, 5, 1});
  p.pFlag[2] = false;
  BufferBank<double> bank(p);
  const double a[] = {1.5, 2.25, 3.125};
  const double x[][3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
  const double w[][2] = {{10, 20}, {30, 40}, {0.123456, -1e-7}};
  for (int t = 0; t < 3; ++t) {
    bank.set_sig(0, a[t]);
    bank.set_sig(1, x[t], 3);
    bank.set_sig(2, 99.0);
    bank.set_sig(3, w[t], 2);
    bank.push();
  }
  return bank;
}

TEST(BufferBankPrint, OneFilePerSignal) {
  qfbtest::ScratchDir dir;
  const BufferBank<double> bank = printBank();
  bank.print_to_file(false, false, -1);
  EXPECT_EQ(readFile("bb_a_signal.txt"), "3.125 \n2.25 \n1.5 \n");
  EXPECT_EQ(readFile("bb_x.txt"), "7 8 9 \n4 5 6 \n");
  EXPECT_EQ(readFile("bb_abcdefghi.txt"), "0.123456 -1e-07 \n");
  EXPECT_FALSE(std::filesystem::exists("bb_h.txt"));
  bank.print_to_file(true, true, 2);
  EXPECT_EQ(readFile("bb_a_signal.txt"), "3.125 \n2.25 \n1.5 \n2.25 \n3.125 \n");
  EXPECT_EQ(readFile("bb_x.txt"), "7 8 9 \n4 5 6 \n4 5 6 \n7 8 9 \n");
  bank.print_to_file(false, true, -1);
  EXPECT_EQ(readFile("bb_a_signal.txt"), "1.5 \n2.25 \n3.125 \n");

  BufferBank<bool> flags(makeParam("f", {"b"}, {2}, {2}));
  const bool on[2] = {true, false};
  flags.set_sig(0, on, 2);
  flags.push();
  flags.print_to_file(false, false, -1);
  EXPECT_EQ(readFile("f_b.txt"), "1 0 \n0 0 \n");
  BufferBank<int>().print_to_file(false, false, -1);
  EXPECT_EQ(readFile("BufferOut_sig0.txt"), "0 \n");
}

TEST(BufferBankPrint, AllSignalsInOneFileWithHeader) {
  qfbtest::ScratchDir dir;
  const BufferBank<double> bank = printBank();
  bank.print_to_one_file(false, false, -1, true);
  const std::string gap12(12, ' '), gap14(14, ' ');
  const std::string newest = pad("3.125", 12) + pad("7", 12) + pad("8", 12) + pad("9", 12) + pad("0.1235", 14) +
                             pad("-1e-07", 14) + "\n",
                    middle = pad("2.25", 12) + pad("4", 12) + pad("5", 12) + pad("6", 12) + gap14 + "\n";
  const std::string expected =
      "Column: 6\tRow(noHeader): 5\tHeader_en: 1\n" +
      pad("a_signal", 12) + pad("x", 9) + "[0]" + pad("x", 9) + "[1]" + pad("x", 9) + "[2]" + pad("abcdefghi", 11) + "[0]" +
      pad("abcdefghi", 11) + "[1]\n" + newest + middle + pad("1.5", 12) + gap12 + gap14 + "\n" +
      gap12 + gap12 + gap14 + "\n" + gap12 + gap12 + gap14 + "\n";
  EXPECT_EQ(readFile("bb.txt"), expected);
  bank.print_to_one_file(true, true, 2, false);
  EXPECT_EQ(readFile("bb.txt"), expected + "Column: 6\tRow(noHeader): 2\tHeader_en: 0\n" + middle + newest);
  bank.print_to_one_file(false, false, 9, false);  // longer than any history: all five rows
  EXPECT_EQ(readFile("bb.txt").substr(0, 40), "Column: 6\tRow(noHeader): 5\tHeader_en: 0\n");
}

TEST(BufferBankPrint, FreeSetSigConvertsBools) {
  BufferBank<double> bank(makeParam("b", {"v"}, {3}, {1}));
  const bool bits[3] = {true, false, true};
  EXPECT_TRUE((set_sig<double, bool>(&bank, 0, bits, 3)));
  EXPECT_FALSE((set_sig<double, bool>(&bank, 0, bits, 2)));
  double out[3];
  bank.get_sig(0, out, 3);
  EXPECT_EQ(std::vector<double>(out, out + 3), std::vector<double>({1.0, 0.0, 1.0}));
}

}  // namespace
