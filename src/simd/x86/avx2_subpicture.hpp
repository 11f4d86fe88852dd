// AVX2 operations of the subpicture kernels; anything not replaced here is the SSE2 one.
#pragma once

#include <immintrin.h>

#include "simd/x86/sse2_subpicture.hpp"

namespace dispconv::simd {
namespace {

struct Avx2Subpicture : Sse2Subpicture {};

}  // namespace
}  // namespace dispconv::simd
