// The portable reference vocabulary shared by every kernel family: byte runs in, byte runs out,
// each operation the defined lane arithmetic applied sample by sample.
#pragma once

#include <cstdint>
#include <cstring>

#include "core/arith.hpp"
#include "core/formats.hpp"
#include "core/rgb16.hpp"

namespace dispconv::simd { namespace {

// memcpy kept out of line: where GCC can bound the count it expands memcpy inline as a string
// move, whose start-up costs more than the short runs of the stretchers take; the C library's
// copy is fast at every length.
[[gnu::noinline]] inline void copy_bytes(const uint8_t* src, uint8_t* dst, int n) { std::memcpy(dst, src, size_t(n)); }

struct PortableCore {
    static void copy(const uint8_t* src, uint8_t* dst, int n) { copy_bytes(src, dst, n); }

    static void fill(uint8_t* dst, uint8_t value, int n) { std::memset(dst, value, n); }

    // Picture adjustment of n samples with one gain and one offset (luma, U or V).
    static void adjust(const uint8_t* src, uint8_t* dst, int n, int16_t gain, int16_t offset) {
        for (int i = 0; i < n; ++i) dst[i] = adjust_u8(src[i], gain, offset);
    }

    // Rounded average of two runs of n bytes.
    static void average(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n) {
        for (int i = 0; i < n; ++i) dst[i] = avg_u8(a[i], b[i]);
    }

    // Packed YUY2 (Y0 U Y1 V ...) of `pixels` pixels into luma and the two chroma runs.
    static void split_yuy2(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int pixels) {
        for (int p = 0; p < pixels / 2; ++p) {
            y[2 * p] = src[4 * p];
            u[p] = src[4 * p + 1];
            y[2 * p + 1] = src[4 * p + 2];
            v[p] = src[4 * p + 3];
        }
    }

    // Luma, U and V runs interleaved into packed YUY2.
    static void join_yuy2(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst,
                          int pixels) {
        for (int p = 0; p < pixels / 2; ++p) {
            dst[4 * p] = y[2 * p];
            dst[4 * p + 1] = u[p];
            dst[4 * p + 2] = y[2 * p + 1];
            dst[4 * p + 3] = v[p];
        }
    }

    // YUV to R, G, B runs: pixel i takes chroma sample i / 2.
    static void yuv_to_rgb(const uint8_t* y, const uint8_t* u, const uint8_t* v, int pixels,
                           uint8_t* r, uint8_t* g, uint8_t* b) {
        for (int i = 0; i < pixels; ++i) {
            const Rgb c = dispconv::yuv_to_rgb(y[i], chroma_terms(u[i / 2], v[i / 2]));
            r[i] = c.r;
            g[i] = c.g;
            b[i] = c.b;
        }
    }

    // R, G, B runs stored as RGB32 (B, G, R, 0), RGB24 (B, G, R) or a 16-bit layout.
    template <class Format>
    static void store_rgb(const uint8_t* r, const uint8_t* g, const uint8_t* b, int pixels,
                          uint8_t* dst, const Rgb16Layout& layout) {
        for (int i = 0; i < pixels; ++i) {
            if constexpr (Format::bytes_per_pixel == 4) {
                dst[4 * i] = b[i];
                dst[4 * i + 1] = g[i];
                dst[4 * i + 2] = r[i];
                dst[4 * i + 3] = 0;
            } else if constexpr (Format::bytes_per_pixel == 3) {
                dst[3 * i] = b[i];
                dst[3 * i + 1] = g[i];
                dst[3 * i + 2] = r[i];
            } else {
                const uint16_t w = pack_rgb16(r[i], g[i], b[i], layout);
                dst[2 * i] = static_cast<uint8_t>(w);
                dst[2 * i + 1] = static_cast<uint8_t>(w >> 8);
            }
        }
    }

    // YUV converted and stored in one step (the common case of every RGB-writing kernel).
    template <class Format>
    static void yuv_to_rgb_store(const uint8_t* y, const uint8_t* u, const uint8_t* v,
                                 int pixels, uint8_t* dst, const Rgb16Layout& layout) {
        constexpr int chunk = 16;
        uint8_t r[chunk], g[chunk], b[chunk];
        for (int i = 0; i < pixels; i += chunk) {
            const int n = pixels - i < chunk ? pixels - i : chunk;
            yuv_to_rgb(y + i, u + i / 2, v + i / 2, n, r, g, b);
            store_rgb<Format>(r, g, b, n, dst + i * Format::bytes_per_pixel, layout);
        }
    }
};

} }  // namespace dispconv::simd
