// Writing the tool's output files. A path that cannot be written is a usage
// error naming the flag that gave it.
//
// Every file is written atomically: the content goes to a temporary file in
// the target's directory, which is then renamed over the target, so a reader
// sees either the previous file or the complete new one, and a failed write
// (disk full, file-size limit, interruption) leaves the previous file as it
// was. checkWritable vets a path before any long work without creating,
// truncating or otherwise touching the target.
#pragma once

#include <string>

namespace flashbch {

void checkWritable(const std::string& flag, const std::string& path);
void writeOutputFile(const std::string& flag, const std::string& path, const std::string& content);

}  // namespace flashbch
