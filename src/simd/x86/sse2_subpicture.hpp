// SSE2 operations of the subpicture kernels; anything not replaced here is the portable one.
#pragma once

#include "simd/portable/subpicture.hpp"
#include "simd/x86/sse2_ops.hpp"

namespace dispconv::simd {
namespace {

struct Sse2Subpicture : PortableSubpicture {};

}  // namespace
}  // namespace dispconv::simd
