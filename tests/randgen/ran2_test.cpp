// ran2 against its two component sequences, computed here in 64-bit
// arithmetic: the caller's word follows 40014^n mod 2147483563, and each
// deviate times 2147483563 is a table entry (a value of that sequence, each
// handed out once) minus the second generator's 40692^n mod 2147483399,
// taken modulo 2147483562. Then the state file of the moded variant.
#include <cstdint>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "randgen/classicGenerators.h"
#include "support/testutil.h"

namespace {

constexpr std::int64_t kM1 = 2147483563, kM2 = 2147483399, kShift = kM1 - 1;

struct Ran2Reference {
  std::int64_t x1, x2;
  std::set<std::int64_t> tabled, handedOut;
  explicit Ran2Reference(std::int64_t seed) : x1(seed), x2(seed) {
    for (int n = 1; n <= 40; ++n) {
      x1 = 40014 * x1 % kM1;
      if (n > 8) tabled.insert(x1);
    }
  }
  // Advances both generators; checks one deviate and the caller's word.
  void check(double u, long word) {
    x1 = 40014 * x1 % kM1;
    x2 = 40692 * x2 % kM2;
    tabled.insert(x1);
    ASSERT_EQ(word, x1);
    ASSERT_GT(u, 0.0);
    ASSERT_LE(u, 0.999999999988);
    const std::int64_t iy = static_cast<std::int64_t>(u * kM1 + 0.5);
    std::int64_t entry = iy + x2;
    if (entry > kShift) entry -= kShift;
    ASSERT_TRUE(tabled.count(entry));
    ASSERT_TRUE(handedOut.insert(entry).second);
  }
};

std::vector<double> run(double (*gen)(long*, int), long seed, int n) {
  std::vector<double> v(n);
  for (double& u : v) u = gen(&seed, 0);
  return v;
}

double plainRan2(long* idum, int) { return ran2(idum); }

TEST(Ran2, BothVariantsFollowTheComponentSequences) {
  for (auto gen : {&plainRan2, static_cast<double (*)(long*, int)>(&ran2)}) {
    long seed = -12345;
    Ran2Reference ref(12345);
    for (int call = 0; call < 5000; ++call) {
      const double u = gen(&seed, 0);
      ASSERT_NO_FATAL_FAILURE(ref.check(u, seed)) << "call " << call;
    }
  }
}

TEST(Ran2, RestartsAreReproducibleAndUseThe32BitWord) {
  const std::vector<double> fromOne = run(&plainRan2, -1, 40);
  EXPECT_EQ(run(&plainRan2, 0, 40), fromOne);
  EXPECT_EQ(run(&plainRan2, INT32_MIN, 40), fromOne);
  EXPECT_EQ(run(&ran2, -1, 40), fromOne);  // separate statics, same generator
  EXPECT_NE(run(&plainRan2, -2, 40), fromOne);
  if constexpr (sizeof(long) > 4) {
    EXPECT_EQ(run(&plainRan2, static_cast<long>(0x1ffffffffL), 40), fromOne);
  }
}

TEST(Ran2, StateFileRoundTrip) {
  qfbtest::ScratchDir dir;
  long seed = -777;
  Ran2Reference ref(777);
  for (int i = 0; i < 20; ++i) {
    const double u = ran2(&seed, 0);
    ASSERT_NO_FATAL_FAILURE(ref.check(u, seed));
  }
  const long saved = seed;
  ASSERT_EQ(ran2(&seed, 1), 0.0);
  EXPECT_EQ(seed, saved);
  const std::vector<double> expected = run(&ran2, saved, 10);

  // idum2, iy, the table size, then 32 table entries; the caller's word is not stored.
  std::ifstream in("rand2_seed.txt");
  std::vector<std::int64_t> lines;
  for (std::int64_t v; in >> v;) lines.push_back(v);
  ASSERT_EQ(lines.size(), 35u);
  EXPECT_EQ(lines[0], ref.x2);
  EXPECT_EQ(lines[2], 32);
  for (size_t k = 3; k < 35; ++k) EXPECT_TRUE(ref.tabled.count(lines[k]) && !ref.handedOut.count(lines[k]));

  run(&ran2, -5, 30);  // wander off elsewhere
  seed = saved;
  ASSERT_EQ(ran2(&seed, 2), 0.0);
  EXPECT_EQ(run(&ran2, seed, 10), expected);
}

TEST(Ran2, UnusableStateFilesChangeNothing) {
  qfbtest::ScratchDir dir;
  long seed = -4242;
  run(&ran2, seed, 1);
  seed = 4242;
  ASSERT_EQ(ran2(&seed, 1), 0.0);
  const std::string good = qfbtest::readFile("rand2_seed.txt");
  const long saved = seed;
  const std::vector<double> expected = run(&ran2, saved, 10);

  std::string table;
  for (int k = 0; k < 32; ++k) table += "1000\n";
  const std::string cases[] = {
      "",                                      // empty
      "5\n6\n",                                // no table size
      "5\n6\n32\n" + table.substr(5),          // 31 entries
      "5\n6\n32\nabc\n" + table,               // not a number
      "5\n-6\n32\n" + table,                   // iy below range
      "5\n6\n32\n2147483563\n" + table,        // entry beyond the first modulus
      "5\n6\n32\n99999999999\n" + table,       // beyond 32 bits
  };
  for (const std::string& text : cases) {
    qfbtest::writeFile("rand2_seed.txt", good);
    seed = saved;
    ASSERT_EQ(ran2(&seed, 2), 0.0);
    qfbtest::writeFile("rand2_seed.txt", text);
    EXPECT_EQ(ran2(&seed, 2), -1.0) << text;
    EXPECT_EQ(run(&ran2, saved, 10), expected) << text;
  }
  std::remove("rand2_seed.txt");
  seed = saved;
  EXPECT_EQ(ran2(&seed, 2), -1.0);
  // A directory in the way makes saving fail.
  std::filesystem::create_directory("rand2_seed.txt");
  EXPECT_EQ(ran2(&seed, 1), -1.0);
}

TEST(Ran2DeathTest, TableSizeMismatchEndsTheProcess) {
  qfbtest::ScratchDir dir;
  std::string text = "5\n6\n16\n";
  for (int k = 0; k < 16; ++k) text += "7\n";
  qfbtest::writeFile("rand2_seed.txt", text);
  long seed = 1;
  EXPECT_EXIT(ran2(&seed, 2), ::testing::ExitedWithCode(255),
              ::testing::Eq(std::string("NTAB in rand2_seed.txt does not match the defined macro!")));
}

}  // namespace
