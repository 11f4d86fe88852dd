// Row operations of the frame-loading kernels, on vectors of any width.
#pragma once

#include "simd/vector/core.hpp"

namespace dispconv::simd {
namespace {

template <class V, class Self>
struct VectorLoad;
template <class Self>
struct VectorLoad<Vec<16>, Self> : Sse2LoadPrimitives, Sse2LoadRows<Self> {};
#if defined(__AVX2__)
template <class Self>
struct VectorLoad<Vec<32>, Self> : Sse2LoadPrimitives, Avx2LoadRows<Self> {};
#endif

}  // namespace
}  // namespace dispconv::simd
