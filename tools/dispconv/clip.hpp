// The built-in test clip and its subtitle, for runs without an input file.
#pragma once

#include "picture.hpp"

namespace dispconv::tool {

inline constexpr int clip_default_width = 640;
inline constexpr int clip_default_height = 360;
inline constexpr int clip_default_frames = 24;

// Frame `index` of the clip: colour bars on top; a grey ramp, a hue sweep and a zone plate
// (fine detail up to the finest the grid holds) in the middle; at the bottom two diagonal
// edges of different slopes that move right by one pixel per frame. Each stretch and the
// edge-directed interpolation treat these differently, which is the point.
PlanarPicture make_clip_frame(int width, int height, int index);

// The built-in subtitle: white capitals on a half-transparent dark bar, centred a sixteenth of
// the frame's height above its bottom, in art of the frame's size.
RgbaPicture make_subtitle(int frame_width, int frame_height);

// BT.601 video-range RGB to YUV, rounded.
void rgb_to_yuv(int r, int g, int b, uint8_t& y, uint8_t& u, uint8_t& v);

}  // namespace dispconv::tool
