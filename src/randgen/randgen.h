// The generator classes: the abstract Random_Number_Generator and its
// implementations MT_Rand_Gen (MT19937), RanrotB (RANROT type B) and
// Primitive_RNG (a 32-bit linear feedback shift register).
#pragma once

#include "randgen/mtRandGen.h"
#include "randgen/primitiveRng.h"
#include "randgen/randomNumberGenerator.h"
#include "randgen/ranrotB.h"
