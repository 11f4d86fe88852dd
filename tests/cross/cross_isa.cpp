#include "cross/cross_isa.hpp"

#include <cstdio>
#include <sstream>

namespace dispconv::test {

void load_cross_settings(int index) {
    static const ajust_contrast_info presets[cross_settings_count] = {
        settings(64, 64, 0, 0, 0),        // neutral
        settings(90, 40, -12, 30, 70),    // ordinary
        settings(300, 258, 200, -300, 5), // products wrap, offsets saturate
        settings(0, 127, 32767, -32768, -1),
    };
    ajust_contrast_info s = presets[index % cross_settings_count];
    get_contrast_data(&s);
}

Extent extent(int rows, int64_t step, int64_t span, int64_t before) {
    const int64_t travel = int64_t(std::max(rows, 1) - 1) * step;
    return {size_t(std::max<int64_t>(0, -travel) + before), size_t(std::max<int64_t>(0, travel) + span)};
}

std::vector<int64_t> mix_record(const Arenas& a) {
    auto offset = [&a](const void* p) -> int64_t {
        const auto* b = static_cast<const uint8_t*>(p);
        if (!b) return 0;
        if (b >= a.src.data() && b <= a.src.data() + a.src.size()) return (int64_t(1) << 40) + (b - a.src.data());
        if (b >= a.dst.data() && b <= a.dst.data() + a.dst.size()) return (int64_t(2) << 40) + (b - a.dst.data());
        return -1;  // somewhere else altogether
    };
    const MIX_INFO& i = a.info;
    return {i.frame_stride, i.sub_stride, i.image_stride, i.width, i.height,
            offset(i.frame_y), offset(i.frame_v), offset(i.frame_u), offset(i.sub_opacity),
            offset(i.sub_y), offset(i.sub_v), offset(i.sub_u), offset(i.image),
            offset(i.image_u), offset(i.image_v), int64_t(i.color_key), i.reserved1, i.reserved2,
            !i.surface_format ? 0 : i.surface_format == &a.settings ? 1 : -1};
}

std::string describe(const std::string& kernel, std::initializer_list<std::pair<const char*, int64_t>> fields) {
    std::ostringstream s;
    s << kernel;
    for (const auto& [name, value] : fields) s << " " << name << " " << value;
    return s.str();
}

namespace {

std::string grid_around(const std::vector<uint8_t>& want, const std::vector<uint8_t>& got, size_t at,
                        int pitch, size_t origin) {
    std::ostringstream out;
    const size_t start = at >= 8 ? at - 8 : 0;
    out << "\n  offset " << at;
    if (pitch > 0) {
        const long rel = long(at) - long(origin);
        const long row = rel >= 0 ? rel / pitch : -((-rel + pitch - 1) / pitch);
        out << " (surface row " << row << ", byte " << rel - row * pitch << ")";
    }
    out << "\n  portable:";
    for (size_t i = start; i < want.size() && i < start + 24; ++i) {
        char t[8];
        std::snprintf(t, sizeof t, " %02X", want[i]);
        out << t;
    }
    out << "\n  this isa:";
    for (size_t i = start; i < got.size() && i < start + 24; ++i) {
        char t[8];
        std::snprintf(t, sizeof t, i == at ? "[%02X]" : " %02X", got[i]);
        out << t;
    }
    return out.str();
}

Arenas run_once(const CrossCase& c, const KernelTable& table, uint32_t seed) {
    Arenas a;
    a.src.resize(c.src_bytes);
    fill_random(a.src.data(), a.src.size(), seed);
    a.dst.assign(c.dst_bytes, canary);
    if (c.random_dst) fill_random(a.dst.data(), a.dst.size(), seed ^ 0x9E3779B9u);
    c.run(table, a);
    return a;
}

}  // namespace

::testing::AssertionResult same_on_every_isa(const CrossCase& c, uint32_t seed) {
    const Arenas reference = run_once(c, *kernel_table(Isa::portable), seed);
    const std::vector<int64_t> reference_record = c.record ? c.record(reference) : std::vector<int64_t>{};
    for (int i = 1; i < isa_count; ++i) {
        const Isa isa = static_cast<Isa>(i);
        const KernelTable* table = kernel_table(isa);
        if (!table) continue;
        const Arenas got = run_once(c, *table, seed);
        for (size_t k = 0; k < got.dst.size(); ++k)
            if (got.dst[k] != reference.dst[k])
                return ::testing::AssertionFailure() << c.name << " on " << isa_name(isa) << ", seed " << seed
                                                     << ": destination differs from portable"
                                                     << grid_around(reference.dst, got.dst, k, c.dst_pitch, c.dst_origin);
        if (c.record && c.record(got) != reference_record)
            return ::testing::AssertionFailure() << c.name << " on " << isa_name(isa) << ", seed " << seed
                                                 << ": record fields differ from portable";
    }
    return ::testing::AssertionSuccess();
}

CrossCase frame_case(const std::string& kernel, std::function<FrameKernel(const KernelTable&)> pick,
                     const FrameGeometry& g) {
    const size_t pitch = size_t(std::max(std::abs(g.src_stride), g.width)) * 2 + 64;
    const size_t luma_area = pitch * size_t(g.height + 8);
    const size_t dst_pitch = size_t(std::abs(g.dst_stride));
    const int dst_rows = g.dst_rows ? g.dst_rows : 2 * g.height + 8;
    CrossCase c;
    c.name = describe(kernel, {{"width", g.width}, {"height", g.height}, {"src_stride", g.src_stride},
                               {"dst_stride", g.bottom_up ? -g.dst_stride : g.dst_stride}, {"layout", g.layout}});
    c.src_bytes = 4096 + 3 * luma_area;
    c.dst_bytes = 8192 + dst_pitch * size_t(dst_rows) * 2 + 4096;
    c.dst_pitch = int(dst_pitch);
    c.dst_origin = 8192;
    c.run = [=](const KernelTable& t, Arenas& a) {
        a.settings.rgb16_layout = g.layout;
        a.settings.dst_plane_height = g.height;
        a.settings.dst_luma_height = g.height;
        uint8_t* y = a.src.data() + 4096;
        uint8_t* u = y + luma_area;
        uint8_t* v = u + luma_area;
        uint8_t* dst = a.dst.data() + 8192;
        int32_t dst_stride = g.dst_stride;
        if (g.bottom_up) dst += dst_pitch * size_t(g.height), dst_stride = -dst_stride;
        pick(t)(y, u, v, dst, g.width, g.height, g.src_stride, dst_stride, &a.settings);
    };
    return c;
}

}  // namespace dispconv::test
