#pragma once
#include <cstddef>
#include <cstdlib>

// The host's allocation functions; they are the C library's, so memory from
// them may be released with free() and vice versa.
inline void* mcmalloc(size_t n) { return std::malloc(n); }
inline void* mcrealloc(void* p, size_t n) { return std::realloc(p, n); }
inline void mcfree(void* p) { std::free(p); }
