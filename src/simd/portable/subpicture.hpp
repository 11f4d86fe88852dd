// Portable vocabulary operations used only by the subpicture kernels.
#pragma once

#include "simd/portable/core.hpp"

namespace dispconv::simd {
namespace {

struct PortableSubpicture {};

}  // namespace
}  // namespace dispconv::simd
