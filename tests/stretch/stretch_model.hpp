// Test-side arithmetic and picture helpers for the stretch suites, written from the
// definitions of the operations (not from the kernels' walks).
#pragma once

#include <algorithm>
#include <vector>

#include "support/test_support.hpp"

namespace dispconv::test {

using Row = std::vector<uint8_t>;

// (-1, 5, 5, -1) / 8, truncated toward minus infinity, clamped.
inline uint8_t filt(int a, int b, int c, int d) { return clamp255((5 * b + 5 * c - a - d) >> 3); }

inline Row avg_rows(const Row& a, const Row& b) {
    Row r(a.size());
    for (size_t i = 0; i < a.size(); ++i) r[i] = avg(a[i], b[i]);
    return r;
}
inline Row adj_row(Row r, int gain, int offset) {
    for (auto& x : r) x = adj(x, gain, offset);
    return r;
}
// Horizontal doubling; the last sample is its own right neighbour unless `next` is given.
inline Row doubled(const Row& s, int next = -1) {
    Row d(2 * s.size());
    for (size_t i = 0; i < s.size(); ++i) {
        const int right = i + 1 < s.size() ? s[i + 1] : next >= 0 ? next : s[i];
        d[2 * i] = s[i];
        d[2 * i + 1] = avg(s[i], right);
    }
    return d;
}

// A random plane of w x h samples with `pitch` bytes per row (and canary margins).
struct Plane {
    int w, h, pitch;
    Buffer buf;
    Plane(int w_, int h_, int pitch_, uint32_t seed, int extra_rows = 1)
        : w(w_), h(h_), pitch(pitch_), buf(random_buffer(size_t(pitch_) * (h_ + extra_rows), seed)) {}
    uint8_t* data() { return buf.data(); }
    const uint8_t* data() const { return buf.data(); }
    Row row(int r, int n = -1) const {
        const uint8_t* p = buf.data() + size_t(r) * pitch;
        return Row(p, p + (n < 0 ? w : n));
    }
    void set_row(int r, const Row& values) { std::copy(values.begin(), values.end(), buf.data() + size_t(r) * pitch); }
};

// A planar 4:2:0 frame with padded rows.
struct Frame {
    int w, h;
    Plane y, u, v;
    Frame(int w_, int h_, uint32_t seed)
        : w(w_), h(h_), y(w_, h_, w_ + 16, seed), u(w_ / 2, h_ / 2, (w_ + 16) / 2, seed + 1),
          v(w_ / 2, h_ / 2, (w_ + 16) / 2, seed + 2) {}
};

// The frame with every plane adjusted as the settings say (chroma planes: U and V offsets).
inline Frame adjusted(Frame f, const ajust_contrast_info& a) {
    for (int r = 0; r < f.h; ++r) f.y.set_row(r, adj_row(f.y.row(r), a.luma_gain, a.luma_offset));
    for (int r = 0; r < f.h / 2; ++r) {
        f.u.set_row(r, adj_row(f.u.row(r), a.chroma_gain, a.u_offset));
        f.v.set_row(r, adj_row(f.v.row(r), a.chroma_gain, a.v_offset));
    }
    return f;
}

// Interleaves luma, U and V runs as Y0 U Y1 V.
inline Row yuy2(const Row& y, const Row& u, const Row& v) {
    Row d(2 * y.size());
    for (size_t p = 0; p < y.size() / 2; ++p) {
        d[4 * p] = y[2 * p];
        d[4 * p + 1] = u[p];
        d[4 * p + 2] = y[2 * p + 1];
        d[4 * p + 3] = v[p];
    }
    return d;
}

inline void put_row(Buffer& b, ptrdiff_t offset, const Row& r) {
    std::copy(r.begin(), r.end(), b.data() + offset);
}

// A bottom-up call writes the same rows in the opposite order.
inline ::testing::AssertionResult rows_reversed(const Buffer& want, const Buffer& up, size_t stride, int rows) {
    for (int r = 0; r < rows; ++r)
        if (!std::equal(want.data() + r * stride, want.data() + (r + 1) * stride, up.data() + (rows - 1 - r) * stride))
            return ::testing::AssertionFailure() << "bottom-up row " << r;
    return ::testing::AssertionSuccess();
}

// Which source rows make a destination row: c = copy of row n, a = average of rows n and
// n + 1, f = four-row filter over rows n .. n + 3.
struct Tap {
    char kind;
    int first;
};
struct RowRecipe {
    Tap luma, chroma;
};

// Worked out by hand from the row tables.
inline const std::vector<RowRecipe> plain_h8 = {
    {{'c', 0}, {'c', 0}}, {{'a', 0}, {'c', 0}}, {{'c', 1}, {'a', 0}}, {{'a', 1}, {'a', 0}},
    {{'c', 2}, {'c', 1}}, {{'a', 2}, {'c', 1}}, {{'c', 3}, {'a', 1}}, {{'a', 3}, {'a', 1}},
    {{'c', 4}, {'c', 2}}, {{'a', 4}, {'c', 2}}, {{'c', 5}, {'a', 2}}, {{'a', 5}, {'a', 2}},
    {{'c', 6}, {'c', 3}}, {{'a', 6}, {'c', 3}}, {{'c', 7}, {'c', 3}}, {{'c', 7}, {'c', 3}},
};
}  // namespace dispconv::test
