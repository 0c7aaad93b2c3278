// Requests a hostile user might make of the command line.
#include <string>

#include "flashbchRunner.h"

namespace {

TEST(CommandErrors, RefusedWithTheCulpritNamed) {
  qfbtest::ScratchDir dir;
  struct Case {
    std::string args, message;
  } cases[] = {
      {"frobnicate --t 3",
       "flashbch: unknown command 'frobnicate' (the commands are simulate, encode, decode, info, uber)"},
  };
  for (const Case& c : cases) flashbchtest::expectRefused(c.args, c.message);
}

}  // namespace
