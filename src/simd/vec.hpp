// The vector type and primitives of the unit's processor.
#pragma once

#if defined(__x86_64__) || defined(__i386__)
#include "simd/x86/vec.hpp"
#elif defined(__aarch64__)
#include "simd/neon/vec.hpp"
#else
#error "no vector primitives for this processor"
#endif
