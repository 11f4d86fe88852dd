// Differential fuzzing of the kernels. Each input becomes one call drawn near the edges of its
// kernel's contract (block-multiple widths give or take a pixel, tiny, odd and negative heights,
// strides around the row size, sometimes bottom-up), with adjust settings and buffer contents.
//  - A refused footprint must be refused by the checked interface too, with nothing written.
//  - Otherwise every touched buffer is its own heap allocation sized around the footprint's
//    hull (exact, a byte short at either end, or larger), so that AddressSanitizer sees any
//    access outside it. The checked interface must accept the call exactly when every buffer
//    covers its hull, and otherwise name a buffer that is really short, by the right amount.
//  - An accepted call runs through the checked interface and through the raw kernel of every
//    instruction set this CPU has, each on its own copy of the buffers: all must write the same
//    bytes, only inside the write footprint, and leave the record alike.
// Any disagreement prints the call and aborts.
//
// FUZZ_KERNELS=name,name,... restricts the draw to those kernels.
#include <fuzzer/FuzzedDataProvider.h>
#include <sanitizer/asan_interface.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "checked/checked_support.hpp"

namespace {

using namespace dispconv;
using namespace dispconv::test;

bool is_mixer(dispconv_kernel k) { return k >= DISPCONV_KERNEL_mix_ayuy2_yuy2_p_ajust; }

std::vector<dispconv_kernel> allowed_kernels;

// ------------------------------------------------------------------------------------------
// Drawing the call
// ------------------------------------------------------------------------------------------

// The draws below map a zero (what an exhausted input gives) to the most ordinary choice, so
// that short inputs make calls inside the contract and mutations step out of it.

// Small multiples of the block sizes the kernels use, sometimes a pixel or two off, rarely
// a realistic or a non-positive width.
int32_t draw_width(FuzzedDataProvider& in) {
    static constexpr int32_t units[] = {16, 32, 8, 2, 1};
    static constexpr int32_t realistic[] = {720, 176, 352, 704, 1280, 1920};
    const int kind = in.ConsumeIntegralInRange(0, 15);
    if (kind == 15) return -in.ConsumeIntegralInRange<int32_t>(0, 40);
    if (kind == 14) return realistic[in.ConsumeIntegralInRange<size_t>(0, std::size(realistic) - 1)];
    const int32_t unit = units[in.ConsumeIntegralInRange<size_t>(0, std::size(units) - 1)];
    const int32_t multiple = in.ConsumeBool() ? in.ConsumeIntegralInRange(0, 48) : 4 - in.ConsumeIntegralInRange(0, 4);
    const int32_t offset = in.ConsumeIntegralInRange(0, 3) == 3 ? in.ConsumeIntegralInRange(-2, 2) : 0;
    return unit * multiple + offset;
}

// Mostly 0..20 (the kernels' minimum heights are at most 16), sometimes taller or negative.
int32_t draw_height(FuzzedDataProvider& in) {
    const int kind = in.ConsumeIntegralInRange(0, 9);
    if (kind == 9) return -in.ConsumeIntegralInRange(1, 5);
    if (kind == 8) return in.ConsumeIntegralInRange(21, 70);
    return (in.ConsumeIntegralInRange(0, 20) + 16) % 21;
}

// The natural row size (`half_bytes` / 2 per pixel of width) plus a small signed slack, now
// and then another multiple of the width or any small number; sometimes negated (bottom-up).
int32_t draw_stride(FuzzedDataProvider& in, int32_t width, int half_bytes) {
    static constexpr int other[] = {1, 2, 3, 4, 6, 8, 12, 16};
    const int64_t w = std::abs(int64_t(width));
    const int kind = in.ConsumeIntegralInRange(0, 15);
    int64_t stride;
    if (kind == 15) {
        stride = in.ConsumeIntegralInRange(-300, 300);
    } else {
        const int h = kind >= 13 ? other[in.ConsumeIntegralInRange<size_t>(0, std::size(other) - 1)] : half_bytes;
        stride = w * h / 2;
        const int slack = in.ConsumeIntegralInRange(0, 7);
        if (slack == 1) stride += in.ConsumeIntegralInRange(-3, 3);
        if (slack == 2) stride += in.ConsumeIntegralInRange(1, 64);
        if (slack == 3) stride += 16 << in.ConsumeIntegralInRange(0, 3);
        if (in.ConsumeIntegralInRange(0, 5) == 5) stride = -stride;
    }
    return int32_t(std::clamp<int64_t>(stride, INT32_MIN, INT32_MAX));
}

int32_t draw_word(FuzzedDataProvider& in, int32_t neutral, int32_t lo, int32_t hi) {
    switch (in.ConsumeIntegralInRange(0, 3)) {
        case 0: return neutral;
        case 1: return in.ConsumeIntegralInRange(lo, hi);
        case 2: return in.ConsumeIntegral<int16_t>();
        default: return in.ConsumeIntegral<int32_t>();
    }
}

// Picture settings: neutral, within the documented ranges, or any word (the low 16 bits wrap).
ajust_contrast_info draw_settings(FuzzedDataProvider& in, int32_t height) {
    ajust_contrast_info s{};
    s.luma_gain = draw_word(in, 64, 0, 257);
    s.chroma_gain = draw_word(in, 64, 0, 257);
    s.luma_offset = draw_word(in, 0, -300, 300);
    s.u_offset = draw_word(in, 0, -300, 300);
    s.v_offset = draw_word(in, 0, -300, 300);
    s.luma_offset_extra = in.ConsumeBool() ? 0 : draw_word(in, 0, -300, 300);
    s.u_offset_extra = in.ConsumeBool() ? 0 : draw_word(in, 0, -300, 300);
    s.v_offset_extra = in.ConsumeBool() ? 0 : draw_word(in, 0, -300, 300);
    s.rgb16_layout = in.ConsumeIntegralInRange(0, 15) != 15 ? in.ConsumeIntegralInRange(0, 4) : in.ConsumeIntegral<int32_t>();
    s.reserved = in.ConsumeIntegral<int32_t>();
    // loadimage_yv12_ajust places its chroma planes with these: around the picture height.
    s.dst_luma_height = in.ConsumeIntegralInRange(0, 3) != 3 ? height + (in.ConsumeIntegralInRange(0, 6) + 2) % 7 - 2 : draw_height(in);
    s.dst_plane_height = in.ConsumeIntegralInRange(0, 3) != 3 ? height + (in.ConsumeIntegralInRange(0, 6) + 2) % 7 - 2 : draw_height(in);
    return s;
}

CheckedCall draw_call(FuzzedDataProvider& in) {
    CheckedCall c;
    if (!allowed_kernels.empty()) {
        c.kernel = allowed_kernels[in.ConsumeIntegralInRange<size_t>(0, allowed_kernels.size() - 1)];
    } else {
        // One past the last kernel now and then: an unknown kernel must be refused too.
        c.kernel = dispconv_kernel(in.ConsumeIntegralInRange(0, int(DISPCONV_KERNEL_COUNT)));
    }
    // The catalogue's natural row sizes (half bytes per pixel) only bias the draw; any stride can
    // still come out.
    const KernelFacts f = c.kernel < DISPCONV_KERNEL_COUNT ? facts(c.kernel) : facts(DISPCONV_KERNEL_LoadYUY2_YUY2);
    const int a = f.src_x2 ? f.src_x2 : 2, b = f.dst_x2 ? f.dst_x2 : 2;
    const int32_t width = draw_width(in), height = draw_height(in);
    switch (f.shape) {
        case Shape::record:
            c.info.width = width, c.info.height = height;
            c.info.frame_stride = draw_stride(in, width, a);
            c.info.sub_stride = draw_stride(in, width, b);
            c.info.image_stride = draw_stride(in, width, f.image_x2);
            c.info.color_key = in.ConsumeIntegral<uint32_t>();
            c.info.reserved1 = in.ConsumeIntegral<int32_t>();
            break;
        case Shape::edge_directed:
            c.frame_width = width, c.height = height;
            c.frame_structure = in.ConsumeIntegralInRange(0, 7) != 7 ? in.ConsumeIntegralInRange(0, 1) : in.ConsumeIntegralInRange(2, 3);
            c.start_line = in.ConsumeIntegralInRange(0, 5) != 5 ? in.ConsumeIntegralInRange(0, 12) : in.ConsumeIntegralInRange(-4, 40);
            c.dst_stride = draw_stride(in, width, b);
            break;
        default:
            c.width = width, c.height = height;
            c.src_stride = draw_stride(in, width, a);
            c.dst_stride = draw_stride(in, width, b);
            c.plane = in.ConsumeIntegralInRange(0, 7) != 7 ? in.ConsumeIntegralInRange(1, 3) : in.ConsumeIntegralInRange(-1, 4);
            c.color_key = in.ConsumeIntegral<uint32_t>();
            c.mask_value = in.ConsumeIntegral<uint32_t>();
            c.key_value = in.ConsumeIntegral<uint32_t>();
            break;
    }
    c.settings = draw_settings(in, height);
    return c;
}

// Buffer contents: random, one value, or a mix of the values the kernels branch on (keys,
// mask values, opacity levels, range limits).
struct Contents {
    int kind = 0;
    uint64_t seed = 0;
    std::array<uint8_t, 8> alphabet{};
};

Contents draw_contents(FuzzedDataProvider& in, const CheckedCall& c) {
    Contents t;
    t.kind = in.ConsumeIntegralInRange(0, 3);
    t.seed = in.ConsumeIntegral<uint64_t>();
    const uint32_t key = c.kernel >= DISPCONV_KERNEL_Convert_RGB32_To_AYUY2 ? c.info.color_key : c.color_key;
    const uint8_t fixed[] = {uint8_t(c.mask_value), uint8_t(key), uint8_t(key >> 8), uint8_t(key >> 16), 0, 16, 128, 255};
    for (size_t i = 0; i < t.alphabet.size(); ++i)
        t.alphabet[i] = in.ConsumeBool() ? fixed[i] : in.ConsumeIntegral<uint8_t>();
    return t;
}

uint64_t next(uint64_t& x) {
    x ^= x >> 12, x ^= x << 25, x ^= x >> 27;
    return x * 0x2545F4914F6CDD1Dull;
}

void fill(std::vector<uint8_t>& bytes, const Contents& t, int buffer, dispconv_kernel k) {
    uint64_t x = (t.seed ^ (uint64_t(buffer + 1) * 0x9E3779B97F4A7C15ull)) | 1;
    for (size_t i = 0; i < bytes.size(); i += 8) {
        const uint64_t r = next(x);
        for (size_t j = 0; j < 8 && i + j < bytes.size(); ++j) {
            const uint8_t byte = uint8_t(r >> (8 * j));
            switch (t.kind) {
                case 0: bytes[i + j] = byte; break;
                case 1: bytes[i + j] = t.alphabet[0]; break;
                default: bytes[i + j] = t.alphabet[byte & 7]; break;
            }
        }
    }
    // The mixers blend with weights 0..16; keep the opacity plane there unless drawn wide.
    if (is_mixer(k) && buffer == DISPCONV_BUFFER_SUB_OPACITY && t.kind != 3)
        for (uint8_t& b : bytes) b %= 17;
}

// ------------------------------------------------------------------------------------------
// Buffers
// ------------------------------------------------------------------------------------------

// One touched buffer: its hull and how the allocation sits around it. `front` / `back` are
// the bytes added before / after the hull (-1: one byte short).
struct Placement {
    dispconv_range hull{};
    int64_t front = 0, back = 0;
    bool touched() const { return hull.begin != hull.end; }
    size_t size() const { return size_t(hull.end - hull.begin + front + back); }
    std::ptrdiff_t origin() const { return front - hull.begin; }  // the kernel's pointer
    bool covers() const { return front >= 0 && back >= 0; }
};

// A set of separate heap allocations of exactly the placed sizes, so that AddressSanitizer
// flags the first byte outside any of them. Untouched roles get an empty allocation.
struct Buffers {
    std::array<std::unique_ptr<uint8_t[]>, DISPCONV_BUFFER_COUNT> bytes;
    std::array<size_t, DISPCONV_BUFFER_COUNT> sizes{};
    std::array<uint8_t*, DISPCONV_BUFFER_COUNT> pointers{};

