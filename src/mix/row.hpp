// The samples under one row of a run of mix blocks, as the walks hand them to a vocabulary.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dispconv { namespace {

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

    // Every plane moved on: frame luma by `frame`, frame chroma by `frame_chroma`, sub-picture
    // alpha and luma by `sub`, sub-picture chroma by `sub_chroma` bytes.
    MixRow moved(ptrdiff_t frame, ptrdiff_t frame_chroma, ptrdiff_t sub, ptrdiff_t sub_chroma) const {
        return {frame_y + frame,
                frame_u + frame_chroma,
                frame_v + frame_chroma,
                alpha + sub,
                sub_y + sub,
                sub_u + sub_chroma,
                sub_v + sub_chroma,
                frame_y_below ? frame_y_below + frame : nullptr,
                frame_u_below ? frame_u_below + frame_chroma : nullptr,
                frame_v_below ? frame_v_below + frame_chroma : nullptr};
    }
    // The same row `pixels` further right.
    MixRow advanced(ptrdiff_t pixels) const { return moved(pixels, pixels / 2, pixels, pixels / 2); }
};

} }  // namespace dispconv
