// Requests a hostile user might make of the command line.
#include <sys/stat.h>

#include <string>

#include "flashbchRunner.h"

namespace {

TEST(CommandErrors, RefusedWithTheCulpritNamed) {
  qfbtest::ScratchDir dir;
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  struct Case {
    std::string args, message;
  } cases[] = {
      {"frobnicate --t 3",
       "flashbch: unknown command 'frobnicate' (the commands are simulate, encode, decode, info, uber)"},
      // A FIFO without a writer would block the open, /dev/zero never ends.
      {"encode --layout 1x8 --t 1 pipe -o image.bin",
       "flashbch encode: pipe: not a regular file; the input must be a regular file"},
      {"decode --layout 1x8 --t 1 /dev/zero -o data.bin",
       "flashbch decode: /dev/zero: not a regular file; the input must be a regular file"},
  };
  for (const Case& c : cases) flashbchtest::expectRefused(c.args, c.message);
}

}  // namespace
