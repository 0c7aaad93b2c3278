// Decisions and reliabilities of a page's bits; see the header.
#include "nand/pageBitChannel.h"

#include <cmath>

PageBitChannel::PageBitChannel(const SoftPageRead& read, bool soft) : softDecisions(soft) {
  std::vector<Class> wrongWeights, rightWeights;
  const double rber = read.rber();
  // A single read: one reliability for every bit, ln((1 - p) / p).
  const float flat = rber > 0.0 ? static_cast<float>(std::log((1.0 - rber) / rber)) : 1.0f;
  for (int bin = 0; bin < read.bins(); ++bin) {
    const double q = read.quantizedLlr(bin);
    const int decision = !soft || q == 0.0 ? read.hardBit(bin) : (q > 0.0 ? 0 : 1);
    const float reliability = soft ? static_cast<float>(std::fabs(q)) : flat;
    const double pWrong = 0.5 * read.probability(bin, 1 - decision);
    const double pRight = 0.5 * read.probability(bin, decision);
    wrongMass += pWrong;
    if (pWrong > 0.0) wrongWeights.push_back({reliability, pWrong});
    if (pRight > 0.0) rightWeights.push_back({reliability, pRight});
  }
  if (wrongWeights.empty()) wrongWeights.push_back({0.0f, 1.0});
  wrong.build(wrongWeights);
  right.build(rightWeights);
}

void PageBitChannel::AliasTable::build(std::vector<Class> weighted) {
  double total = 0.0;
  for (const Class& c : weighted) total += c.probability;
  for (Class& c : weighted) c.probability /= total;
  classes = weighted;
  // Vose's construction on scaled probabilities m * p_i: columns below 1
  // are topped up from columns above 1.
  const size_t m = classes.size();
  std::vector<double> scaled(m);
  std::vector<size_t> small, large;
  for (size_t i = 0; i < m; ++i) {
    scaled[i] = classes[i].probability * static_cast<double>(m);
    (scaled[i] < 1.0 ? small : large).push_back(i);
  }
  threshold.assign(m, 0xFFFFFFFFu);
  alias.resize(m);
  for (size_t i = 0; i < m; ++i) alias[i] = static_cast<std::uint32_t>(i);
  while (!small.empty() && !large.empty()) {
    const size_t s = small.back(), l = large.back();
    small.pop_back();
    threshold[s] = static_cast<std::uint32_t>(std::ldexp(scaled[s], 32) >= 4294967295.0
                                                  ? 4294967295.0
                                                  : std::ldexp(scaled[s], 32));
    alias[s] = static_cast<std::uint32_t>(l);
    scaled[l] -= 1.0 - scaled[s];
    if (scaled[l] < 1.0) {
      large.pop_back();
      small.push_back(l);
    }
  }
}

float PageBitChannel::AliasTable::draw(std::uint64_t word) const {
  const std::uint64_t column = ((word >> 32) * classes.size()) >> 32;
  const std::uint32_t coin = static_cast<std::uint32_t>(word);
  return classes[coin < threshold[column] ? column : alias[column]].reliability;
}
