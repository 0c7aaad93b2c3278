// Writing the tool's output files. A path that cannot be written is a usage
// error naming the flag that gave it; it is checked before any long work
// by checkWritable, which creates (or truncates) the file.
#pragma once

#include <string>

namespace flashbch {

void checkWritable(const std::string& flag, const std::string& path);
void writeOutputFile(const std::string& flag, const std::string& path, const std::string& content);

}  // namespace flashbch
