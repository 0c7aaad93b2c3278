// The generator classes: the abstract Random_Number_Generator and its
// implementations MT_Rand_Gen (MT19937), RanrotB and Primitive_RNG.
#pragma once

#include "randgen/mtRandGen.h"
#include "randgen/randomNumberGenerator.h"
