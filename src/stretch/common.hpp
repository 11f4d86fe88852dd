// Pieces shared by the stretch walks: which source rows make a destination row, and the row
// schedules of the double-height stretch.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/walk.hpp"

namespace dispconv::kernels { namespace {

// One plane's contribution to a destination row: a copy of source row `first` (1 tap), the
// rounded average of rows first, first + 1 (2 taps; the edge-directed stretch interpolates
// between them instead), or the four-row filter over rows first .. first + 3 (4 taps).
struct Taps {
    int count;
    int32_t first;
};
constexpr Taps row_of(int32_t r) { return {1, r}; }
constexpr Taps average_of(int32_t r) { return {2, r}; }        // between r and r + 1
constexpr Taps filter_of(int32_t r) { return {4, r - 1}; }     // between r and r + 1

// A plane walked by rows `step` bytes apart.
struct PlaneRows {
    const uint8_t* base;
    ptrdiff_t step;
    const uint8_t* row(int32_t r) const { return base + r * step; }
};

// n samples at x of the row (or rows) that `taps` names.
template <class V>
void vertical(const PlaneRows& plane, Taps taps, ptrdiff_t x, uint8_t* out, int n) {
    const uint8_t* r0 = plane.row(taps.first) + x;
    if (taps.count == 1) return V::copy(r0, out, n);
    const uint8_t* r1 = plane.row(taps.first + 1) + x;
    if (taps.count == 2) return V::average(r0, r1, out, n);
    V::filter4(r0, r1, plane.row(taps.first + 2) + x, plane.row(taps.first + 3) + x, out, n);
}

// Gain and offset of one channel.
struct Channel {
    int16_t gain;
    int16_t offset;
};
inline Channel luma_channel(const AdjustConstants& a) { return {a.luma_gain, a.luma_offset}; }
inline Channel u_channel(const AdjustConstants& a) { return {a.chroma_gain, a.u_offset}; }
inline Channel v_channel(const AdjustConstants& a) { return {a.chroma_gain, a.v_offset}; }

// The chroma row distance of the planar stretchers: src_stride halved as an unsigned number.
inline ptrdiff_t chroma_pitch(int32_t src_stride) {
    return ptrdiff_t(static_cast<uint32_t>(src_stride) >> 1);
}

// The four destination rows of source pair (2k, 2k + 1) with chroma row k: each luma row,
// then `luma_between` it and the row below; chroma row k, then `chroma_between` k and k + 1.
template <class Emit>
void pair_rows(Emit& emit, int32_t k, Taps (*luma_between)(int32_t), Taps (*chroma_between)(int32_t)) {
    emit(4 * k, row_of(2 * k), row_of(k));
    emit(4 * k + 1, luma_between(2 * k), row_of(k));
    emit(4 * k + 2, row_of(2 * k + 1), chroma_between(k));
    emit(4 * k + 3, luma_between(2 * k + 1), chroma_between(k));
}

// The last pair has no row below it.
template <class Emit>
void last_pair_rows(Emit& emit, int32_t k) {
    emit(4 * k, row_of(2 * k), row_of(k));
    emit(4 * k + 1, average_of(2 * k), row_of(k));
    emit(4 * k + 2, row_of(2 * k + 1), row_of(k));
    // Deliberate: the bottom row duplicates the one above it.
    emit(4 * k + 3, row_of(2 * k + 1), row_of(k));
}

// The double-height schedule: each source pair (2k, 2k + 1) with chroma row k gives four
// destination rows; `emit(row, luma, chroma)` makes one.
template <class Emit>
void double_height_rows(int32_t pairs, Emit&& emit) {
    int32_t k = 0;
    for (; k + 1 < pairs; ++k) pair_rows(emit, k, average_of, average_of);
    last_pair_rows(emit, k);
}

// The same schedule with the four-row filter wherever two source rows exist on each side:
// a top pair, `interior` pairs (at least one), a next-to-last and a last pair.
template <class Emit>
void filtered_double_height_rows(int32_t interior, Emit&& emit) {
    pair_rows(emit, 0, average_of, average_of);
    int32_t k = 1;
    for (; k <= interior; ++k) pair_rows(emit, k, filter_of, filter_of);
    // Next-to-last pair: luma still has two rows below, chroma only one.
    pair_rows(emit, k, filter_of, average_of);
    last_pair_rows(emit, k + 1);
}

} }  // namespace dispconv::kernels
