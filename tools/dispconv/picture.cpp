#include "picture.hpp"

#include <algorithm>

namespace dispconv::tool {

void PlanarPicture::allocate(int w, int h, Chroma c) {
    width = w;
    height = h;
    chroma = c;
    y.assign(static_cast<size_t>(w) * h, 16);
    u.assign(static_cast<size_t>(chroma_width()) * chroma_height(), 128);
    v.assign(u.size(), 128);
}

PaddedBuffer::PaddedBuffer(size_t size, size_t row_bytes, uint8_t fill)
    : slack_(std::max<size_t>(4096, 4 * row_bytes)), size_(size) {
    storage_.assign(size + 2 * slack_, fill);
}

Geometry Geometry::for_size(int width, int height) {
    Geometry g;
    g.width = width;
    g.height = height;
    g.padded_width = std::max(round_up(width, 32), 64);
    g.padded_height = std::max(round_up(height, 4), 32);
    return g;
}

}  // namespace dispconv::tool
