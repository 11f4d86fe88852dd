// The AVX-512 vocabulary (AVX-512BW with VL): the vector vocabulary on 512-bit registers.
#pragma once

#include "simd/vector/vocabulary.hpp"

namespace dispconv::simd {
namespace {

struct Avx512 : VectorVocabulary<Vec<64>> {};

}  // namespace
}  // namespace dispconv::simd
