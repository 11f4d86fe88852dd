// The NEON vocabulary: the vector vocabulary on 128-bit Advanced SIMD registers.
#pragma once

#include "simd/vector/vocabulary.hpp"

namespace dispconv::simd {
namespace {

struct Neon : VectorVocabulary<Vec<16>> {};

}  // namespace
}  // namespace dispconv::simd
