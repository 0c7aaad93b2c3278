// Shared by the bank tests: a parameter set built from parallel lists, and
// the column padding of the one-file tables.
#pragma once

#include <string>
#include <vector>

#include "Tools/SignalUtil/BufferBank.h"
#include "support/testutil.h"

namespace banktest {

inline BufferBankParam makeParam(const std::string& bank, const std::vector<std::string>& names,
                                 const std::vector<int>& dims, const std::vector<int>& lens) {
  BufferBankParam p(static_cast<int>(names.size()));
  p.name = bank;
  for (size_t i = 0; i < names.size(); ++i) {
    p.names[i] = names[i];
    p.sig_dim[i] = dims[i];
    p.buf_len[i] = lens[i];
  }
  return p;
}

// Every signal keeping the same number of samples.
inline BufferBankParam makeParam(const std::string& bank, const std::vector<std::string>& names,
                                 const std::vector<int>& dims, int len) {
  return makeParam(bank, names, dims, std::vector<int>(names.size(), len));
}

// Right-aligned in `width` columns, as the one-file tables print.
inline std::string pad(const std::string& s, size_t width) { return std::string(width - s.size(), ' ') + s; }

}  // namespace banktest
