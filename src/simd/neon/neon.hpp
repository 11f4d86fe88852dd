// The NEON vocabulary: the vector vocabulary on 128-bit Advanced SIMD registers.
#pragma once

#include "simd/vector/vocabulary.hpp"

namespace dispconv::simd {
namespace {

// The composites this set replaces with its own, each as `using Overrides::name;` (a listed
// name that the overrides lack fails the build). None: the shared ones are as fast here.
struct Neon : VectorVocabulary<Vec<16>> {};

}  // namespace
}  // namespace dispconv::simd
