// Source frames and the simple colour facts the frame-loading tests check against.
#pragma once

#include "support/test_support.hpp"

namespace dispconv::test {

// A random planar YV12 frame: Y pitch `stride`, chroma pitch stride / 2, with one spare row
// pair and a pitch of room below so that odd heights and block overruns stay inside.
struct PlanarFrame {
    int width, height, stride;
    Buffer y, u, v;
    PlanarFrame(int w, int h, int s, uint32_t seed)
        : width(w), height(h), stride(s),
          y(random_buffer(size_t(s) * (h + 3), seed)),
          u(random_buffer(size_t(s / 2) * (h / 2 + 3), seed + 1)),
          v(random_buffer(size_t(s / 2) * (h / 2 + 3), seed + 2)) {}
    uint8_t Y(int row, int x) const { return y[size_t(row) * stride + x]; }
    uint8_t U(int crow, int x) const { return u[size_t(crow) * (stride / 2) + x]; }
    uint8_t V(int crow, int x) const { return v[size_t(crow) * (stride / 2) + x]; }
};

// The same samples as packed YUY2 (row r takes chroma row r / 2), pitch 2 * stride bytes.
inline Buffer packed_from_planar(const PlanarFrame& f) {
    Buffer out(size_t(2 * f.stride) * (f.height + 3));
    for (int r = 0; r < f.height + 2; ++r)
        for (int x = 0; x < f.stride; x += 2) {
            uint8_t* p = out.data() + size_t(r) * 2 * f.stride + 2 * x;
            p[0] = f.Y(r, x), p[1] = f.U(r / 2, x / 2), p[2] = f.Y(r, x + 1), p[3] = f.V(r / 2, x / 2);
        }
    return out;
}

// Colours worked out by hand from the fixed-point conversion (R, G, B).
struct ColourCase {
    uint8_t y, u, v;
    uint8_t r, g, b;
};
inline constexpr ColourCase colour_cases[] = {
    {16, 128, 128, 0, 0, 0},        {235, 128, 128, 254, 254, 254},  // video-range white is 254
    {255, 128, 128, 255, 255, 255}, {0, 128, 128, 0, 0, 0},
    {81, 90, 240, 253, 0, 0},       {145, 54, 34, 0, 255, 0},
    {41, 240, 110, 0, 1, 255},      {100, 100, 200, 211, 50, 40},
};

}  // namespace dispconv::test
