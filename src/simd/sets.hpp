// Every instruction set's vocabulary, one per unit: the portable reference, or the vector
// vocabulary at the set's widest register. A set that gains from its own version of a shared
// composite gets a struct of its own here, `struct Avx2 : VectorVocabulary<Vec<32>>, Avx2Overrides
// { using Avx2Overrides::name; };`, naming each composite it replaces (a listed name the
// overrides lack fails the build). None does today: each shared composite measured as fast as
// the set-specific code it replaced; a set's own instructions come as optional primitives
// instead (NEON's structure stores, doubling multiply and widening byte multiplies, x86's
// byte-pair multiply-add and unsigned high multiply), which the shared composites use where a
// set has them. Whole kernels that a set runs no faster than the set below it fall back to
// that set's version in the kernel tables (core/dispatch.cpp lists them).
#pragma once

#include "simd/portable.hpp"

#if !defined(DISPCONV_UNIT_PORTABLE)
#include "simd/vector/core.hpp"
#include "simd/vector/load.hpp"
#include "simd/vector/mix.hpp"
#include "simd/vector/stretch.hpp"
#include "simd/vector/subpicture.hpp"

namespace dispconv::simd { namespace {

// Every family's operations at the width of V.
template <class V>
struct VectorVocabulary : VectorCore<V>, VectorLoad<V>, VectorSubpicture<V>, VectorMix<V>, VectorStretch<V> {};

} }  // namespace dispconv::simd
#endif

namespace dispconv::simd { namespace {

#if defined(DISPCONV_UNIT_PORTABLE)
using UnitVocabulary = Portable;
#elif defined(DISPCONV_UNIT_SSE2) || defined(DISPCONV_UNIT_NEON)
using UnitVocabulary = VectorVocabulary<Vec<16>>;
#elif defined(DISPCONV_UNIT_AVX2)
using UnitVocabulary = VectorVocabulary<Vec<32>>;
#elif defined(DISPCONV_UNIT_AVX512)
using UnitVocabulary = VectorVocabulary<Vec<64>>;
#else
#error "no vocabulary for this instruction set"
#endif

} }  // namespace dispconv::simd
