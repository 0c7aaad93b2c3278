// The BCH engine's view of packed bit strings; the one implementation lives
// in the toolkit.
#pragma once

#include "Tools/utilities/packedBits.h"
