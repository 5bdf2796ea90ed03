/// Loops over samples as the machine at hand runs them fastest.
#pragma once

/// Before a function with such a loop (no template, nothing inline): it is compiled twice, and the program takes the
/// one that the processor can run. Swapping the bytes of samples is ten times as fast so. Its file wants -O3.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
#define KYR_VECTORIZED [[gnu::target_clones("avx2", "default")]]
#else
#define KYR_VECTORIZED
#endif
