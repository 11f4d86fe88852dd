// The AVX2 vocabulary: the vector vocabulary on 256-bit registers.
#pragma once

#include "simd/x86/vec.hpp"
#include "simd/vector/vocabulary.hpp"

namespace dispconv::simd {
namespace {

// The composites this set replaces with its own, each as `using Overrides::name;` (a listed
// name that the overrides lack fails the build). None: the shared ones are as fast here.
struct Avx2 : VectorVocabulary<Vec<32>> {};

}  // namespace
}  // namespace dispconv::simd