    Buffers(const std::array<Placement, DISPCONV_BUFFER_COUNT>& place,
            const std::array<std::vector<uint8_t>, DISPCONV_BUFFER_COUNT>& contents) {
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
            sizes[b] = place[b].touched() ? place[b].size() : 0;
            bytes[b].reset(new uint8_t[sizes[b]]);
            if (sizes[b]) std::memcpy(bytes[b].get(), contents[b].data(), sizes[b]);
            pointers[b] = bytes[b].get() + (place[b].touched() ? place[b].origin() : 0);
        }
    }
    std::array<Region, DISPCONV_BUFFER_COUNT> regions(const std::array<Placement, DISPCONV_BUFFER_COUNT>& place) {
        std::array<Region, DISPCONV_BUFFER_COUNT> r;
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
            r[b] = Region(std::span<uint8_t>(bytes[b].get(), sizes[b]), place[b].touched() ? place[b].origin() : 0);
        return r;
    }
    bool same(int b, const std::vector<uint8_t>& v, size_t* at) const {
        for (size_t i = 0; i < sizes[b]; ++i)
            if (bytes[b][i] != v[i]) return *at = i, false;
        return true;
    }
};

// ------------------------------------------------------------------------------------------
// Reporting
// ------------------------------------------------------------------------------------------

