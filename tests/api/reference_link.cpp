// Builds the shared reference codec and adapter into this test executable.
#include "support/referenceBch.cpp"       // NOLINT(bugprone-suspicious-include)
#include "support/referenceFlashBch.cpp"  // NOLINT(bugprone-suspicious-include)
