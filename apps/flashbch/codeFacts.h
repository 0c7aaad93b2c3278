// Facts about the codes of a block layout: lengths, rates, the generator
// polynomial, and the analytic failure rates of a bounded-distance decoder.
//
// Codeword i is the narrow-sense binary BCH code over GF(2^15) correcting t
// errors, shortened to k_i data bits: n_i = k_i + 15t, designed distance
// 2t + 1. It fails when more than t of its n_i bits are flipped (the byte
// padding is not part of the code), so at raw bit error rate p its failure
// rate is P(X > t), X ~ Binomial(n_i, p). For a block the tool reports the
// mean over its codewords, and UBER = (expected failed codewords per block)
// / (data bits per block), which for equal codewords is the failure rate
// divided by k.
#pragma once

#include <string>
#include <vector>

#include "blockLayout.h"

namespace flashbch {

// log10 of the failure rate of one codeword.
double log10CodewordFailureRate(int dataBits, int t, double rawBer);
// log10 of the mean failure rate over the codewords of the layout.
double log10BlockFailureRate(const BlockLayout& layout, double rawBer);
// log10 of the UBER of the layout.
double log10Uber(const BlockLayout& layout, double rawBer);

// The generator polynomial g(x) of the code (the same for every k), highest
// degree first, one bit per element: 15t + 1 elements, the first being 1.
// Read from the library's own encoder: the parity of the message x^0 is
// x^(15t) mod g(x) = g(x) - x^(15t).
std::vector<int> generatorPolynomial(int t);
// Hexadecimal digits of a bit string given highest degree first, padded on
// the left to whole digits.
std::string bitsToHex(const std::vector<int>& bits);

}  // namespace flashbch
