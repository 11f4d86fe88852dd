// Included first by every per-instruction-set translation unit: CMake compiles such a unit
// once per instruction set with DISPCONV_ISA set to its name and that set's target flags.
#pragma once

#include "core/kernel_table.hpp"

#if !defined(DISPCONV_ISA)
#error "DISPCONV_ISA must name the instruction set of this translation unit"
#endif

#define DISPCONV_JOIN2(a, b) a##_##b
#define DISPCONV_JOIN(a, b) DISPCONV_JOIN2(a, b)
// family_kernels_<isa>: the function each unit defines for its family and instruction set.
#define DISPCONV_ISA_FUNCTION(family) DISPCONV_JOIN(family, DISPCONV_ISA)

// The unit's arithmetic vocabulary, chosen by the instruction set it is compiled for.
#include "simd/sets.hpp"
namespace dispconv { namespace {
using Vocab = simd::UnitVocabulary;
} }  // namespace dispconv
