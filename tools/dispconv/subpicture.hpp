// A sub-picture prepared through the library's own preparation kernels.
#pragma once

#include "picture.hpp"

namespace dispconv::tool {

// The four sub-picture planes at the frame's padded size: opacity (0..16) and Y with rows
// `stride` bytes apart, U and V (one sample per pixel pair, every row) stride / 2 apart.
struct SubPicture {
    int width = 0, height = 0, stride = 0;
    PaddedBuffer opacity, y, u, v;
};

// Where art goes on the frame: the frame's pixel (x, y) shows the art's pixel (art_x, art_y),
// and so on over width x height pixels; the rest of the art is cut off.
struct Placement {
    int x = 0, y = 0;
    int art_x = 0, art_y = 0;
    int width = 0, height = 0;
};
// Centred (on an even column: pixel pairs share their chroma); art larger than the frame is
// cut evenly on both sides.
Placement centre_art(int art_width, int art_height, int frame_width, int frame_height);
// The art's top-left corner at (x, y) inside the frame; what reaches past the frame is cut.
Placement place_art_at(int x, int y, int art_width, int art_height, int frame_width, int frame_height);

// The colour key used for transparent pixels of the RGB bitmap (B, G, R, 0 as a 32-bit word).
inline constexpr uint32_t subpicture_color_key = 0x00FF00FFu;

// Opacity level 0..16 for an 8-bit alpha, rounded.
inline int opacity_level(int alpha) { return (alpha * 16 + 127) / 255; }

// Builds the colour-keyed RGB32 bitmap and the opacity bitmap (level in blue) from the art where
// `at` puts it, then runs the preparation kernels over the whole frame area.
SubPicture prepare_subpicture(const RgbaPicture& art, const Geometry& geometry, const Placement& at);
// The art centred on the frame.
SubPicture prepare_subpicture(const RgbaPicture& art, const Geometry& geometry);

}  // namespace dispconv::tool
