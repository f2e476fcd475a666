#pragma once

/// Before a function: it is compiled for several instruction sets, and the machine's best is chosen
/// when the program is loaded. Only for functions whose result does not depend on it: whole
/// numbers, or floating point in an order that is written down (contraction is off everywhere).
///
/// Sanitizers run code before their own start-up when a function is chosen at load time, so they
/// get one version; and so does clang, which builds the fuzzers.
#if defined(__x86_64__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define STAB_CLONES __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define STAB_CLONES
#endif
