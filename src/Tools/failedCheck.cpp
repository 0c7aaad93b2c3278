// The assertion report of a failed consistency check; see failedCheck.h.
#include "Tools/failedCheck.h"

#include <cstdio>
#include <cstdlib>
#ifdef __GLIBC__
#include <cerrno>
#endif

namespace tools {

void failedCheck(const char* source, int line, const char* function, const char* expression) {
  std::fflush(stdout);
#ifdef __GLIBC__
  std::fprintf(stderr, "%s: ", program_invocation_short_name);
#endif
  std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", source, line, function, expression);
  std::fflush(stderr);
  std::abort();
}

}  // namespace tools
