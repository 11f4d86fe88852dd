#include "frame.hpp"

#include <algorithm>

namespace dispconv::tool {
namespace {

// Copies a plane into a larger one, repeating its last column and last row into the rest.
void pad_plane(const uint8_t* src, int w, int h, uint8_t* dst, int dst_w, int dst_h) {
    for (int row = 0; row < dst_h; ++row) {
        const uint8_t* s = src + static_cast<size_t>(std::min(row, h - 1)) * w;
        uint8_t* d = dst + static_cast<size_t>(row) * dst_w;
        std::copy(s, s + w, d);
        std::fill(d + w, d + dst_w, s[w - 1]);
    }
}

}  // namespace

SourceFrame::SourceFrame(const Geometry& geometry, Chroma chroma)
    : chroma_(chroma), width_(geometry.padded_width), height_(geometry.padded_height) {
    const size_t luma = static_cast<size_t>(width_) * height_;
    buffer_ = chroma == Chroma::c420 ? PaddedBuffer(luma + luma / 2, static_cast<size_t>(width_))
                                     : PaddedBuffer(2 * luma, 2 * static_cast<size_t>(width_));
}

PlanarView SourceFrame::planar() const {
    PlanarView view;
    view.y = packed();
    view.u = view.y + static_cast<size_t>(width_) * height_;
    view.v = view.u + static_cast<size_t>(width_ / 2) * (height_ / 2);
    view.width = width_;
    view.height = height_;
    view.stride = width_;
    return view;
}

void SourceFrame::load(const PlanarPicture& picture) {
    const int cw = picture.chroma_width(), ch = picture.chroma_height();
    if (chroma_ == Chroma::c420) {
        const PlanarView view = planar();
        pad_plane(picture.y.data(), picture.width, picture.height, view.y, width_, height_);
        pad_plane(picture.u.data(), cw, ch, view.u, width_ / 2, height_ / 2);
        pad_plane(picture.v.data(), cw, ch, view.v, width_ / 2, height_ / 2);
        return;
    }
    for (int row = 0; row < height_; ++row) {
        const int r = std::min(row, picture.height - 1);
        uint8_t* d = packed() + static_cast<size_t>(row) * 2 * width_;
        for (int x = 0; x < width_; x += 2, d += 4) {
            const int x0 = std::min(x, picture.width - 1), x1 = std::min(x + 1, picture.width - 1);
            const int c = std::min(x / 2, cw - 1);
            d[0] = picture.y[static_cast<size_t>(r) * picture.width + x0];
            d[1] = picture.u[static_cast<size_t>(r) * cw + c];
            d[2] = picture.y[static_cast<size_t>(r) * picture.width + x1];
            d[3] = picture.v[static_cast<size_t>(r) * cw + c];
        }
    }
}

}  // namespace dispconv::tool
