// The cross-implementation check: every kernel of the catalogue, over a spread of geometries
// drawn from its facts (inside the contract and beyond it: widths off the block, heights below
// the minimum, bottom-up and overlapping rows, refused layouts), runs through the portable
// reference and every other instruction set this CPU has, on the same input, each buffer with
// room around it; every buffer whole, and the record after the call, must come out identical.
// Portable leaves what a kernel refuses untouched, and an adjusting kernel under neutral
// settings writes what its plain twin writes. A mismatch prints the kernel, the set, the
// geometry, the seed and the bytes from the first difference on. `--seed=N` (see main) draws
// other inputs.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "checked/checked_support.hpp"
#include "support/test_support.hpp"

namespace dispconv::test {
namespace {

struct CrossCase {
    CheckedCall call;
    bool extremes = false;   // sources in runs of 0, of 255 and of noise
    bool any_alpha = false;  // opacity bytes 0..255 instead of 0..16
};

// Adjust settings the cases cycle through: neutral, ordinary, products that wrap (one gain just
// past 257, the other not), offsets at the ends of the 16-bit range (where the sums saturate),
// offsets that only the largest products bring back into 0..255.
ajust_contrast_info cross_settings(uint32_t i) {
    static const ajust_contrast_info presets[] = {settings(), settings(90, 40, -12, 30, 70),
                                                  settings(258, 60, 200, -300, 5), settings(0, 127, 32767, -32768, -1),
                                                  settings(64, 64, 32767, 32767, -32768), settings(257, 1, -32768, 255, 32767),
                                                  settings(1023, 1001, -1000, -1023, 254), settings(60, 258, 7, 3, -9)};
    return presets[i % std::size(presets)];
}

// Each touched buffer gets rows of the largest stride of the call, room for the walk's drift and
// block overrun, and margins before and after (the walks read a row before or past the picture
// at some sizes, and bottom-up strides go backwards).
Buffers arenas(const CheckedCall& c) {
    const KernelFacts& f = facts(c.kernel);
    const MIX_INFO& m = c.info;
    const bool record = f.shape == Shape::record;
    const int64_t width = std::abs(int64_t(record ? std::max(m.width, m.frame_stride) : std::max(c.width, c.frame_width)));
    const int64_t height = std::abs(int64_t(record ? m.height : c.height));
    // Row distances by buffer (bytes), generous where a walk reads one plane at another's; the
    // packed double-size stretch reads rows of `width` bytes back to back.
    const int64_t planes = std::max({std::abs(int64_t(m.frame_stride)), std::abs(int64_t(m.sub_stride)), 2 * std::abs(int64_t(c.src_stride)),
                                     int64_t(std::abs(c.frame_width)), width});
    const int64_t out = std::abs(int64_t(record ? m.image_stride : c.dst_stride));
    // Interlaced RGB strips climb or sink by whole groups for heights off the group.
    const int64_t creep = f.has(field_groups) ? (width / 16 + 1) * 8 : 0;
    Buffers a;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        if (!f.touches(b)) continue;
        // The stretches write two rows per source row; YV12 surfaces hold their chroma below, as
        // many rows again as a doubled picture's half.
        const bool output = b == DISPCONV_BUFFER_DST || b >= DISPCONV_BUFFER_IMAGE;
        const int64_t stride = std::max(output || b == DISPCONV_BUFFER_MASK ? out : planes, int64_t(64));
        const int64_t per_row = output ? (f.has(even_dst) ? 3 : 2) : f.shape == Shape::edge_directed ? 2 : 1;
        const int64_t rows = per_row * (height + c.start_line) + 2 * creep + 8;
        // A width off the block drifts every row (pair) on by up to a block.
        const int64_t drift = width % f.block ? rows * 4 * f.block : 0;
        const int64_t margin = (creep + 4) * stride + 4 * width + 4096;
        // Rows go either way from the kernel's pointer: bottom-up strides are negative.
        const bool down = (output || b == DISPCONV_BUFFER_MASK ? (record ? m.image_stride : c.dst_stride) : std::min({m.frame_stride, m.sub_stride, c.src_stride})) < 0;
        a.bytes[b].resize(size_t(rows * stride + drift + 2 * margin));
        a.origin[b] = margin + (down ? rows * stride : 0);
    }
    return a;
}

// The inputs the kernels branch on: opacity levels, colour-keyed pixels, marked mask bytes,
// quiet and busy texture; and the extremes, where saturation shows.
void shape_contents(const CrossCase& x, Buffers& a, uint32_t seed) {
    const CheckedCall& c = x.call;
    const KernelFacts& f = facts(c.kernel);
    std::minstd_rand rng(seed);
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        std::vector<uint8_t>& v = a.bytes[b];
        if (x.extremes)
            for (size_t i = 0; i < v.size(); i += 16) {
                const unsigned run = rng() % 3;
                if (run < 2) std::fill(v.begin() + i, v.begin() + std::min(v.size(), i + 16), run ? 255 : 0);
            }
        if (b == DISPCONV_BUFFER_SUB_OPACITY && !x.any_alpha)
            for (uint8_t& o : v) o = f.has(stride_is_width) ? (o % 3 == 0 ? 0 : o % 3 == 1 ? o & 0x1F : o) : o % 17;
        if (b == DISPCONV_BUFFER_MASK)  // runs of 16 bytes all, some or none marked
            for (size_t i = 0; i < v.size(); ++i)
                if (const unsigned run = unsigned(i / 16 * 2654435761u) >> 29; run < 3 || (run < 6 && (v[i] & 1)))
                    v[i] = uint8_t(c.mask_value);
        if (f.shape == Shape::edge_directed)  // bands of quiet, borderline and busy texture
            for (size_t i = 0; i < v.size(); ++i)
                if (const size_t band = i / 40 % 3) v[i] = uint8_t(120 + (v[i] & (band == 1 ? 7 : 15)));
        if (b == DISPCONV_BUFFER_IMAGE && f.shape == Shape::record && f.dst_x2) {  // RGB to AYUY2: keyed groups
            const int bpp = f.image_x2 / 2;
            for (size_t px = 0; px + 8 <= v.size() / bpp; px += 8) {
                const unsigned mode = rng() % 3, odd_one = rng() % 8;
                for (unsigned k = 0; k < 8 && mode < 2; ++k)
                    if (mode == 0 || k != odd_one)
                        for (int byte = 0; byte < bpp; ++byte) v[(px + k) * bpp + byte] = uint8_t(c.info.color_key >> (8 * byte));
            }
        }
    }
}

