// PageBitChannel: the bits of one page type as a decoder receives them,
// for simulation: whether each bit's decision is wrong, and its reliability.
//
// The cells of a page are independent and the data (all pages' bits)
// uniformly random, as scrambled data are, so every bit falls in voltage
// bin B with its bit value v with probability P(B, v) = P(B | v) / 2. The
// decision on a bit is the hard read's when there is no soft read, and
// otherwise the sign of its bin's quantised LLR (the hard read's bit when
// that is 0); its reliability is the |quantised LLR| of the bin, or, for a
// plain hard read, the same value ln((1 - p) / p) for every bit. So each
// bit independently is wrong with probability errorRate(), and given
// wrong (right) its reliability follows the bins' masses of wrong (right)
// decisions: a simulation may draw the error positions first - by any exact
// method, or by weight as a stratified estimator does - and the
// reliabilities afterwards, given the positions, with the same joint law.
//
// Reliabilities are drawn by Walker's alias method: one 64-bit random word
// per bit, the high half choosing a column, the low half the coin.
#pragma once

#include <cstdint>
#include <vector>

#include "nand/softPageRead.h"

class PageBitChannel {
 public:
  // soft: use the soft read's bins; otherwise the page is read once.
  PageBitChannel(const SoftPageRead& read, bool soft);

  double errorRate() const { return wrongMass; }
  bool soft() const { return softDecisions; }
  float reliabilityOfWrong(std::uint64_t randomWord) const { return wrong.draw(randomWord); }
  float reliabilityOfRight(std::uint64_t randomWord) const { return right.draw(randomWord); }

  // The reliability classes and their probabilities given wrong or right
  // decisions (for tests and reports).
  struct Class {
    float reliability;
    double probability;
  };
  const std::vector<Class>& wrongClasses() const { return wrong.classes; }
  const std::vector<Class>& rightClasses() const { return right.classes; }

 private:
  struct AliasTable {
    void build(std::vector<Class> weighted);
    float draw(std::uint64_t word) const;
    std::vector<Class> classes;  // probabilities normalised
    std::vector<std::uint32_t> threshold;
    std::vector<std::uint32_t> alias;
  };
  bool softDecisions;
  double wrongMass = 0.0;
  AliasTable wrong, right;
};