const CheckedCall* current = nullptr;

void print_call() {
    if (!current) return;
    const ajust_contrast_info& s = current->settings;
    std::fprintf(stderr, "call: %s\nsettings: gains %d %d offsets %d %d %d extra %d %d %d heights %d %d\n",
                 describe(*current).c_str(), s.luma_gain, s.chroma_gain, s.luma_offset, s.u_offset, s.v_offset,
                 s.luma_offset_extra, s.u_offset_extra, s.v_offset_extra, s.dst_plane_height, s.dst_luma_height);
}

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "\n==== kernel fuzz mismatch: %s\n", what.c_str());
    print_call();
    std::abort();
}

// An AddressSanitizer report (an access outside a buffer) names the call that made it.
void on_sanitizer_report(const char*) { print_call(); }

std::string where(int b, size_t at, const Placement& p) {
    return std::string(buffer_name(dispconv_buffer(b))) + " byte " + std::to_string(int64_t(at) - p.origin()) +
           " from the kernel's pointer";
}

// ------------------------------------------------------------------------------------------
// The checks
// ------------------------------------------------------------------------------------------

// Geometry outside the contract: the checked interface refuses alike and writes nothing.
void check_refused(const CheckedCall& c, dispconv_status status, const dispconv_footprint& fp) {
    if (!fp.problem) fail("refused footprint without a reason");
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
        if (hull(fp, b).begin != hull(fp, b).end) fail("refused footprint left ranges");
    constexpr size_t room = 256;
    std::array<Placement, DISPCONV_BUFFER_COUNT> place;
    std::array<std::vector<uint8_t>, DISPCONV_BUFFER_COUNT> contents;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        place[b].hull = {-int64_t(room / 2), int64_t(room / 2)};
        contents[b].assign(room, uint8_t(0xA5 + b));
    }
    Buffers buffers(place, contents);
    auto regions = buffers.regions(place);
    const Result r = run_checked(c, regions.data());
    if (int(r.status) != int(status))
        fail("footprint refused with status " + std::to_string(status) + " but the checked interface said " +
             describe(r));
    size_t at = 0;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
        if (!buffers.same(b, contents[b], &at)) fail("refused call wrote " + where(b, at, place[b]));
}

