// A vector vocabulary: every family's operations at the width of V. An instruction set is
// this at its widest vector, plus the overrides its own header lists.
#pragma once

#include "simd/vector/core.hpp"
#include "simd/vector/load.hpp"
#include "simd/vector/mix.hpp"
#include "simd/vector/subpicture.hpp"
// After the families still on their x86 headers, which name those headers' building blocks
// unqualified where the shared arithmetic has the same names.
#include "simd/vector/stretch.hpp"

namespace dispconv::simd {
namespace {

template <class V>
struct VectorVocabulary : VectorCore<V>, VectorLoad<V>, VectorStretch<V>, VectorSubpicture<V>, VectorMix<V> {};

}  // namespace
}  // namespace dispconv::simd
