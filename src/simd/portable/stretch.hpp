// Portable vocabulary operations used only by the stretch kernels.
#pragma once

#include "core/adjust.hpp"
#include "simd/portable/core.hpp"

namespace dispconv::simd { namespace {

struct PortableStretch {
    // The four RGB rows of one source pair of the double-height stretch: luma rows top, avg(top,
    // bottom), bottom, avg(bottom, next) over chroma c0, c0, avg(c0, c1), avg(c0, c1), every
    // sample adjusted before it is averaged. The last pair passes next = bottom and c1 = c0,
    // which averages to the plain copies it needs. `pixels` is a multiple of 16.
    template <class Format>
    static void rgb_double_rows(const uint8_t* top, const uint8_t* bottom, const uint8_t* next,
                                const uint8_t* u0, const uint8_t* u1, const uint8_t* v0,
                                const uint8_t* v1, uint8_t* const dst[4], int pixels,
                                const AdjustConstants& a, const Rgb16Layout& layout) {
        constexpr int n = 16, bpp = Format::bytes_per_pixel;
        for (int i = 0; i < pixels; i += n) {
            uint8_t y[3][n], y_mid[n], u[2][n / 2], v[2][n / 2], u_mid[n / 2], v_mid[n / 2];
            PortableCore::adjust(top + i, y[0], n, a.luma_gain, a.luma_offset);
            PortableCore::adjust(bottom + i, y[1], n, a.luma_gain, a.luma_offset);
            PortableCore::adjust(next + i, y[2], n, a.luma_gain, a.luma_offset);
            PortableCore::adjust(u0 + i / 2, u[0], n / 2, a.chroma_gain, a.u_offset);
            PortableCore::adjust(u1 + i / 2, u[1], n / 2, a.chroma_gain, a.u_offset);
            PortableCore::adjust(v0 + i / 2, v[0], n / 2, a.chroma_gain, a.v_offset);
            PortableCore::adjust(v1 + i / 2, v[1], n / 2, a.chroma_gain, a.v_offset);
            PortableCore::average(u[0], u[1], u_mid, n / 2);
            PortableCore::average(v[0], v[1], v_mid, n / 2);
            PortableCore::yuv_to_rgb_store<Format>(y[0], u[0], v[0], n, dst[0] + i * bpp, layout);
            PortableCore::average(y[0], y[1], y_mid, n);
            PortableCore::yuv_to_rgb_store<Format>(y_mid, u[0], v[0], n, dst[1] + i * bpp, layout);
            PortableCore::yuv_to_rgb_store<Format>(y[1], u_mid, v_mid, n, dst[2] + i * bpp, layout);
            PortableCore::average(y[1], y[2], y_mid, n);
            PortableCore::yuv_to_rgb_store<Format>(y_mid, u_mid, v_mid, n, dst[3] + i * bpp, layout);
        }
    }

    // The four-row filter (-1, 5, 5, -1) / 8 over four runs of n bytes; the output lies
    // between rows b and c.
    static void filter4(const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* d,
                        uint8_t* dst, int n) {
        for (int i = 0; i < n; ++i) dst[i] = filter4_u8(a[i], b[i], c[i], d[i]);
    }

    // Horizontal doubling of n samples into 2n: each sample, then the rounded average of it
    // and its right neighbour. The last sample's neighbour is src[n], or itself when `edge`.
    static void double_run(const uint8_t* src, bool edge, uint8_t* dst, int n) {
        const uint8_t next = src[edge ? n - 1 : n];
        for (int i = 0; i + 1 < n; ++i) dst[2 * i] = src[i], dst[2 * i + 1] = avg_u8(src[i], src[i + 1]);
        if (n > 0) dst[2 * n - 2] = src[n - 1], dst[2 * n - 1] = avg_u8(src[n - 1], next);
    }

