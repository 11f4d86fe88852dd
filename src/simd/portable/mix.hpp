// Portable vocabulary operations used only by the mix kernels.
#pragma once

#include "simd/portable/core.hpp"

namespace dispconv::simd {
namespace {

struct PortableMix {};

}  // namespace
}  // namespace dispconv::simd
