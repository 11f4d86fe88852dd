// The decoded frame as the kernels read it, padded to the kernels' blocks.
#pragma once

#include "picture.hpp"

namespace dispconv::tool {

// Planar 4:2:0 planes: Y rows `stride` bytes apart, U and V rows stride / 2 apart.
struct PlanarView {
    uint8_t *y = nullptr, *u = nullptr, *v = nullptr;
    int width = 0, height = 0, stride = 0;
};

// A frame padded to Geometry's size. A 4:2:0 frame is three planes back to back (Y, U, V)
// with rows padded_width (chroma padded_width / 2) bytes apart and no gaps, which is what the
// kernels that read a plane as one run of rows need; a 4:2:2 frame is packed YUY2 with rows
// 2 * padded_width bytes apart. The padding repeats the last column and row, so that the
// kernels that interpolate across the picture's edge see the edge and not black.
class SourceFrame {
public:
    SourceFrame(const Geometry& geometry, Chroma chroma);
    void load(const PlanarPicture& picture);

    Chroma chroma() const { return chroma_; }
    int width() const { return width_; }
    int height() const { return height_; }
    PlanarView planar() const;
    uint8_t* packed() const { return const_cast<uint8_t*>(buffer_.data()); }

private:
    Chroma chroma_;
    int width_, height_;
    PaddedBuffer buffer_;
};

}  // namespace dispconv::tool
