// The NAND page channel of flashbch simulate (--channel nand): every
// codeword lives in one page type of a cell model after --pe cycles and
// --retention hours, read with the default, the optimal or given
// references, with --soft-reads K extra reads of --soft-step volts.
//
// Each bit's decision is wrong independently with the page's decision error
// rate (PageBitChannel), so error positions are drawn as for a BSC, in
// O(errors), and the stratified estimator applies: given the number of
// wrong decisions their positions are uniform, and the reliabilities of
// wrong and right bits are drawn afterwards from their own laws. With soft
// reads the channel hands a soft decoder one reliability per bit.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "blockChannel.h"
#include "nand/pageBitChannel.h"

namespace flashbch {

struct NandChannelSettings {
  std::shared_ptr<const CellModel> model;
  int page = 0;
  double cycles = 0.0, retentionHours = 0.0;
  std::string refs = "default";  // default, optimal, or V1,V2,... (every reference of the cell)
  int softReads = 0;
  double softStep = 0.05;
};

class NandChannel : public Channel {
 public:
  // Throws std::invalid_argument (the library's checks) or UsageError
  // (--refs that cannot be read).
  NandChannel(const NandChannelSettings& settings, double parameter);
  ChannelKind kind() const override { return ChannelKind::Nand; }
  double parameter() const override { return parameter_; }
  double rawBitErrorRate() const override { return bits_->errorRate(); }
  bool independentErrors() const override { return true; }
  void sampleErrors(int n, RandomStream& rng, std::vector<int>& positions) const override;
  bool softOutput() const override { return bits_->soft(); }
  void sampleReliabilities(int n, const std::vector<int>& errors, RandomStream& rng,
                           std::vector<float>& reliability) const override;
  // The page's references in use, volts.
  const std::vector<double>& references() const { return refs_; }

 private:
  double parameter_;
  std::vector<double> refs_;
  std::unique_ptr<PageBitChannel> bits_;
  double logKeep_;
};

// --refs: "default", "optimal" or the cell's 2^b - 1 references in volts.
std::vector<double> pageReferences(const PageReadModel& read, const std::string& refs);

}  // namespace flashbch
