// Co-simulation banks: bank numbering and slot reuse, consumers catching up
// after an overwrite, stop_at_push and auto_next_bank, packed words, the
// signal and pop logs, and the fatal paths.
#include <sstream>
#include <string>
#include <vector>

#include "Tools/SignalUtil/pliSignalBank.h"
#include "bankParam.h"

namespace {

using banktest::makeParam;
using qfbtest::readFile;

struct Flags {
  bool stop_at_push = false, auto_next_bank = false, print_files = false, print_idx = false, zero_pad = false;
};

template <class T>
PliSignalBank<T> makePli(const BufferBankParam& p, const FixedPointParam* q, int banks, Flags f) {
  return PliSignalBank<T>(p, q, banks, 0, true, 42, f.print_files, f.stop_at_push, f.auto_next_bank, f.print_idx,
                          f.zero_pad);
}

TEST(PliSignalBank, BanksFillSlotsCyclicallyAndStaleCallersCatchUp) {
  auto pli = makePli<int>(makeParam("p", {"s"}, {1}, 3), nullptr, 2, Flags());
  EXPECT_EQ(pli.get_push_bank_idx(0), -1);
  pli.push(0, 1);
  EXPECT_EQ(pli.pop(0, 0), 1);
  for (int v = 2; v <= 7; ++v) pli.push(0, v);
  // bank 0 = 1..3 (slot 0), bank 1 = 4..6 (slot 1), bank 2 = 7 (slot 0 again)
  EXPECT_EQ(pli.get_push_bank_idx(0), 2);
  EXPECT_EQ(std::vector<int>({pli.get_bank_no(0, 0), pli.get_fill(0, 0), pli.get_bank_no(0, 1), pli.get_fill(0, 1)}),
            std::vector<int>({2, 1, 1, 3}));
  const SignalBank<int>& slot0 = *pli.ret_sig_bank_pt(2);
  EXPECT_EQ(std::vector<int>({slot0.get_sig_t(0, 0, 0), slot0.get_sig_t(0, 1, 0)}), std::vector<int>({7, 2}));
  // caller 0 stood at bank 0 index 1, whose slot bank 2 took over: it resumes at bank 1
  int value = 0, idx = -1, bank = -1;
  pli.pop(0, &value, 0, &idx, &bank);
  EXPECT_EQ(std::vector<int>({value, idx, bank}), std::vector<int>({4, 0, 1}));
  pli.set_pli_func_name("$get_signal_sample_with_a_really_long_name_of_sixty_chars");
  EXPECT_EQ(std::string(pli.get_pli_func_name()).size(), 49u);
}

// value 100 + n is the n-th push, so a sample at (bank, idx) must be
// 100 + 4*bank + idx; a caller that pops once after every push must see
// every value in order whatever the settings.
TEST(PliSignalBank, ProducerAndSeveralConsumers) {
  for (int mode = 0; mode < 4; ++mode) {
    Flags f;
    f.stop_at_push = mode & 1;
    f.auto_next_bank = mode & 2;
    SCOPED_TRACE(mode);
    auto pli = makePli<int>(makeParam("p", {"s"}, {1}, 4), nullptr, 3, f);
    int fresh_after_push = 0;
    for (int n = 0; n < 30; ++n) {
      pli.push(0, 100 + n);
      int v, idx, bank;
      pli.pop(0, &v, 0, &idx, &bank);  // keeps up
      ASSERT_EQ(v, 100 + n);
      ASSERT_EQ(v, 100 + 4 * bank + idx);
      pli.pop(0, &v, 2, &idx, &bank);  // pops twice per push
      fresh_after_push += v == 100 + n;
      pli.pop(0, &v, 2, &idx, &bank);
      if (n % 5 == 4)                  // caller 1 reads in bursts of five
        for (int k = n - 4; k <= n; ++k) {
          pli.pop(0, &v, 1, &idx, &bank);
          ASSERT_EQ(v, 100 + k);
        }
    }
    // With stop_at_push the eager caller waits at the producer and sees every
    // value, unless auto_next_bank carried it into a bank not yet opened, whose
    // slot still counts as full, so nothing stops it there.
    if (f.stop_at_push && !f.auto_next_bank)
      EXPECT_EQ(fresh_after_push, 30);
    else
      EXPECT_LT(fresh_after_push, 30);
    // caller 7 never read: banks 5, 6, 7 are held, so it starts over at bank 5
    int v, idx, bank;
    pli.pop(0, &v, 7, &idx, &bank);
    EXPECT_EQ(std::vector<int>({v, idx, bank}), std::vector<int>({120, 0, 5}));
  }
}

TEST(PliSignalBank, StopAtPushAndAutoNextBankPositions) {
  for (bool stop : {false, true}) {
    Flags f;
    f.stop_at_push = stop;
    auto pli = makePli<int>(makeParam("p", {"s"}, {1}, 4), nullptr, 2, f);
    pli.push(0, 1);
    pli.push(0, 2);
    std::vector<int> positions;
    for (int k = 0; k < 4; ++k) {
      int v, idx;
      pli.pop(0, &v, 3, &idx, nullptr);
      positions.push_back(idx);
    }
    EXPECT_EQ(positions, stop ? std::vector<int>({0, 1, 2, 2}) : std::vector<int>({0, 1, 2, 3}));
    EXPECT_EQ(pli.more(0, 3), false);
    pli.push(0, 3);
    EXPECT_EQ(pli.more(0, 3), stop);
  }
  for (bool autoNext : {false, true}) {
    Flags f;
    f.auto_next_bank = autoNext;
    auto pli = makePli<int>(makeParam("p", {"s"}, {1}, 2), nullptr, 2, f);
    pli.push(0, 1);
    pli.push(0, 2);
    pli.pop(0, 0);
    pli.pop(0, 0);
    EXPECT_EQ(pli.get_pop_bank_idx(0, 0), autoNext ? 1 : 0);
    EXPECT_EQ(pli.get_pop_idx(0, 0), autoNext ? 0 : 2);
  }
}

TEST(PliSignalBank, BankMovesAndWordPops) {
  const FixedPointParam q[] = {{8, 0, "s"}, {0, 0, ""}};
  auto pli = makePli<double>(makeParam("p", {"w", "raw"}, {1, 1}, 3), q, 2, Flags());
  for (double v : {-3.0, 2.0, -1.0}) pli.push(0, v);
  pli.push(1, -2.5);
  unsigned word = 0;
  int idx, bank;
  pli.pop_t(0, &word, 5, &idx, &bank);
  EXPECT_EQ(word, 253u);
  pli.pop_sm(0, &word, 5, &idx, &bank);
  EXPECT_EQ(word, 2u);
  pli.pop_sm(0, &word, 5, &idx, &bank);
  EXPECT_EQ(word, 129u);
  EXPECT_EQ(pli.pop(0, 6), 253.0);   // register words when the format has a width
  EXPECT_EQ(pli.pop(1, 6), -2.5);    // raw samples otherwise
  pli.reset_pop_idx_to_start_of_current_bank(0, 5);
  pli.pop_t(0, &word, 5, &idx, &bank);
  EXPECT_EQ(std::vector<int>({int(word), idx, bank}), std::vector<int>({253, 0, 0}));

  const int lens[] = {5, 2};
  pli.start_pushing_new_bank_all_sig(lens, 2);
  EXPECT_EQ(pli.get_unifed_bank_index(), 0);
  EXPECT_EQ(pli.ret_sig_bank_pt(1)->get_buf_len(0), 5);
  pli.start_pushing_this_bank_all_sig(4);
  EXPECT_EQ(pli.get_push_bank_idx(1), 4);
  EXPECT_EQ(pli.get_bank_no(1, 0), 4);
  pli.move_pop_idx_to_input_bank(0, 5, 5);  // the slot number, 5 mod 2
  EXPECT_EQ(pli.get_pop_bank_idx(5, 0), 1);
  pli.move_pop_idx_to_next_bank_all_sig(5);
  EXPECT_EQ(std::vector<int>({pli.get_pop_bank_idx(5, 0), pli.get_pop_bank_idx(5, 1)}), std::vector<int>({2, 1}));
  EXPECT_EXIT(pli.pop_t(1, &word, 5, &idx, &bank), testing::ExitedWithCode(1), "");
}

TEST(PliSignalBank, CombineAndPushPacksSymbolsMsbFirst) {
  auto pli = makePli<int>(makeParam("p", {"s"}, {1}, 8), nullptr, 1, Flags());
  const int bits[] = {1, 0, 1, 1};
  pli.combine_and_push(0, bits, 4, 4, 1);
  const int pairs[] = {3, 1, 2, 0, 1};  // 2-bit symbols, four to a byte
  pli.combine_and_push(0, pairs, 5, 8, 2);
  const int wide[] = {1, 1};            // width 40: the first symbol's weight 2^39 is lost
  pli.combine_and_push(0, wide, 2, 40, 8);
  std::vector<int> words;
  while (pli.more(0, 0)) words.push_back(pli.pop(0, 0));
  EXPECT_EQ(words, std::vector<int>({0b1011, (3 << 6) + (1 << 4) + (2 << 2), 1 << 6, (1 << 24) + 0}));
}

TEST(PliSignalBank, SignalAndPopLogs) {
  qfbtest::ScratchDir dir;
  qfbtest::writeFile("plisb_co_w.txt", "stale\n");
  const FixedPointParam q[] = {{12, 0, "s"}, {0, 0, ""}};
  {
    Flags f{false, false, true, true, true};
    auto pli = makePli<int>(makeParam("co", {"w", "v"}, {1, 2}, 2), q, 2, f);
    EXPECT_EQ(readFile("plisb_co_w.txt"), "");
    for (int v : {-1, 5, 300}) pli.push(0, v);  // the third push opens bank 1 and logs bank 0
    EXPECT_EQ(readFile("plisb_co_w.txt"), "fff 0 0\n005 1 0\n");
    const int v[2] = {-1, 26};
    pli.push(1, v);
    pli.clear_pop_sig_files();
    pli.pli_get_sig_to_file("w", 3, 2);
    pli.pli_get_sig_to_file("v", 0, 1);
    pli.pli_get_sig_to_file("w", 3, 1);
    EXPECT_EQ(readFile("plisb_co_w_pop.txt"), "fff 0 0 3\n005 1 0 3\n12c 0 1 3\n");
    EXPECT_EQ(readFile("plisb_co_v_pop.txt"), "ffffffff 0 0 0\n1a 0 0 0\n");
    std::ostringstream counts;
    pli.print_and_reset_pli_get_count(counts);
    EXPECT_EQ(counts.str(), "pli_get_sig\t co\t 0\t v\t 1\npli_get_sig\t co\t 3\t w\t 3\n");
    counts.str("");
    pli.print_and_reset_pli_get_count(counts);
    EXPECT_EQ(counts.str(), "");
  }
  // the destructor logs what was banked since the last log
  EXPECT_EQ(readFile("plisb_co_w.txt"), "fff 0 0\n005 1 0\n12c 0 1\n");
  EXPECT_EQ(readFile("plisb_co_v.txt"), "ffffffff 1a 0 0\n");

  auto plain = makePli<bool>(makeParam("b", {"f"}, {1}, 4), nullptr, 1, Flags{false, false, true, false, true});
  plain.push(0, true);
  plain.push(0, false);
  plain.print_sig_file(0);
  plain.print_sig_file(0);  // nothing new since the last print
  EXPECT_EQ(readFile("plisb_b_f.txt"), "1 \n0 \n");
  EXPECT_EQ(plain.get_pop_sig_file_name(0), "plisb_b_f_pop.txt");
}

TEST(PliSignalBank, FatalPaths) {
  auto pli = makePli<int>(makeParam("p", {"s", "t"}, {1, 1}, 2), nullptr, 2, Flags());
  const auto callerError = [](int id) { return "^Error: caller_id=" + std::to_string(id) + " exceeds max_num_caller_id=100\n$"; };
  EXPECT_EXIT(pli.move_pop_idx_to_input_bank(0, 100, 1), testing::ExitedWithCode(255), callerError(100));
  EXPECT_EXIT(pli.reset_pop_idx_to_start_of_current_bank(0, 100), testing::ExitedWithCode(255), callerError(100));
  EXPECT_EXIT(pli.pop(0, -1), testing::ExitedWithCode(255), callerError(-1));
  const int lens[] = {3};
  EXPECT_EXIT_PRINTS(pli.start_pushing_new_bank_all_sig(lens, 1), 255, "num_buf_len != param_->get_num_sig()\n");
  unsigned word;
  EXPECT_EXIT(pli.pop_sm(0, &word, 0, nullptr, nullptr), testing::ExitedWithCode(1), "");
  EXPECT_FALSE(pli.more(0, 100));
  EXPECT_FALSE(pli.more(2, 0));
}

}  // namespace
