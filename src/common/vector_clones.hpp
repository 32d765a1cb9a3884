#pragma once
// Marks a function with hot, vectorisable loops to be compiled also for AVX2
// and chosen when the module loads, where the compiler supports function
// versions. The clones use the same rounded operations (-ffp-contract=off
// keeps the compiler from fusing a multiply and an add even where the target
// has FMA), so every version gives the same results. Loops mostly in double
// precision also get an AVX-512 version, which doubles their lanes.
#if defined(__GNUC__) && defined(__x86_64__) && !defined(__clang__) && defined(__linux__)
#define HOMODYNE_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#define HOMODYNE_WIDE_VECTOR_CLONES __attribute__((target_clones("arch=x86-64-v4", "avx2", "default")))
#else
#define HOMODYNE_VECTOR_CLONES
#define HOMODYNE_WIDE_VECTOR_CLONES
#endif