    // One YUY2 row of the double-size stretch from planar rows, in blocks of 16 source pixels
    // (64 destination bytes): each plane's row (or the average of two doubled rows, where the
    // second row differs from the first) doubled horizontally, the samples adjusted first when
    // `adjusted`. A block's last samples take the next block's first ones as neighbours; the
    // last block repeats its own.
    template <bool adjusted>
    static void double_size_yuy2_row(const uint8_t* y0, const uint8_t* y1, const uint8_t* u0, const uint8_t* u1,
                                     const uint8_t* v0, const uint8_t* v1, uint8_t* dst, uint32_t blocks,
                                     const AdjustConstants& a) {
        auto doubled = [&](const uint8_t* src, int n, bool edge, int16_t gain, int16_t offset, uint8_t* out) {
            uint8_t s[17];
            const int count = edge ? n : n + 1;
            for (int k = 0; k < count; ++k) s[k] = adjusted ? adjust_u8(src[k], gain, offset) : src[k];
            double_run(s, edge, out, n);
        };
        auto plane = [&](const uint8_t* r0, const uint8_t* r1, int n, bool edge, int16_t gain, int16_t offset, uint8_t* out) {
            doubled(r0, n, edge, gain, offset, out);
            if (r1 == r0) return;
            uint8_t below[32];
            doubled(r1, n, edge, gain, offset, below);
            PortableCore::average(out, below, out, 2 * n);
        };
        for (uint32_t i = 0; i < blocks; ++i) {
            const bool edge = i + 1 == blocks;
            uint8_t y[32], u[16], v[16];
            plane(y0 + 16 * i, y1 + 16 * i, 16, edge, a.luma_gain, a.luma_offset, y);
            plane(u0 + 8 * i, u1 + 8 * i, 8, edge, a.chroma_gain, a.u_offset, u);
            plane(v0 + 8 * i, v1 + 8 * i, 8, edge, a.chroma_gain, a.v_offset, v);
            PortableCore::join_yuy2(y, u, v, dst + 64 * i, 32);
        }
    }

    // Three packed YUY2 rows of `pixels` pixels (even), each adjusted when `adjusted` and
    // doubled in width, luma and each chroma plane with its right neighbour (the row's last
    // samples repeat), D0, D1, D2: into dst D0, avg(D0, D1), D1, avg(D1, D2), 4 * pixels
    // bytes each.
    template <bool adjusted>
    static void double_yuy2_rows(const uint8_t* const src[3], uint8_t* const dst[4], int pixels,
                                 const AdjustConstants& a) {
        for (int p = 0; p < pixels; p += yuy2_chunk) {
            const int n = pixels - p < yuy2_chunk ? pixels - p : yuy2_chunk;
            const bool edge = p + n == pixels;
            uint8_t* d0 = dst[0] + 4 * p;
            uint8_t* d1 = dst[2] + 4 * p;
            uint8_t d2[4 * yuy2_chunk];
            doubled_yuy2<adjusted>(src[0] + 2 * p, n, edge, a, d0);
            doubled_yuy2<adjusted>(src[1] + 2 * p, n, edge, a, d1);
            doubled_yuy2<adjusted>(src[2] + 2 * p, n, edge, a, d2);
            PortableCore::average(d0, d1, dst[1] + 4 * p, 4 * n);
            PortableCore::average(d1, d2, dst[3] + 4 * p, 4 * n);
        }
    }

    // adj(avg(a, b)) over n samples; a run given twice is adjusted as it is.
    static void average_adjust(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n, int16_t gain, int16_t offset) {
        for (int i = 0; i < n; ++i) dst[i] = adjust_u8(avg_u8(a[i], b[i]), gain, offset);
    }

    // adj(avg(H(a), H(b))) into 2n bytes, each run doubled with the byte after it as the last
    // sample's neighbour (n + 1 bytes read of each); a run given twice is doubled as it is.
    static void double_adjust(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n, int16_t gain, int16_t offset) {
        for (int i = 0; i < n; ++i) {
            dst[2 * i] = adjust_u8(avg_u8(a[i], b[i]), gain, offset);
            dst[2 * i + 1] = adjust_u8(avg_u8(avg_u8(a[i], a[i + 1]), avg_u8(b[i], b[i + 1])), gain, offset);
        }
    }

    // One YUY2 row of the rounded averages of two luma rows and of two rows of each chroma
    // plane; a row given twice is copied.
    static void join_yuy2_averaged(const uint8_t* y0, const uint8_t* y1, const uint8_t* u0, const uint8_t* u1,
                                   const uint8_t* v0, const uint8_t* v1, uint8_t* dst, int pixels) {
        for (int p = 0; p < pixels / 2; ++p) {
            dst[4 * p] = avg_u8(y0[2 * p], y1[2 * p]);
            dst[4 * p + 1] = avg_u8(u0[p], u1[p]);
            dst[4 * p + 2] = avg_u8(y0[2 * p + 1], y1[2 * p + 1]);
            dst[4 * p + 3] = avg_u8(v0[p], v1[p]);
        }
    }

