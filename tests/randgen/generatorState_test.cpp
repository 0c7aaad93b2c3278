// Saving and restoring generator state, as words and as text, resumes the
// identical sequence; a text state that cannot be read leaves the
// generator as it was.
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "randgen/randgen.h"
#include "support/testutil.h"

namespace {

struct Kind {
  const char* name;
  std::function<std::unique_ptr<Random_Number_Generator>(unsigned int)> make;
  int stateLen;
  bool spaceAfterEachNumber;
};

const Kind kKinds[] = {
    {"MT_Rand_Gen", [](unsigned int s) { return std::make_unique<MT_Rand_Gen>(s); }, 625, true},
    {"RanrotB", [](unsigned int s) { return std::make_unique<RanrotB>(s); }, 19, true},
    {"Primitive_RNG",
     [](unsigned int s) {
       auto g = std::make_unique<Primitive_RNG>();
       g->set_state(&s);
       return g;
     },
     1, false},
};

std::vector<unsigned int> draws(Random_Number_Generator& g, int n) {
  std::vector<unsigned int> v(n);
  for (unsigned int& x : v) x = g.uniform_int();
  return v;
}

TEST(GeneratorState, WordsAndTextResumeTheSequence) {
  for (const Kind& k : kKinds) {
    SCOPED_TRACE(k.name);
    auto g = k.make(31u), fromWords = k.make(77u), fromText = k.make(78u);
    draws(*g, 100);
    ASSERT_EQ(g->get_state_len(), k.stateLen);
    std::vector<unsigned int> words(k.stateLen);
    g->get_state(words.data());
    std::ostringstream text;
    g->record_state(text);
    const std::vector<unsigned int> expected = draws(*g, 1000);
    fromWords->set_state(words.data());
    EXPECT_EQ(draws(*fromWords, 1000), expected);
    std::istringstream in(text.str());
    fromText->load_state(in);
    EXPECT_FALSE(in.fail());
    EXPECT_EQ(draws(*fromText, 1000), expected);

    // The text is state-length decimal numbers and an end of line.
    const std::string t = text.str();
    EXPECT_EQ(t.back(), '\n');
    EXPECT_EQ(t[t.size() - 2] == ' ', k.spaceAfterEachNumber);
    std::istringstream numbers(t);
    std::vector<unsigned int> parsed;
    for (unsigned long long v; numbers >> v;) parsed.push_back(static_cast<unsigned int>(v));
    EXPECT_EQ(parsed, words);  // the text lists the words in the same order

    // A text missing its last number fails on the stream and changes nothing.
    auto keep = k.make(79u);
    auto twin = k.make(79u);
    const std::string body = t.substr(0, t.find_last_not_of(" \n") + 1);
    const size_t lastSpace = body.rfind(' ');
    std::istringstream cut(lastSpace == std::string::npos ? "" : body.substr(0, lastSpace));
    keep->load_state(cut);
    EXPECT_TRUE(cut.fail());
    EXPECT_EQ(draws(*keep, 50), draws(*twin, 50));
  }
}

TEST(GeneratorState, WordLayouts) {
  const unsigned int seed = 2718u;
  std::vector<unsigned int> mt(625), rr(19);
  MT_Rand_Gen(seed).get_state(mt.data());
  EXPECT_EQ(mt[0], 624u);  // block not yet generated
  EXPECT_EQ(mt[1], seed);
  EXPECT_EQ(mt[2], 1812433253u * (seed ^ (seed >> 30)) + 1u);
  RanrotB(seed).get_state(rr.data());
  // Nine warm-up draws move both lags down nine slots from 0 and 10.
  EXPECT_EQ(rr[0], 8u);
  EXPECT_EQ(rr[1], 1u);
}

TEST(GeneratorState, PositionsOutOfRange) {
  struct Case {
    int kind;  // index into kKinds
    int token;
    const char* value;
  };
  const Case cases[] = {{0, 0, "625"}, {0, 0, "-1"}, {1, 0, "17"}, {1, 1, "-1"}, {1, 1, "17"}};
  for (const Case& c : cases) {
    auto g = kKinds[c.kind].make(5u), twin = kKinds[c.kind].make(5u);
    std::ostringstream text;
    g->record_state(text);
    std::istringstream tokens(text.str());
    std::vector<std::string> words;
    for (std::string w; tokens >> w;) words.push_back(w);
    words[c.token] = c.value;
    std::string edited;
    for (const std::string& w : words) edited += w + " ";
    std::istringstream in(edited);
    g->load_state(in);
    EXPECT_TRUE(in.fail()) << kKinds[c.kind].name << " token " << c.token << " = " << c.value;
    EXPECT_EQ(draws(*g, 700), draws(*twin, 700));
  }
  // As words, a foreign RanrotB lag is reduced modulo 17 ...
  std::vector<unsigned int> rr(19), words(625);
  RanrotB ranrot(5u), foreign(6u);
  ranrot.get_state(rr.data());
  rr[0] += 17u * 1000u;
  foreign.set_state(rr.data());
  EXPECT_EQ(draws(foreign, 50), draws(ranrot, 50));
  // ... and an MT index past the block only forces a regeneration.
  MT_Rand_Gen fresh(9u);
  fresh.get_state(words.data());
  ASSERT_EQ(words[0], 624u);
  const std::vector<unsigned int> expected = draws(fresh, 700);
  words[0] = 0xfffffff0u;
  MT_Rand_Gen b(1u);
  b.set_state(words.data());
  EXPECT_EQ(draws(b, 700), expected);
}

}  // namespace
