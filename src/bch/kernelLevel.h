// KernelLevel: which implementation of the codec's kernels (division by
// the generator, root search) runs on this processor.
//
// Scalar is the portable table-driven code and the only level off x86-64.
// Clmul uses PCLMULQDQ on 128-bit registers (one 64 x 64-bit product per
// instruction); VectorClmul uses VPCLMULQDQ on 512-bit registers (four
// products per instruction, AVX-512F/BW) and, for the root search,
// GF2P8AFFINEQB (GFNI). Every level gives bit-identical results. The level is detected once from CPUID (the compiler's
// __builtin_cpu_supports, which also checks that the operating system saves
// the wide registers); setting the environment variable QFB_FORCE_SCALAR to
// a non-empty value other than 0 forces Scalar, so that the portable twin
// can be tested and measured on a machine that has the instructions.
// Compiling with -DQFB_PORTABLE_ONLY leaves only Scalar.
#pragma once

enum class KernelLevel { Scalar, Clmul, VectorClmul };

// The best level this processor supports.
KernelLevel detectedKernelLevel();
// detectedKernelLevel(), or Scalar when QFB_FORCE_SCALAR is set; read once.
KernelLevel defaultKernelLevel();
const char* kernelLevelName(KernelLevel level);
