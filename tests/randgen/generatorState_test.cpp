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
};

const Kind kKinds[] = {
    {"MT_Rand_Gen", [](unsigned int s) { return std::make_unique<MT_Rand_Gen>(s); }, 625},
};

std::vector<unsigned int> draws(Random_Number_Generator& g, int n) {
  std::vector<unsigned int> v(n);
  for (unsigned int& x : v) x = g.uniform_int();
  return v;
}

TEST(GeneratorState, WordsAndTextResumeTheSequence) {
  for (const Kind& k : kKinds) {
    SCOPED_TRACE(k.name);
    auto g = k.make(31u);
    draws(*g, 100);
    ASSERT_EQ(g->get_state_len(), k.stateLen);
    std::vector<unsigned int> words(k.stateLen);
    g->get_state(words.data());
    std::ostringstream text;
    g->record_state(text);
    const std::vector<unsigned int> expected = draws(*g, 1000);

    g->set_state(words.data());
    EXPECT_EQ(draws(*g, 1000), expected);
    auto other = k.make(77u);
    other->set_state(words.data());
    EXPECT_EQ(draws(*other, 1000), expected);
    auto fromText = k.make(78u);
    std::istringstream in(text.str());
    fromText->load_state(in);
    EXPECT_FALSE(in.fail());
    EXPECT_EQ(draws(*fromText, 1000), expected);

    // The text is state-length numbers, each followed by one space, and an end of line.
    const std::string t = text.str();
    EXPECT_EQ(t.back(), '\n');
    EXPECT_EQ(t[t.size() - 2], ' ');
    std::istringstream count(t);
    unsigned long long value;
    int numbers = 0;
    while (count >> value) ++numbers;
    EXPECT_EQ(numbers, k.stateLen);

    // A truncated text fails on the stream and changes nothing.
    auto keep = k.make(79u);
    auto twin = k.make(79u);
    std::istringstream cut(t.substr(0, t.size() / 2));
    keep->load_state(cut);
    EXPECT_TRUE(cut.fail());
    EXPECT_EQ(draws(*keep, 50), draws(*twin, 50));
  }
}

TEST(GeneratorState, MtIndexOutOfRange) {
  MT_Rand_Gen g(5u), twin(5u);
  std::ostringstream text;
  g.record_state(text);
  std::string t = text.str();
  t.replace(0, t.find(' '), "625");
  std::istringstream in(t);
  g.load_state(in);
  EXPECT_TRUE(in.fail());
  EXPECT_EQ(draws(g, 700), draws(twin, 700));
  // As words, an index past the block only forces a regeneration.
  std::vector<unsigned int> words(625);
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
