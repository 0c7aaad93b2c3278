// KernelLevel: which implementation of the codec's kernels (division by
// the generator, root search) runs on this processor.
//
// Scalar is the portable table-driven code and the only level off x86-64.
// Clmul uses PCLMULQDQ on 128-bit registers (one 64 x 64-bit product per
// instruction); VectorClmul uses VPCLMULQDQ on 512-bit registers (four
// products per instruction, AVX-512F/BW) and, for the root search,
// GF2P8AFFINEQB (GFNI). Every level gives bit-identical results.
//
// The level is detected once from CPUID (the compiler's
// __builtin_cpu_supports, which also checks that the operating system saves
// the wide registers). Two environment variables lower it, so that every
// twin can be tested and measured on a machine that has all of them:
// QFB_FORCE_SCALAR set to a non-empty value other than 0 forces Scalar, and
// QFB_KERNEL_LEVEL=scalar|pclmulqdq|vpclmulqdq caps the level at the one
// named (a level the processor lacks is never chosen). Compiling with
// -DQFB_PORTABLE_ONLY leaves only Scalar.
#pragma once

enum class KernelLevel { Scalar, Clmul, VectorClmul };

// The best level this processor supports.
KernelLevel detectedKernelLevel();
// detectedKernelLevel() lowered by the environment (see above); read once.
KernelLevel defaultKernelLevel();
const char* kernelLevelName(KernelLevel level);
// The level kernelLevelName() calls name; false for any other name.
bool kernelLevelFromName(const char* name, KernelLevel& level);
