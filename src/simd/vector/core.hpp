// Run operations shared by every family, on vectors of any width.
#pragma once

#include "simd/vec.hpp"
#include "simd/x86/sse2_load.hpp"
#if defined(__AVX2__)
#include "simd/x86/avx2_load.hpp"
#endif

namespace dispconv::simd {
namespace {

template <class V>
struct VectorCore : Sse2Core {};

}  // namespace
}  // namespace dispconv::simd
