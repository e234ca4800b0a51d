// multiversion.h - a second compilation of hot loops.
#pragma once

// Debian compiles for plain x86-64; a function marked so is compiled a second time for processors with AVX2. The
// operations are the same, and so are the results. (The resolvers of such functions run before a sanitizer is ready.)
#if defined(__x86_64__) && !defined(BRISEL_SANITIZED)
#define BRISEL_AVX2_CLONE [[gnu::target_clones("avx2", "default")]]
#else
#define BRISEL_AVX2_CLONE
#endif
