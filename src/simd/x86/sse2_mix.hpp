// SSE2 operations of the mix kernels; anything not replaced here is the portable one.
#pragma once

#include "simd/portable/mix.hpp"
#include "simd/x86/sse2_ops.hpp"

namespace dispconv::simd {
namespace {

struct Sse2Mix : PortableMix {};

}  // namespace
}  // namespace dispconv::simd
