// A vector vocabulary: every family's operations at the width of V. An instruction set is
// this at its widest vector, plus the overrides its own header lists.
#pragma once

#include "simd/vector/core.hpp"
#include "simd/vector/load.hpp"
#include "simd/vector/mix.hpp"
#include "simd/vector/stretch.hpp"
#include "simd/vector/subpicture.hpp"

namespace dispconv::simd {
namespace {

template <class V, class Self>
struct VectorVocabulary : VectorCore<V>, VectorLoad<V>, VectorStretch<V>, VectorSubpicture<V>, VectorMix<V> {};

}  // namespace
}  // namespace dispconv::simd
