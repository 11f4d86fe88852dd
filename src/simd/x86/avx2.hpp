// The AVX2 vocabulary: the vector vocabulary on 256-bit registers.
#pragma once

#include "simd/x86/vec.hpp"
#include "simd/vector/vocabulary.hpp"
#include "simd/x86/avx2_stretch_rgb.hpp"

namespace dispconv::simd {
namespace {

// Overrides of the vector vocabulary, each measured faster on AVX2.
struct Avx2 : VectorVocabulary<Vec<32>>, Avx2StretchRgb {
    using Avx2StretchRgb::rgb_double_rows;
};

}  // namespace
}  // namespace dispconv::simd
