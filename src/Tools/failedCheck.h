// The consistency checks of the fixed-point and signal-bank code: a failed
// check prints the C library's assertion report, naming the source file, the
// line, the function and the condition, and aborts. The checks stay active
// in every build type, because each guards a caller bug (a bad format, an
// impossible index) that would otherwise yield silently wrong values.
#pragma once

namespace tools {

[[noreturn]] void failedCheck(const char* source, int line, const char* function, const char* expression);

}  // namespace tools

#define TOOLS_CHECK(source, condition, text) \
  ((condition) ? void(0) : ::tools::failedCheck(source, __LINE__, __PRETTY_FUNCTION__, text))
