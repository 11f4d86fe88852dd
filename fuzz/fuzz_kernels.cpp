// Differential fuzzing of the kernels. Each input becomes one call of a catalogue kernel drawn
// near the edges of its contract (a width of a few blocks, sometimes a pixel or two off or
// realistic; heights from below the least up; rows padded or bottom-up; then now and then a
// field stepped off its value), with adjust settings and buffer contents, and goes through the
// footprint tests' checks:
//  - a refused footprint must be refused alike by the checked interface, with nothing written;
//  - otherwise every touched buffer is its own heap allocation sized around the footprint's
//    hull (exact, a byte short at either end, or larger), so that AddressSanitizer sees any
//    access outside it; the checked interface must refuse exactly the short buffers, and the
//    checked interface and the raw kernel of every instruction set this CPU has must write the
//    same bytes, only inside the write footprint, and leave the record alike.
// Any disagreement prints the call and aborts.
//
// FUZZ_KERNELS=name,name,... restricts the draw to those kernels.
#include <fuzzer/FuzzedDataProvider.h>
#include <sanitizer/asan_interface.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "checked/checked_support.hpp"

namespace {

using namespace dispconv;
using namespace dispconv::test;

std::vector<dispconv_kernel> allowed_kernels;

// The draws map a zero (what an exhausted input gives) to the most ordinary choice, so that short
// inputs make calls inside the contract and mutations step out of it.
CheckedCall draw_call(FuzzedDataProvider& in) {
    const auto k = allowed_kernels.empty()
                       ? dispconv_kernel(in.ConsumeIntegralInRange(0, DISPCONV_KERNEL_COUNT - 1))
                       : allowed_kernels[in.ConsumeIntegralInRange<size_t>(0, allowed_kernels.size() - 1)];
    const KernelFacts& f = facts(k);
    const int32_t blocks = in.ConsumeIntegralInRange(0, in.ConsumeIntegralInRange(0, 15) == 15 ? 130 : 6);
    const int32_t width = f.least_width + f.block * blocks + in.PickValueInArray({0, 0, 0, 1, -1, 2, -2});
    int32_t height = f.min_height + in.ConsumeIntegralInRange(0, 20);
    if (in.ConsumeIntegralInRange(0, 7) == 7) height = in.ConsumeIntegralInRange(-3, f.min_height);
    const int pad = in.ConsumeIntegralInRange(0, 7) == 7 ? in.ConsumeIntegralInRange(1, 64) : 0;
    CheckedCall c = make_call(k, width, height, pad, in.ConsumeIntegralInRange(0, 5) == 5 ? -1 : 1,
                              in.ConsumeIntegralInRange(0, 3));
    c.color_key = c.info.color_key = in.ConsumeIntegral<uint32_t>();
    c.mask_value = in.ConsumeIntegral<uint32_t>(), c.key_value = in.ConsumeIntegral<uint32_t>();
    // Picture settings: neutral, within the documented ranges, or any word (the low 16 bits wrap).
    for (int32_t ajust_contrast_info::*word :
         {&ajust_contrast_info::luma_gain, &ajust_contrast_info::chroma_gain, &ajust_contrast_info::luma_offset,
          &ajust_contrast_info::u_offset, &ajust_contrast_info::v_offset, &ajust_contrast_info::luma_offset_extra,
          &ajust_contrast_info::u_offset_extra, &ajust_contrast_info::v_offset_extra}) {
        const int kind = in.ConsumeIntegralInRange(0, 2);
        if (kind) c.settings.*word = kind == 1 ? in.ConsumeIntegralInRange(-300, 300) : in.ConsumeIntegral<int32_t>();
    }
    // Any argument stepped by a little or set to any value: strides around the row size, other
    // planes, start lines and structures, layouts, chroma placements, records' fields.
    int32_t* fields[] = {&c.width, &c.height, &c.src_stride, &c.dst_stride, &c.plane, &c.start_line,
                         &c.frame_structure, &c.frame_width, &c.info.width, &c.info.height, &c.info.frame_stride,
                         &c.info.sub_stride, &c.info.image_stride, &c.settings.rgb16_layout,
                         &c.settings.dst_luma_height, &c.settings.dst_plane_height};
    for (int n = in.ConsumeIntegralInRange(0, 3); n > 0; --n) {
        int32_t& field = *fields[in.ConsumeIntegralInRange<size_t>(0, std::size(fields) - 1)];
        field = in.ConsumeBool() ? int32_t(uint32_t(field) + uint32_t(in.ConsumeIntegralInRange(-40, 40)))
                                 : in.ConsumeIntegral<int32_t>();
    }
    c.no_settings = in.ConsumeIntegralInRange(0, 31) == 31;
    // One past the last kernel now and then: an unknown kernel must be refused too.
    if (allowed_kernels.empty() && in.ConsumeIntegralInRange(0, 63) == 63) c.kernel = DISPCONV_KERNEL_COUNT;
    return c;
}

// Buffer contents: random, one value, or a mix of the values the kernels branch on (keys, mask
// values, opacity levels, range limits).
Fill draw_contents(FuzzedDataProvider& in, const CheckedCall& c) {
    const int kind = in.ConsumeIntegralInRange(0, 3);
    const uint64_t seed = in.ConsumeIntegral<uint64_t>();
    const uint32_t key = c.info.color_key;
    const uint8_t fixed[8] = {uint8_t(c.mask_value), uint8_t(key), uint8_t(key >> 8), uint8_t(key >> 16), 0, 16, 128, 255};
    std::array<uint8_t, 8> alphabet;
    for (size_t i = 0; i < alphabet.size(); ++i) alphabet[i] = in.ConsumeBool() ? fixed[i] : in.ConsumeIntegral<uint8_t>();
    const bool mixer = c.kernel >= DISPCONV_KERNEL_mix_ayuy2_yuy2_p_ajust;
    return [=](int b, std::vector<uint8_t>& bytes) {
        fill_random(bytes.data(), bytes.size(), seed + uint64_t(b));
        for (uint8_t& x : bytes) {
            if (kind) x = alphabet[kind == 1 ? 0 : x & 7];
            // The mixers blend with weights 0..16; keep the opacity plane there unless drawn wide.
            if (mixer && b == DISPCONV_BUFFER_SUB_OPACITY && kind != 3) x %= 17;
        }
    };
}

const CheckedCall* current = nullptr;

void print_call() {
    if (!current) return;
    const ajust_contrast_info& s = current->settings;
    std::fprintf(stderr, "call: %s\nsettings: gains %d %d offsets %d %d %d extra %d %d %d heights %d %d\n",
                 describe(*current).c_str(), s.luma_gain, s.chroma_gain, s.luma_offset, s.u_offset, s.v_offset,
                 s.luma_offset_extra, s.u_offset_extra, s.v_offset_extra, s.dst_plane_height, s.dst_luma_height);
}

// An AddressSanitizer report (an access outside a buffer) names the call that made it.
void on_sanitizer_report(const char*) { print_call(); }

// Each touched buffer exact, a byte short at one end, or with room around it; "" where the
// buffers would be too large for a quick run.
std::string check_placed(FuzzedDataProvider& in, const CheckedCall& c, const dispconv_footprint& fp) {
    Placements place;
    size_t total = 0;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        const dispconv_range h = hull(fp, b);
        if (h.begin == h.end) continue;
        switch (in.ConsumeIntegralInRange(0, 31)) {
            case 31: place[b].front = -1; break;
            case 30: place[b].back = -1; break;
            case 29: place[b].front = in.ConsumeIntegralInRange(1, 64); break;
            case 28: place[b].back = in.ConsumeIntegralInRange(1, 64); break;
            case 27: place[b].front = 1, place[b].back = 1; break;
            default: break;
        }
        total += size_t(h.end - h.begin);
    }
    if (total > (size_t(32) << 20)) return "";
    return check_accepted(c, fp, place, draw_contents(in, c));
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
    const std::string problem = status != DISPCONV_OK ? check_refused(c, Status(status)) : check_placed(in, c, fp);
    if (!problem.empty()) {
        std::fprintf(stderr, "\n==== kernel fuzz mismatch: %s\n", problem.c_str());
        print_call();
        std::abort();
    }
    current = nullptr;
    return 0;
}
