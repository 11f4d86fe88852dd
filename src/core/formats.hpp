// Destination pixel formats of the RGB-writing kernels, as template tags.
#pragma once

namespace dispconv { namespace {

struct Rgb32 {
    static constexpr int bytes_per_pixel = 4;  // B, G, R, 0
};
struct Rgb24 {
    static constexpr int bytes_per_pixel = 3;  // B, G, R
};
struct Rgb16 {
    static constexpr int bytes_per_pixel = 2;  // one little-endian word, layout per call
};

} }  // namespace dispconv
