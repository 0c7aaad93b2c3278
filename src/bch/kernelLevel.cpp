// Processor feature detection for the codec kernels; see the header.
#include "bch/kernelLevel.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

KernelLevel detectedKernelLevel() {
#if defined(__x86_64__) && defined(__GNUC__) && !defined(QFB_PORTABLE_ONLY)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("vpclmulqdq") && __builtin_cpu_supports("gfni"))
    return KernelLevel::VectorClmul;
  if (__builtin_cpu_supports("pclmul")) return KernelLevel::Clmul;
#endif
  return KernelLevel::Scalar;
}

KernelLevel defaultKernelLevel() {
  static const KernelLevel level = [] {
    const char* force = std::getenv("QFB_FORCE_SCALAR");
    if (force != nullptr && *force != '\0' && std::strcmp(force, "0") != 0) return KernelLevel::Scalar;
    const KernelLevel detected = detectedKernelLevel();
    const char* cap = std::getenv("QFB_KERNEL_LEVEL");
    if (cap == nullptr || *cap == '\0') return detected;
    KernelLevel wanted;
    if (!kernelLevelFromName(cap, wanted)) {
      std::fprintf(stderr, "QFB_KERNEL_LEVEL=%s is not scalar, pclmulqdq or vpclmulqdq; ignored\n", cap);
      return detected;
    }
    return static_cast<int>(wanted) < static_cast<int>(detected) ? wanted : detected;
  }();
  return level;
}

const char* kernelLevelName(KernelLevel level) {
  switch (level) {
    case KernelLevel::Clmul: return "pclmulqdq";
    case KernelLevel::VectorClmul: return "vpclmulqdq";
    default: return "scalar";
  }
}

bool kernelLevelFromName(const char* name, KernelLevel& level) {
  for (KernelLevel l : {KernelLevel::Scalar, KernelLevel::Clmul, KernelLevel::VectorClmul})
    if (std::strcmp(name, kernelLevelName(l)) == 0) {
      level = l;
      return true;
    }
  return false;
}
