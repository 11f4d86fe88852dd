// The portable vocabulary: the reference that every instruction-set vocabulary must equal.
#pragma once

#include "simd/portable/core.hpp"
#include "simd/portable/load.hpp"
#include "simd/portable/mix.hpp"
#include "simd/portable/stretch.hpp"
#include "simd/portable/subpicture.hpp"

namespace dispconv::simd { namespace {

struct Portable : PortableCore,
                  PortableLoad,
                  LoadRows<Portable>,
                  PortableStretch,
                  PortableSubpicture,
                  PortableMix {};

} }  // namespace dispconv::simd