    // Two source rows of n samples, each doubled with its last sample as its own right
    // neighbour: H(above) into `copy` and avg(H(above), H(below)) into `between` (2n bytes each).
    static void double_pair(const uint8_t* above, const uint8_t* below, uint8_t* copy, uint8_t* between, int n) {
        auto pair = [&](int i, int right) {
            const uint8_t a0 = above[i], a1 = avg_u8(above[i], above[right]);
            const uint8_t b0 = below[i], b1 = avg_u8(below[i], below[right]);
            copy[2 * i] = a0, copy[2 * i + 1] = a1;
            between[2 * i] = avg_u8(a0, b0), between[2 * i + 1] = avg_u8(a1, b1);
        };
        for (int i = 0; i + 1 < n; ++i) pair(i, i + 1);
        if (n > 0) pair(n - 1, n - 1);
    }

    // Edge-directed interpolation between rows a (above) and b (below), n a multiple of 4,
    // group by group. A quiet group (summed difference at most 32) is averaged vertically;
    // otherwise each sample is averaged along the cheapest of five directions. Reads a and b
    // from 2 samples before the run to 5 after it.
    static void edge_interpolate(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n) {
        constexpr int quiet_limit = 32;
        for (int x = 0; x < n; x += 4) {
            int activity = 0;
            for (int p = x; p < x + 4; ++p) activity += abs_diff(a[p], b[p]);
            for (int p = x; p < x + 4; ++p) {
                int d = 0;
                if (activity > quiet_limit) d = cheapest_direction(a + p, b + p) - 2;
                dst[p] = avg_u8(a[p + d], b[p - d]);
            }
        }
    }

    static constexpr int yuy2_chunk = 16;  // pixels

    // n pixels (even, at most yuy2_chunk) of a packed row split into planes with their right
    // neighbours (the next pixels', or their own at the row's end), adjusted, doubled and
    // joined again.
    template <bool adjusted>
    static void doubled_yuy2(const uint8_t* src, int n, bool edge, const AdjustConstants& a, uint8_t* out) {
        const int c = n / 2;
        uint8_t y[yuy2_chunk + 1], u[yuy2_chunk / 2 + 1], v[yuy2_chunk / 2 + 1];
        uint8_t dy[2 * yuy2_chunk], du[yuy2_chunk] = {}, dv[yuy2_chunk] = {};  // zeroed: GCC -m32 cannot see double_run fill them
        PortableCore::split_yuy2(src, y, u, v, n);
        if (edge) {
            y[n] = y[n - 1], u[c] = u[c - 1], v[c] = v[c - 1];
        } else {
            y[n] = src[2 * n], u[c] = src[2 * n + 1], v[c] = src[2 * n + 3];
        }
        if (adjusted) {
            PortableCore::adjust(y, y, n + 1, a.luma_gain, a.luma_offset);
            PortableCore::adjust(u, u, c + 1, a.chroma_gain, a.u_offset);
            PortableCore::adjust(v, v, c + 1, a.chroma_gain, a.v_offset);
        }
        double_run(y, false, dy, n);
        double_run(u, false, du, c);
        double_run(v, false, dv, c);
        PortableCore::join_yuy2(dy, du, dv, out, 2 * n);
    }

private:
    static int abs_diff(uint8_t x, uint8_t y) { return x > y ? x - y : y - x; }

    // Direction j (offset d = j - 2) pairs a[d + k] with b[-d + k], k = 0..3. The search key
    // cost * 8 + j makes the lowest j win a tie.
    static int cheapest_direction(const uint8_t* a, const uint8_t* b) {
        int best_key = 1 << 30;
        for (int j = 0; j < 5; ++j) {
            const int d = j - 2;
            int cost = 0;
            for (int k = 0; k < 4; ++k) cost += abs_diff(a[d + k], b[-d + k]);
            const int key = cost * 8 + j;
            if (key < best_key) best_key = key;
        }
        return best_key & 7;
    }
};

} }  // namespace dispconv::simd
