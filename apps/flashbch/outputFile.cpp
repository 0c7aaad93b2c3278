#include "outputFile.h"

#include <fstream>

#include "usageError.h"

namespace flashbch {

void checkWritable(const std::string& flag, const std::string& path) {
  if (path.empty()) return;
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw UsageError(flag + ": cannot write " + path);
}

void writeOutputFile(const std::string& flag, const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
  out.close();
  if (!out) throw UsageError(flag + ": cannot write " + path);
}

}  // namespace flashbch
