// The AVX2 vocabulary: the vector vocabulary on 256-bit registers.
#pragma once

#include "simd/x86/vec.hpp"
#include "simd/vector/vocabulary.hpp"

namespace dispconv::simd {
namespace {

struct Avx2 : VectorVocabulary<Vec<32>> {};

}  // namespace
}  // namespace dispconv::simd