::testing::AssertionResult same_on_every_isa(const CrossCase& x, uint32_t seed) {
    Buffers in = arenas(x.call);
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) fill_random(in.bytes[b].data(), in.bytes[b].size(), seed * 31 + b);
    shape_contents(x, in, seed);
    ajust_contrast_info s = cross_settings(seed);
    get_contrast_data(&s);
    Buffers portable, twin;
    std::vector<std::ptrdiff_t> record;
    std::string problem = same_on_every_isa(x.call, in, nullptr, &portable, &record);
    const KernelFacts& f = facts(x.call.kernel);
    const int32_t height = f.shape == Shape::record ? x.call.info.height : x.call.height;
    // What a kernel refuses (heights below its least, odd ones for the adjusting YV12-to-YUY2
    // loader, layouts outside 0..3) it leaves as it was: every buffer, the record's height and
    // pointers.
    const bool refused = (f.has(refuses_low) && (height < f.min_height ||
                                                 (x.call.kernel == DISPCONV_KERNEL_loadimage_yuy2_ajust && height % 2))) ||
                         (f.has(layout) && uint32_t(x.call.settings.rgb16_layout) > 3);
    if (problem.empty() && refused &&
        (portable.bytes != in.bytes || record[4] != x.call.info.height ||
         std::any_of(record.begin() + 6, record.begin() + 16, [](std::ptrdiff_t move) { return move != 0; })))
        problem = "portable wrote, or moved the record, where the kernel refuses";
    // Under neutral settings an adjusting kernel writes what its plain twin writes.
    if (problem.empty() && f.plain != DISPCONV_KERNEL_COUNT && !x.any_alpha && s.luma_gain == 64 && s.chroma_gain == 64 &&
        !s.luma_offset && !s.u_offset && !s.v_offset) {
        CheckedCall plain = x.call;
        plain.kernel = f.plain;
        problem = same_on_every_isa(plain, in, nullptr, &twin);
        if (problem.empty() && twin.bytes != portable.bytes) problem = "under neutral settings unlike " + describe(plain);
    }
    if (!problem.empty())
        return ::testing::AssertionFailure() << describe(x.call) << (x.extremes ? " extremes" : "")
                                             << (x.any_alpha ? " any alpha" : "") << ", seed " << seed
                                             << " (--seed=" << cross_seed << "): " << problem;
    return ::testing::AssertionSuccess();
}

