// Systematic Reed-Solomon encoding: the parity is the remainder of
// msg(x) x^nParity by the generator, so the codeword is divisible by it.
#include "rsecc/rsecc.h"

#include <algorithm>
#include <vector>

#include "gf/gf.h"

void RSECC::encode(const int* msg, int k, int* cw, int n) {
  std::copy(msg, msg + k, cw);
  std::fill(cw + k, cw + n, gf->getZero());
  std::vector<int> rem(nParity);
  gf->findRemainder(cw, n - 1, genPoly.data(), nParity, rem.data());
  std::copy(rem.begin(), rem.end(), cw + k);
}

void RSECC::dummyEncoder(const int* msg, int k, int* cw, int n) {
  const int degH = nParity - 1;
  std::vector<int> h(degH + 1, gf->getZero()), product(degH + 1);
  h[0] = gf->getOne();
  for (int i = 1; i <= degH; ++i) {
    const int factor[2] = {gf->getOne(), i};
    gf->polyMult(h.data(), i - 1, factor, 1, product.data(), i);
    std::copy(product.begin(), product.begin() + i + 1, h.begin());
  }
  std::copy(msg, msg + k, cw);
  std::fill(cw + k, cw + n, gf->getZero());
  std::vector<int> rem1(nParity), rem2(degH > 0 ? degH : 1);
  gf->findRemainder(cw, n - 1, genPoly.data(), nParity, rem1.data());
  cw[k] = rem1[0];
  if (degH < 1) return;
  gf->findRemainder(cw, n - 1, h.data(), degH, rem2.data());
  std::copy(rem2.begin(), rem2.begin() + degH, cw + k + 1);
}
