// UsageError: a command line that cannot be carried out. The message names
// the flag (or file) at fault and what would have been accepted; main
// prints it on standard error and ends with exit status 2.
#pragma once

#include <stdexcept>
#include <string>

namespace flashbch {

class UsageError : public std::runtime_error {
 public:
  explicit UsageError(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace flashbch
