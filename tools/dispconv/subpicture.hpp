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

// Where art of the given size goes on the frame: centred (on an even column), its bottom a
// sixteenth of the frame height above the frame's bottom; art larger than the frame is cut at
// the right and bottom.
struct Placement {
    int x = 0, y = 0;
};
Placement place_art(int art_width, int art_height, int frame_width, int frame_height);

// The colour key used for transparent pixels of the RGB bitmap (B, G, R, 0 as a 32-bit word).
inline constexpr uint32_t subpicture_color_key = 0x00FF00FFu;

// Opacity level 0..16 for an 8-bit alpha, rounded.
inline int opacity_level(int alpha) { return (alpha * 16 + 127) / 255; }

// Builds the colour-keyed RGB32 bitmap and the opacity bitmap (level in blue) from the art,
// then runs the preparation kernels over the whole frame area.
SubPicture prepare_subpicture(const RgbaPicture& art, const Geometry& geometry);

}  // namespace dispconv::tool
