// AVX2 operations of the stretch kernels; anything not replaced here is the SSE2 one.
#pragma once

#include <immintrin.h>

#include "simd/x86/sse2_stretch.hpp"

namespace dispconv::simd {
namespace {

struct Avx2Stretch : Sse2Stretch {};

}  // namespace
}  // namespace dispconv::simd
