// Builds the shared reference codec into this test executable.
#include "support/referenceBch.cpp"  // NOLINT(bugprone-suspicious-include)
