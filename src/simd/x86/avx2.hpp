// The AVX2 vocabulary: the vector vocabulary on 256-bit registers.
#pragma once

#include "simd/x86/vec.hpp"
#include "simd/vector/vocabulary.hpp"
#include "simd/x86/avx2_stretch_rgb.hpp"

namespace dispconv::simd {
namespace {

// The composites this set replaces with its own, each measured faster on AVX2 (a listed name
// that the overrides lack fails the build).
struct Avx2 : VectorVocabulary<Vec<32>>, Avx2StretchRgb {
    using Avx2StretchRgb::rgb_double_rows;
};

}  // namespace
}  // namespace dispconv::simd
