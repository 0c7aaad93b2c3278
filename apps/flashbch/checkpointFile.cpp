#include "checkpointFile.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "outputFile.h"
#include "usageError.h"

namespace flashbch {

void addCheckpointOptions(CLI::App& command, CheckpointOptions& o) {
  command.add_option("--checkpoint", o.file,
                     "save the finished points and the current point's progress to this file, replacing it "
                     "atomically, so that --resume can continue the run");
  command.add_option("--checkpoint-every", o.every,
                     "seconds between checkpoints, more than 0 [default: " +
                         std::to_string(static_cast<int>(CheckpointFile::kDefaultEverySeconds)) + "]");
  command.add_option("--resume", o.resume,
                     "continue the run saved in this checkpoint (same settings; any number of threads or ranks); "
                     "checkpoints go on to this file unless --checkpoint names another");
}

CheckpointFile::CheckpointFile(const CheckpointOptions& o, bool checkFiles)
    : path_(o.file.empty() ? o.resume : o.file), resume_(o.resume), lastWrite_(std::chrono::steady_clock::now()) {
  if (!o.every.empty()) {
    char* end = nullptr;
    everySeconds_ = std::strtod(o.every.c_str(), &end);
    if (*end != '\0' || !(everySeconds_ > 0) || !std::isfinite(everySeconds_))
      throw UsageError("--checkpoint-every: '" + o.every + "' is not a number of seconds greater than 0");
    if (path_.empty()) throw UsageError("--checkpoint-every: needs --checkpoint FILE (or --resume FILE)");
  }
  if (!checkFiles) return;
  if (!resume_.empty()) {
    std::ifstream probe(resume_, std::ios::binary);
    if (!probe) throw UsageError("--resume: cannot read " + resume_ + ": " + std::strerror(errno));
  }
  if (!path_.empty()) {
    checkWritable(o.file.empty() ? "--resume" : "--checkpoint", path_);
  }
}

std::optional<Checkpoint> CheckpointFile::resume(const SettingsFingerprint& settings) const {
  if (resume_.empty()) return std::nullopt;
  std::ifstream in(resume_, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  if (!in) throw UsageError("--resume: cannot read " + resume_);
  Checkpoint checkpoint = Checkpoint::parse(text.str(), "--resume: " + resume_);
  const std::string difference = checkpoint.settings.firstDifference(settings);
  if (!difference.empty())
    throw UsageError("--resume: " + resume_ + " was written with other settings: " + difference);
  return checkpoint;
}

bool CheckpointFile::due() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - lastWrite_).count() >= everySeconds_;
}

std::string CheckpointFile::write(const Checkpoint& checkpoint) {
  lastWrite_ = std::chrono::steady_clock::now();
  try {
    writeOutputFile("--checkpoint", path_, checkpoint.serialize());
  } catch (const std::runtime_error& e) {
    return e.what();
  }
  return "";
}

}  // namespace flashbch
