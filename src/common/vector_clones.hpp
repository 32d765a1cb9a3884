#pragma once
// Marks a function with hot, vectorisable loops to be compiled also for AVX2
// and chosen when the module loads, where the compiler supports function
// versions. The clones use the same rounded operations (AVX2 alone brings no
// fused multiply-add), so every version gives the same results.
#if defined(__GNUC__) && defined(__x86_64__) && !defined(__clang__) && defined(__linux__)
#define HOMODYNE_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define HOMODYNE_VECTOR_CLONES
#endif
