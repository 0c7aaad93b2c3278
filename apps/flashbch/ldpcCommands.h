// flashbch ldpc: facts about a parity-check matrix given as an alist file,
// its generator matrix, and the binary parity-check matrix of the tool's
// BCH code.
#pragma once

#include <string>

namespace flashbch {

struct LdpcOptions {
  std::string action;  // info, generator or bch
  std::string input, output, json;
  int dataBits = 0;
  int t = 0;
  bool noCycles = false;
};

int runLdpc(const LdpcOptions& options);

}  // namespace flashbch
