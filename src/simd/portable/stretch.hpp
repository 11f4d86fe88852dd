// Portable vocabulary operations used only by the stretch kernels.
#pragma once

#include "simd/portable/core.hpp"

namespace dispconv::simd {
namespace {

struct PortableStretch {};

}  // namespace
}  // namespace dispconv::simd
