// AVX2 operations of the mix kernels; anything not replaced here is the SSE2 one.
#pragma once

#include <immintrin.h>

#include "simd/x86/sse2_mix.hpp"

namespace dispconv::simd {
namespace {

struct Avx2Mix : Sse2Mix {};

}  // namespace
}  // namespace dispconv::simd
