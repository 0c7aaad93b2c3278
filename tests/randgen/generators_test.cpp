// The generator classes against independent computations: published MT19937
// values and the standard library's mt19937; RANROT written as a growing
// history of outputs instead of a ring buffer; the shift register as
// polynomial arithmetic modulo P(x). Then the base conversions on scripted
// draws, and state saved and restored in both forms.
#include <cmath>
#include <cstdint>
#include <ctime>
#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "randgen/randgen.h"
#include "support/testutil.h"

namespace {

using Words = std::vector<unsigned int>;

Words draws(Random_Number_Generator& g, int n) {
  Words v(n);
  for (unsigned int& x : v) x = g.uniform_int();
  return v;
}

TEST(MtRandGen, ReferenceSequences) {
  const unsigned int key[] = {0x123, 0x234, 0x345, 0x456};
  // The published key-seeded outputs; seeding by one word is checked against std::mt19937.
  MT_Rand_Gen keyed(key, 4);
  EXPECT_EQ(draws(keyed, 5), (Words{1067595299u, 955945823u, 477289528u, 4107218783u, 4228976476u}));
  for (unsigned int seed : {0u, 1u, 12345u, 0x80000000u, 0xffffffffu}) {
    std::mt19937 ref(seed);
    MT_Rand_Gen reseeded(7u);
    reseeded.initialize(seed);  // unlike the constructor, initialize takes 0 as a seed
    for (int i = 0; i < 2000; ++i) ASSERT_EQ(reseeded.uniform_int(), ref()) << seed << ", draw " << i;
    if (seed == 0) continue;
    EXPECT_EQ(MT_Rand_Gen(seed).uniform_int(), std::mt19937(seed)());
  }
  const unsigned int zeroKey[] = {0};
  MT_Rand_Gen empty(nullptr, 0), zero(zeroKey, 1);
  EXPECT_EQ(draws(empty, 700), draws(zero, 700));
}

TEST(MtRandGen, ZeroSeedReadsTheClock) {
  for (int variant = 0; variant < 2; ++variant) {
    const auto before = static_cast<unsigned int>(std::time(nullptr));
    MT_Rand_Gen g = variant == 0 ? MT_Rand_Gen() : MT_Rand_Gen(0u);
    const auto after = static_cast<unsigned int>(std::time(nullptr));
    const unsigned int first = g.uniform_int();
    bool matched = false;
    for (unsigned int t = before; t <= after; ++t) matched |= std::mt19937(t)() == first;
    EXPECT_TRUE(matched) << variant;
  }
}

std::uint32_t rotl(std::uint32_t x, int r) { return (x << r) | (x >> (32 - r)); }

// x(n) = rotl(x(n-10), 13) + rotl(x(n-17), 9), with x(-17..-1) the seed words
// as the ring buffer holds them: slot 0 is the oldest, slot k is k steps old.
Words ranrotHistory(std::uint32_t seed, int n) {
  std::uint32_t slot[17], s = seed;
  for (std::uint32_t& w : slot) w = s = s * 2891336453u + 1u;
  Words x{slot[0]};
  for (int k = 16; k >= 1; --k) x.push_back(slot[k]);
  for (int i = 0; i < 9 + n; ++i) x.push_back(rotl(x[x.size() - 10], 13) + rotl(x[x.size() - 17], 9));
  return Words(x.end() - n, x.end());
}

TEST(RanrotB, FollowsTheLaggedRecurrence) {
  for (unsigned int seed : {0u, 1u, 0xdeadbeefu}) {
    RanrotB g(7u);
    g.initialize(seed);
    EXPECT_EQ(draws(g, 500), ranrotHistory(seed, 500)) << seed;
    if (seed == 0) continue;
    EXPECT_EQ(draws(*std::make_unique<RanrotB>(seed), 500), ranrotHistory(seed, 500));
  }
}

// state * x^32 mod x^32 + x^22 + x^2 + x + 1, by long division over GF(2).
unsigned int timesX32ModP(unsigned int state) {
  constexpr std::uint64_t p = (1ull << 32) | 0x400007u;
  std::uint64_t r = static_cast<std::uint64_t>(state) << 32;
  for (int bit = 63; bit >= 32; --bit)
    if (r >> bit & 1u) r ^= p << (bit - 32);
  return static_cast<unsigned int>(r);
}

TEST(PrimitiveRng, StepsByX32ModuloTheFeedbackPolynomial) {
  Primitive_RNG g;
  EXPECT_EQ(draws(g, 2), (Words{1u, 0x400007u}));  // a new register holds 1
  unsigned int state = 0x9e3779b9u;
  g.set_state(&state);
  g.initialize(99u);  // no seeding of its own
  for (int i = 0; i < 200; ++i, state = timesX32ModP(state)) ASSERT_EQ(g.uniform_int(), state);
}

class ScriptedDraws : public Random_Number_Generator {
 public:
  explicit ScriptedDraws(std::deque<unsigned int> d) : script(std::move(d)) {}
  unsigned int uniform_int() override {
    const unsigned int x = script.front();
    script.pop_front();
    return x;
  }
  int get_state_len() const override { return 0; }
  std::deque<unsigned int> script;
};

TEST(RandomNumberGenerator, UniformAndNormalOnScriptedDraws) {
  ScriptedDraws u({0u, 0xffffffffu, 1u});
  EXPECT_EQ(u.uniform(), 0.0);
  EXPECT_EQ(u.uniform(), 1.0 - std::ldexp(1.0, -32));
  EXPECT_EQ(u.uniform(), std::ldexp(1.0, -32));

  constexpr unsigned int kHalf = 0x80000000u, kQuarter = 0x40000000u, kThreeQ = 0xc0000000u;
  // Draws (kQuarter, kThreeQ) make x1 = -0.5, x2 = 0.5, s = 1/2: the second coordinate is returned.
  const double accepted = 0.5 * std::sqrt(-2.0 * std::log(0.5) / 0.5);
  const std::deque<unsigned int> scripts[] = {
      {kQuarter, kThreeQ},
      {kHalf, kHalf, kQuarter, kThreeQ},             // s = 0 is rejected
      {0u, kHalf, kQuarter, kThreeQ},                // s = 1 exactly is rejected
      {0u, 0u, kHalf, kHalf, kQuarter, kThreeQ},     // s = 2, then s = 0
  };
  for (const auto& script : scripts) {
    ScriptedDraws g(script);
    g.script.push_back(kThreeQ);  // a sentinel that must stay unread
    EXPECT_DOUBLE_EQ(g.normal(), accepted);
    EXPECT_EQ(g.script.size(), 1u);
  }
}

struct Kind {
  const char* name;
  std::function<std::unique_ptr<Random_Number_Generator>(unsigned int)> make;
  unsigned int stateLen;
};

const Kind kKinds[] = {
    {"MT_Rand_Gen", [](unsigned int s) { return std::make_unique<MT_Rand_Gen>(s); }, 625},
    {"RanrotB", [](unsigned int s) { return std::make_unique<RanrotB>(s); }, 19},
    {"Primitive_RNG",
     [](unsigned int s) {
       auto g = std::make_unique<Primitive_RNG>();
       g->set_state(&s);
       return g;
     },
     1},
};

TEST(GeneratorState, WordsAndTextResumeTheSequence) {
  for (const Kind& k : kKinds) {
    SCOPED_TRACE(k.name);
    auto g = k.make(31u), fromWords = k.make(77u), fromText = k.make(78u), untouched = k.make(79u);
    draws(*g, 100);
    ASSERT_EQ(static_cast<unsigned int>(g->get_state_len()), k.stateLen);
    Words words(k.stateLen);
    g->get_state(words.data());
    std::ostringstream text;
    g->record_state(text);
    const Words expected = draws(*g, 1000);
    fromWords->set_state(words.data());
    EXPECT_EQ(draws(*fromWords, 1000), expected);
    std::istringstream in(text.str());
    fromText->load_state(in);
    EXPECT_EQ(draws(*fromText, 1000), expected);

    // The text lists the words in order, in decimal, each followed by a space
    // (the one-word register's by nothing), and ends the line.
    std::string expectedText;
    for (unsigned int w : words) expectedText += std::to_string(w) + (k.stateLen > 1 ? " " : "");
    EXPECT_EQ(text.str(), expectedText + "\n");
    // Missing its last number, the text fails on the stream and changes nothing.
    const std::string body = expectedText.substr(0, expectedText.find_last_not_of(' ') + 1);
    const size_t cut = body.rfind(' ');
    std::istringstream shortText(cut == std::string::npos ? "" : body.substr(0, cut));
    auto twin = k.make(79u);
    untouched->load_state(shortText);
    EXPECT_TRUE(shortText.fail());
    EXPECT_EQ(draws(*untouched, 700), draws(*twin, 700));
  }
  const unsigned int seed = 2718u;
  Words mt(625), rr(19);
  MT_Rand_Gen(seed).get_state(mt.data());
  EXPECT_EQ((Words{mt[0], mt[1], mt[2]}), (Words{624u, seed, 1812433253u * (seed ^ (seed >> 30)) + 1u}));
  RanrotB(seed).get_state(rr.data());
  EXPECT_EQ((Words{rr[0], rr[1]}), (Words{8u, 1u}));  // nine warm-up draws moved both lags down
}

TEST(GeneratorState, PositionsOutOfRange) {
  struct Case { int kind, token; const char* value; };
  const Case cases[] = {{0, 0, "625"}, {0, 0, "-1"}, {1, 0, "17"}, {1, 1, "-1"}};
  for (const Case& c : cases) {
    auto g = kKinds[c.kind].make(5u), twin = kKinds[c.kind].make(5u);
    std::ostringstream text;
    g->record_state(text);
    std::istringstream tokens(text.str());
    std::string edited, w;
    for (int i = 0; tokens >> w; ++i) edited += (i == c.token ? c.value : w) + std::string(" ");
    std::istringstream in(edited);
    g->load_state(in);
    EXPECT_TRUE(in.fail()) << kKinds[c.kind].name << " token " << c.token << " = " << c.value;
    EXPECT_EQ(draws(*g, 700), draws(*twin, 700));
  }
  // As words, a foreign RanrotB lag is reduced modulo 17, and an MT index
  // past the block only forces a regeneration.
  Words rr(19), mt(625);
  RanrotB ranrot(5u), foreignRanrot(6u);
  ranrot.get_state(rr.data());
  rr[0] += 17u * 1000u;
  foreignRanrot.set_state(rr.data());
  EXPECT_EQ(draws(foreignRanrot, 50), draws(ranrot, 50));
  MT_Rand_Gen fresh(9u), foreignMt(1u);
  fresh.get_state(mt.data());
  mt[0] = 0xfffffff0u;
  foreignMt.set_state(mt.data());
  EXPECT_EQ(draws(foreignMt, 700), draws(fresh, 700));
}

}  // namespace
