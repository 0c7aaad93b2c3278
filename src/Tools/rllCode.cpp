#include "Tools/rllCode.h"

#include <algorithm>
#include <vector>

RLL_Code::RLL_Code(int userBits, int codeBits)
    : k(userBits), n(codeBits), twoRedundantBits(codeBits - userBits >= 2) {}

RLL_Code::RLL_Code(const RLL_Code& other)
    : k(other.k), n(other.n), twoRedundantBits(other.twoRedundantBits) {}

RLL_Code& RLL_Code::operator=(const RLL_Code& other) {
  k = other.k;
  n = other.n;
  twoRedundantBits = other.twoRedundantBits;
  return *this;
}

RLL_Code::~RLL_Code() = default;

void RLL_Code::encode(int*, int*, bool) {}
void RLL_Code::decode(int*, int*, bool) {}
void RLL_Code::init_precoder(int*) {}
void RLL_Code::resetDc(int*, int) {}
void RLL_Code::resetDc(int) {}
void RLL_Code::parity_calculate(int*) {}

// Each word goes through scratch buffers so that a derived encode may use
// its output as working space without touching the neighbouring block.
int RLL_Code::block_encode(int* in, int* out, int nblocks, bool flag) {
  std::vector<int> word(k), codeword(n);
  for (int b = 0; b < nblocks; ++b) {
    std::copy(in + b * k, in + b * k + k, word.begin());
    encode(word.data(), codeword.data(), flag);
    std::copy(codeword.begin(), codeword.end(), out + b * n);
  }
  return std::max(nblocks, 0) * n;
}

int RLL_Code::block_decode(int* in, int* out, int nblocks, bool flag) {
  std::vector<int> codeword(n), word(k);
  for (int b = 0; b < nblocks; ++b) {
    std::copy(in + b * n, in + b * n + n, codeword.begin());
    decode(codeword.data(), word.data(), flag);
    std::copy(word.begin(), word.end(), out + b * k);
  }
  return std::max(nblocks, 0) * k;
}
