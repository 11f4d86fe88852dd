// The vector type and primitives of the unit's processor.
#pragma once

// Composites over vectors are always inlined: one left out of line passes and returns its
// vectors through memory, which costs far more than its few instructions.
#define DISPCONV_VECTOR_INLINE [[gnu::always_inline]] inline

#if defined(__x86_64__) || defined(__i386__)
#include "simd/x86/vec.hpp"
#elif defined(__aarch64__)
#include "simd/neon/vec.hpp"
#else
#error "no vector primitives for this processor"
#endif
