// The NAND page channel; see the header.
#include "nandChannel.h"

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "nand/pageReadModel.h"
#include "nand/softPageRead.h"
#include "usageError.h"

namespace flashbch {

std::vector<double> pageReferences(const PageReadModel& read, const std::string& refs) {
  if (refs == "default") return read.pageReferencesOf(read.model().parameters().defaultReferences);
  if (refs == "optimal") return read.optimalReferences();
  std::vector<double> all;
  std::istringstream items(refs);
  for (std::string item; std::getline(items, item, ',');) {
    char* end = nullptr;
    const double v = std::strtod(item.c_str(), &end);
    if (item.empty() || end != item.c_str() + item.size())
      throw UsageError("--refs: cannot read '" + refs + "'; use default, optimal or V1,V2,... in volts");
    all.push_back(v);
  }
  return read.pageReferencesOf(all);
}

NandChannel::NandChannel(const NandChannelSettings& s, double parameter) : parameter_(parameter) {
  const PageReadModel read(*s.model, s.page, s.cycles, s.retentionHours);
  refs_ = pageReferences(read, s.refs);
  const SoftPageRead soft(read, refs_, s.softReads, s.softStep);
  bits_ = std::make_unique<PageBitChannel>(soft, s.softReads > 0);
  logKeep_ = std::log1p(-bits_->errorRate());
}

void NandChannel::sampleErrors(int n, RandomStream& rng, std::vector<int>& positions) const {
  positions.clear();
  appendBernoulliErrors(0, n, bits_->errorRate(), logKeep_, rng, positions);
}

void NandChannel::sampleReliabilities(int n, const std::vector<int>& errors, RandomStream& rng,
                                      std::vector<float>& reliability) const {
  reliability.resize(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) reliability[static_cast<size_t>(i)] = bits_->reliabilityOfRight(rng.next());
  for (int bit : errors) reliability[static_cast<size_t>(bit)] = bits_->reliabilityOfWrong(rng.next());
}

}  // namespace flashbch
