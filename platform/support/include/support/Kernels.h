#pragma once

#include <span>
#include <string>

/// The ways in which arithmetic kernels are computed; all of them give the same bits. Chosen once
/// for the process: the best that the machine has, or what the environment variable
/// STABILIZE_KERNEL names.
struct SKernel {
  const char* name;  ///< "avx512", "avx2", "plain": any machine; "scalar": the definition
  bool (*usable)();  ///< on this machine
};

constexpr int UNKNOWN_KERNEL = -8509;

/// All of them, best first. The last one is "scalar".
std::span<const SKernel> AllKernels();

/// The kernel of that name; an empty name means the best. Null, with UNKNOWN_KERNEL in `theError`,
/// when no usable one is called so.
const SKernel* FindKernel(const std::string& name);

/// The choice of this process. Null and `theError` as FindKernel: a name that means nothing is
/// never passed over in silence. THREAD: any.
const SKernel* TheKernel();
