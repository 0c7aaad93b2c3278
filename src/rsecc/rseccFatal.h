// The Reed-Solomon codec's fatal conditions: one line on standard output,
// then the process ends with exit(-1).
#pragma once

#include <cstdlib>
#include <iostream>

namespace rsecc_detail {

[[noreturn]] inline void fatal(const char* message) {
  std::cout << message << std::endl;
  std::exit(-1);
}

}  // namespace rsecc_detail