// Geometries of one kernel: widths of one and more blocks and (where the walk defines them) off
// the block; heights below the least (negative where refused), at it, odd and of the parity;
// bottom-up, overlapping and tight rows; every 16-bit layout and refused ones; realistic sizes.
std::vector<CrossCase> cases_of(dispconv_kernel k) {
    const KernelFacts& f = facts(k);
    const int32_t b = std::max(f.block, 8), least = f.least_width, m = f.min_height;
    std::vector<int32_t> widths = {least, least + b, least + 3 * b};
    if (!f.has(block_walk)) widths.insert(widths.end(), {least + b / 2 + 1, least + 2 * b - 3});
    if (f.shape == Shape::fill || f.shape == Shape::mask) widths.push_back(0);
    std::vector<CrossCase> all;
    int variant = 0;
    for (int32_t w : widths)
        for (int32_t h : {m - 1, m, m + 1, m + f.parity + 2, 0, -2}) {
            if ((h == 0 && !f.has(zero_height)) || (h < m && f.has(unguarded)) || (h < 0 && !f.has(refuses_low))) continue;
            const int v = variant++;
            CrossCase x{make_call(k, w, h, 8 + 2 * (v % 3), v % 4 == 1 ? -1 : 1, f.has(layout) ? v % 6 - 1 : 0)};
            if (f.has(layout) && x.call.settings.rgb16_layout == 4) x.call.settings.rgb16_layout = 7;
            x.extremes = v % 3 == 2;
            x.any_alpha = v % 7 == 3;
            if (f.has(plane_choice)) x.call.plane = v % 4;
            if (f.shape == Shape::edge_directed) x.call.frame_structure = v % 3, x.call.start_line = v % 4;
            all.push_back(x);
        }
    // Destination rows closer than a row's length: the order of the stores shows, and the
    // stretches then walk in strips.
    const bool mixer = f.shape == Shape::record && f.src_x2 && f.dst_x2;
    if (f.shape == Shape::frame || f.shape == Shape::packed_2x2 || f.shape == Shape::plane || mixer)
        for (int32_t d : {8, 40}) {
            CrossCase x{make_call(k, least + 2 * b, m + 2 * f.parity, 8, 1, 0)};
            int32_t& stride = mixer ? x.call.info.image_stride : x.call.dst_stride;
            stride = int32_t((mixer ? f.image_row(least + 2 * b) : f.dst_row(least + 2 * b)) * d / 64 + d);
            all.push_back(x);
        }
    for (auto [w, h] : {std::pair{720, 480}, std::pair{1920, m + 2}}) {
        const int32_t width = f.shape == Shape::packed_2x2 ? 2 * w : (w + f.block - 1) / f.block * f.block;
        all.push_back({make_call(k, width, std::max(h, m), 0, 1, 0), h == 480});
    }
    return all;
}

TEST(CrossIsa, EveryKernelEqualsThePortableReference) {
    int cases = 0;
    for (int k = 0; k < DISPCONV_KERNEL_COUNT; ++k)
        for (const CrossCase& x : cases_of(dispconv_kernel(k))) {
            const uint32_t seed = cross_seed * 7919u + uint32_t(cases++);
            ASSERT_TRUE(same_on_every_isa(x, seed));
        }
    std::printf("cross-checked cases: %d (seed %u)\n", cases, cross_seed);
}

}  // namespace
}  // namespace dispconv::test
