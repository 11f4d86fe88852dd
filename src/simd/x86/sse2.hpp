// The SSE2 vocabulary: the vector vocabulary on 128-bit registers.
#pragma once

#include "simd/x86/vec.hpp"
#include "simd/vector/vocabulary.hpp"

namespace dispconv::simd {
namespace {

struct Sse2 : VectorVocabulary<Vec<16>> {};

}  // namespace
}  // namespace dispconv::simd
