// The overdispersed channel of flashbch simulate (--channel bbm): the number
// of errors in a codeword of n bits is beta-binomial with mean n p and
// intra-codeword correlation rho, and given their number the positions are
// uniform. Error counts measured on NAND codewords are more dispersed than
// a binomial's [V. Taranalli, H. Uchikawa and P. H. Siegel, "Channel models
// for multi-level cell flash memories based on empirical error analysis",
// IEEE Trans. Commun. 64(8), 2016, who fit a beta-binomial].
//
// With alpha + beta = 1/rho - 1, alpha = p (1/rho - 1): a codeword draws its
// own error rate pi ~ Beta(alpha, beta) and then errs per bit with
// probability pi (geometric gaps, O(errors)), and
//   P(W = w) = C(n, w) B(w + alpha, n - w + beta) / B(alpha, beta).
// rho = 0 is the binomial channel itself, and below 1e-9 the weights are
// the binomial ones (closer than lgamma could resolve the difference).
#pragma once

#include <vector>

#include "blockChannel.h"

namespace flashbch {

class BetaBinomialChannel : public Channel {
 public:
  // Throws std::invalid_argument for p outside [0, 0.5) or rho outside [0, 1).
  BetaBinomialChannel(double p, double rho);
  ChannelKind kind() const override { return ChannelKind::BetaBinomial; }
  double parameter() const override { return p_; }
  double rawBitErrorRate() const override { return p_; }
  // Exchangeable: given their number, every set of positions is equally
  // likely, which is what the stratified estimator needs.
  bool independentErrors() const override { return true; }
  void sampleErrors(int n, RandomStream& rng, std::vector<int>& positions) const override;
  double logWeight(int n, int w) const override;

 private:
  double gamma(double shape, RandomStream& rng) const;
  double p_, rho_, alpha_ = 0.0, beta_ = 0.0;
};

}  // namespace flashbch
