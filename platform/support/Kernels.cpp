#include "support/Kernels.h"

#include <cstdlib>

#include "support/ErrorReport.h"

namespace {

bool always() {
  return true;
}

#if defined(__x86_64__)

bool hasAvx2() {
  return __builtin_cpu_supports("avx2");
}

bool hasAvx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
}

#endif

constexpr SKernel kernels[] = {
#if defined(__x86_64__)
    {"avx512", &hasAvx512},
    {"avx2", &hasAvx2},
#endif
    {"plain", &always},
    {"scalar", &always},
};

const std::string& chosenName() {
  static const std::string name = [] {
    const char* value = std::getenv("STABILIZE_KERNEL");
    return std::string(value ? value : "");
  }();
  return name;
}

}  // namespace

std::span<const SKernel> AllKernels() {
  return kernels;
}

const SKernel* FindKernel(const std::string& name) {
  for (const SKernel& kernel : kernels)
    if ((name.empty() || name == kernel.name) && kernel.usable()) return &kernel;
  theError.set(UNKNOWN_KERNEL, "No kernel that this machine can use is called \"" + name +
                                   "\" (environment variable STABILIZE_KERNEL)");
  return nullptr;
}

const SKernel* TheKernel() {
  static const SKernel* const found = FindKernel(chosenName());
  if (found) return found;
  return FindKernel(chosenName());  // again, for the caller's thread to have the error
}
