// The AVX-512 vocabulary (AVX-512BW with VL): the vector vocabulary on 512-bit registers.
#pragma once

#include "simd/vector/vocabulary.hpp"

namespace dispconv::simd {
namespace {

// The composites this set replaces with its own, each as `using Overrides::name;` (a listed
// name that the overrides lack fails the build). None: the shared ones are as fast here.
struct Avx512 : VectorVocabulary<Vec<64>> {};

}  // namespace
}  // namespace dispconv::simd
