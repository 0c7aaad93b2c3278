// flashbch: the command line of the flash BCH library; see commandLine.cpp.
#include "commands.h"

int main(int argc, char** argv) { return flashbch::runCommandLine(argc, argv); }
