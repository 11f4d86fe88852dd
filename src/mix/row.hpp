// The samples under one row of a run of mix blocks, as the walks hand them to a vocabulary.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dispconv {
namespace {

// Frame luma and chroma, sub-picture alpha, luma and chroma (the chroma runs are half as long
// as the luma runs). Where a `below` pointer is set, that frame plane is read as the rounded
// average of its row and the row at `below`.
struct MixRow {
    const uint8_t* frame_y;
    const uint8_t* frame_u;
    const uint8_t* frame_v;
    const uint8_t* alpha;
    const uint8_t* sub_y;
    const uint8_t* sub_u;
    const uint8_t* sub_v;
    const uint8_t* frame_y_below = nullptr;
    const uint8_t* frame_u_below = nullptr;
    const uint8_t* frame_v_below = nullptr;

    // The same row `pixels` further right.
    MixRow advanced(ptrdiff_t pixels) const {
        const ptrdiff_t half = pixels / 2;
        return {frame_y + pixels,
                frame_u + half,
                frame_v + half,
                alpha + pixels,
                sub_y + pixels,
                sub_u + half,
                sub_v + half,
                frame_y_below ? frame_y_below + pixels : nullptr,
                frame_u_below ? frame_u_below + half : nullptr,
                frame_v_below ? frame_v_below + half : nullptr};
    }
};

}  // namespace
}  // namespace dispconv
