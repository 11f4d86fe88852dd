// Behaviour every kernel of a kind shares, through the kernels the exported entry points use:
// what they refuse writes nothing, and an adjusting kernel under neutral settings writes what
// its plain twin writes.
#include "checked/checked_support.hpp"
#include "support/test_support.hpp"

namespace dispconv::test {
namespace {

// Every buffer the kernel touches, random, with the pointer in the middle of 64 KB.
struct Buffers {
    std::array<std::vector<uint8_t>, DISPCONV_BUFFER_COUNT> bytes;
    std::array<uint8_t*, DISPCONV_BUFFER_COUNT> pointers{};
    explicit Buffers(const KernelFacts& f) {
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
            if (!f.touches(b)) continue;
            bytes[b].resize(1 << 16);
            fill_random(bytes[b].data(), bytes[b].size(), 40 + b);
            pointers[b] = bytes[b].data() + (1 << 15);
        }
    }
};

TEST(Contract, RefusedHeightsAndLayoutsWriteNothing) {
    set_adjust(90, 40, -12, 30, 70);
    int refused = 0;
    for (int i = 0; i < DISPCONV_KERNEL_COUNT; ++i) {
        const auto k = dispconv_kernel(i);
        const KernelFacts& f = facts(k);
        std::vector<CheckedCall> calls;
        if (f.has(refuses_low))
            for (int32_t h : {f.min_height - 1, 0, -2}) calls.push_back(make_call(k, f.least_width, h, 8, 1, 0));
        if (k == DISPCONV_KERNEL_loadimage_yuy2_ajust)  // odd heights too
            for (int32_t h : {9, 11}) calls.push_back(make_call(k, f.least_width, h, 8, 1, 0));
        if (f.has(layout))  // compared unsigned: negative selectors are refused too
            for (int32_t l : {4, 7, -1, 1000}) calls.push_back(make_call(k, f.least_width + 16, f.min_height + 4, 8, 1, l));
        for (const CheckedCall& c : calls) {
            const Buffers before(f);
            Buffers after = before;
            for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
                if (f.touches(b)) after.pointers[b] = after.bytes[b].data() + (1 << 15);
            MIX_INFO record;
            run_raw(active_kernels(), c, after.pointers.data(), &record);
            EXPECT_EQ(before.bytes, after.bytes) << describe(c) << " wrote";
            EXPECT_EQ(record.height, c.info.height) << describe(c);
            EXPECT_EQ(record.sub_y, after.pointers[DISPCONV_BUFFER_SUB_Y]) << describe(c) << " moved a pointer";
            ++refused;
        }
    }
    EXPECT_GT(refused, 60);
}

TEST(Contract, AdjustingKernelsUnderNeutralSettingsEqualTheirPlainTwins) {
    set_adjust();
    int twins = 0;
    for (int i = 0; i < DISPCONV_KERNEL_COUNT; ++i) {
        const auto k = dispconv_kernel(i);
        const KernelFacts& f = facts(k);
        if (f.plain == DISPCONV_KERNEL_COUNT) continue;
        for (int layout = 0; layout < (f.has(layout) ? 4 : 1); ++layout) {
            const CheckedCall c = make_call(k, f.least_width + f.block, f.min_height + 3, 8, 1, layout);
            CheckedCall p = c;
            p.kernel = f.plain;
            Buffers adjusted(f), plain(f);
            for (Buffers* b : {&adjusted, &plain})
                for (uint8_t& o : b->bytes[DISPCONV_BUFFER_SUB_OPACITY]) o %= 17;
            run_raw(active_kernels(), c, adjusted.pointers.data());
            run_raw(active_kernels(), p, plain.pointers.data());
            EXPECT_EQ(adjusted.bytes, plain.bytes) << describe(c) << " and " << kernel_name(f.plain);
            ++twins;
        }
    }
    EXPECT_GE(twins, 13);
}

}  // namespace
}  // namespace dispconv::test