// A run's buffers against the reference: the same bytes, and nothing changed outside the write
// footprint.
void compare(const char* who, const Buffers& got, const Buffers& reference,
             const std::array<std::vector<uint8_t>, DISPCONV_BUFFER_COUNT>& pristine,
             const std::array<Placement, DISPCONV_BUFFER_COUNT>& place, const dispconv_footprint& fp) {
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        const Placement& p = place[b];
        for (size_t i = 0; i < got.sizes[b]; ++i) {
            if (got.bytes[b][i] != reference.bytes[b][i])
                fail(std::string(who) + " differs from portable at " + where(b, i, p) + " (" +
                     std::to_string(reference.bytes[b][i]) + " vs " + std::to_string(got.bytes[b][i]) + ")");
            const int64_t rel = int64_t(i) - p.origin();
            const bool writable = rel >= fp.write[b].begin && rel < fp.write[b].end;
            if (!writable && got.bytes[b][i] != pristine[b][i])
                fail(std::string(who) + " wrote outside the write footprint at " + where(b, i, p));
        }
    }
}

void check_accepted(FuzzedDataProvider& in, const CheckedCall& c, const dispconv_footprint& fp) {
    // Each touched buffer exact, a byte short at one end, or with room around it.
    std::array<Placement, DISPCONV_BUFFER_COUNT> place;
    size_t total = 0;
    bool covered = true;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        place[b].hull = hull(fp, b);
        if (!place[b].touched()) continue;
        switch (in.ConsumeIntegralInRange(0, 31)) {
            case 31: place[b].front = -1; break;
            case 30: place[b].back = -1; break;
            case 29: place[b].front = in.ConsumeIntegralInRange(1, 64); break;
            case 28: place[b].back = in.ConsumeIntegralInRange(1, 64); break;
            case 27: place[b].front = 1, place[b].back = 1; break;
            default: break;
        }
        covered = covered && place[b].covers();
        total += place[b].size();
    }
    if (total > (size_t(32) << 20)) return;  // keep each run cheap

    const Contents contents = draw_contents(in, c);
    std::array<std::vector<uint8_t>, DISPCONV_BUFFER_COUNT> pristine;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        pristine[b].resize(place[b].touched() ? place[b].size() : 0);
        fill(pristine[b], contents, b, c.kernel);
    }

    Buffers checked(place, pristine);
    auto regions = checked.regions(place);
    MixInfo checked_after;
    const Result r = run_checked(c, regions.data(), &checked_after);
    if (!covered) {
        if (r) fail("the checked interface accepted a buffer short of its footprint");
        const int b = r.buffer;
        if (b < 0 || b >= DISPCONV_BUFFER_COUNT || place[b].covers())
            fail("refused with " + describe(r) + ", which is not a short buffer");
        const Placement& p = place[b];
        const bool empty = p.size() == 0;
        if (r.status != (empty ? Status::empty_span : Status::short_buffer))
            fail("a short buffer refused as: " + describe(r));
        if (!empty && (r.missing_before != std::max<int64_t>(0, -p.front) ||
                       r.missing_after != std::max<int64_t>(0, -p.back)))
            fail("short buffer misreported: " + describe(r));
        size_t at = 0;
        for (int o = 0; o < DISPCONV_BUFFER_COUNT; ++o)
            if (!checked.same(o, pristine[o], &at)) fail("refused call wrote " + where(o, at, place[o]));
        return;
    }
    if (!r) fail("the checked interface refused buffers that cover the footprint: " + describe(r));
    const bool record = facts(c.kernel).shape == Shape::record;

    std::unique_ptr<Buffers> reference;
    std::vector<std::ptrdiff_t> reference_record;
    for (int i = 0; i < isa_count; ++i) {
        const KernelTable* table = kernel_table(Isa(i));
        if (!table) continue;
        auto run = std::make_unique<Buffers>(place, pristine);
        MIX_INFO after{};
        run_raw(*table, c, run->pointers.data(), &after);
        const std::string who = isa_name(Isa(i));
        compare(who.c_str(), *run, reference ? *reference : *run, pristine, place, fp);
        const auto moves = record_moves(after, run->pointers.data());
        if (!reference) {
            reference = std::move(run), reference_record = moves;
        } else if (record && moves != reference_record) {
            fail(who + " left the record unlike portable");
        }
    }
    compare("the checked interface", checked, *reference, pristine, place, fp);
    if (record && record_moves(checked_after, regions.data()) != reference_record)
        fail("the checked interface left the record unlike portable");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    __asan_set_error_report_callback(on_sanitizer_report);
    std::istringstream list(std::getenv("FUZZ_KERNELS") ? std::getenv("FUZZ_KERNELS") : "");
    for (std::string name; std::getline(list, name, ',');) {
        const size_t before = allowed_kernels.size();
        for (int k = 0; k < DISPCONV_KERNEL_COUNT; ++k)
            if (kernel_name(dispconv_kernel(k)) == name) allowed_kernels.push_back(dispconv_kernel(k));
        if (allowed_kernels.size() == before && !name.empty()) {
            std::fprintf(stderr, "FUZZ_KERNELS: unknown kernel '%s'\n", name.c_str());
            std::exit(2);
        }
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    const CheckedCall c = draw_call(in);
    current = &c;
    get_contrast_data(const_cast<ajust_contrast_info*>(&c.settings));
    dispconv_footprint fp;
    const dispconv_status status = footprint_of(c, fp);
    if (status != DISPCONV_OK)
        check_refused(c, status, fp);
    else
        check_accepted(in, c, fp);
    current = nullptr;
    return 0;
}
