// SSE2 operations of the stretch kernels; anything not replaced here is the portable one.
#pragma once

#include "simd/portable/stretch.hpp"
#include "simd/x86/sse2_ops.hpp"

namespace dispconv::simd {
namespace {

struct Sse2Stretch : PortableStretch {};

}  // namespace
}  // namespace dispconv::simd
