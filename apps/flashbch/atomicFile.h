// Replacing a file so that a reader (or a crash) only ever sees the old
// content or the new, never a mixture or a torn end: the content goes to a
// temporary file in the target's own directory (rename is atomic only within
// one file system), is flushed to the disk, and is renamed over the target.
// Until the rename the old file is untouched.
#pragma once

#include <string>

namespace flashbch {

// Throws std::runtime_error with the system's reason when any step fails;
// the temporary file is then removed.
void writeFileAtomically(const std::string& path, const std::string& content);

// Throws std::runtime_error when no file can be created beside `path`.
void checkDirectoryWritable(const std::string& path);

}  // namespace flashbch
