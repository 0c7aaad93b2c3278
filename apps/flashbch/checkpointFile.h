// CheckpointFile: the --checkpoint, --checkpoint-every and --resume options
// of a long simulation, checked, and the file they name.
//
// A checkpoint is written at most every --checkpoint-every seconds (and
// whenever the caller forces it: at the end, on a signal, before ending a
// job whose rank failed), always by atomic replacement, so the file on disk
// is at every moment a whole checkpoint. --resume FILE continues from FILE
// and, unless --checkpoint names another file, keeps checkpointing to it.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "checkpoint.h"

namespace CLI {
class App;
}

namespace flashbch {

struct CheckpointOptions {
  std::string file;
  std::string resume;
  std::string every;  // empty: the default
};

void addCheckpointOptions(CLI::App& command, CheckpointOptions& options);

class CheckpointFile {
 public:
  static constexpr double kDefaultEverySeconds = 60.0;

  // Throws UsageError naming the flag: --checkpoint-every that is not a
  // positive number of seconds, or given without a file to write; with
  // checkFiles (the rank that reads and writes the file), a --checkpoint in
  // a directory where no file can be created or a --resume file that does
  // not exist.
  explicit CheckpointFile(const CheckpointOptions& options, bool checkFiles = true);

  bool enabled() const { return !path_.empty(); }
  bool resuming() const { return !resume_.empty(); }
  const std::string& path() const { return path_; }
  double everySeconds() const { return everySeconds_; }

  // The --resume checkpoint (nothing when not resuming). Throws UsageError
  // for a file that cannot be read, is not a whole checkpoint, or was
  // written with other settings, naming the first field that differs.
  std::optional<Checkpoint> resume(const SettingsFingerprint& settings) const;

  // At least everySeconds() since the last write, or since construction.
  bool due() const;
  // Writes now. A failed write leaves the previous checkpoint in place and
  // returns the reason (empty on success), so the run can go on.
  std::string write(const Checkpoint& checkpoint);

 private:
  std::string path_, resume_;
  double everySeconds_ = kDefaultEverySeconds;
  std::chrono::steady_clock::time_point lastWrite_;
};

}  // namespace flashbch
