// Every kernel stays inside the footprint the library computes for it, reaches both of its ends,
// and the checked interface accepts exactly the calls whose footprint fits their spans.
#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <random>

#include "checked/checked_support.hpp"
#include "support/test_support.hpp"

namespace dispconv::test {
namespace {

constexpr uint8_t canary = 0xA5;

bool written_by(const dispconv_footprint& fp, int b) { return fp.write[b].begin != fp.write[b].end; }

// Sources random, written buffers canary (random where the kernel also reads them).
void fill(uint8_t* p, size_t n, const dispconv_footprint& fp, int b, uint32_t seed) {
    const bool random = !written_by(fp, b) || fp.read[b].begin != fp.read[b].end;
    std::mt19937 rng(seed * 31 + b);
    for (size_t i = 0; i < n; ++i) p[i] = random ? uint8_t(rng()) : canary;
}

std::vector<Isa> isas() {
    std::vector<Isa> v;
    for (int i = 0; i < isa_count; ++i)
        if (kernel_table(Isa(i))) v.push_back(Isa(i));
    return v;
}

// One buffer per touched role, `size` bytes from `start`, with the kernel's pointer at `origin`.
struct Placed {
    std::array<std::unique_ptr<GuardedBytes>, DISPCONV_BUFFER_COUNT> bytes;
    std::array<uint8_t*, DISPCONV_BUFFER_COUNT> pointers{};
};

// Places every touched buffer so that its footprint ends at (or starts right after) a guard
// page; `shrink` (a role, or -1) gets one byte less at that edge.
Placed place(const dispconv_footprint& fp, GuardedBytes::Edge edge, int shrink, uint32_t seed) {
    Placed p;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        const dispconv_range h = hull(fp, b);
        if (h.begin == h.end) continue;
        const size_t n = size_t(h.end - h.begin) - (b == shrink ? 1 : 0);
        p.bytes[b] = std::make_unique<GuardedBytes>(n, edge);
        fill(p.bytes[b]->data(), n, fp, b, seed);
        // At the start edge a shrunk buffer loses its first byte: the pointer moves back one.
        p.pointers[b] = p.bytes[b]->data() - h.begin - (b == shrink && edge == GuardedBytes::at_start ? 1 : 0);
    }
    return p;
}

struct RawRun {
    const KernelTable* table;
    const CheckedCall* call;
    uint8_t* const* pointers;
};
void raw_body(void* context) {
    auto* r = static_cast<RawRun*>(context);
    run_raw(*r->table, *r->call, r->pointers);
}

// Every kernel has contract calls, accepted, touching the buffers the catalogue names.
TEST(Footprint, EveryKernelHasContractCallsAndTheyAreAccepted) {
    std::array<int, DISPCONV_KERNEL_COUNT> calls{};
    for (const CheckedCall& c : contract_calls()) {
        dispconv_footprint fp;
        ASSERT_EQ(footprint_of(c, fp), DISPCONV_OK) << describe(c) << ": " << (fp.problem ? fp.problem : "");
        uint32_t touched = 0;
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
            if (hull(fp, b).begin != hull(fp, b).end) touched |= 1u << b;
        EXPECT_EQ(touched, facts(c.kernel).buffers) << describe(c);
        ++calls[c.kernel];
    }
    for (int k = 0; k < DISPCONV_KERNEL_COUNT; ++k)
        EXPECT_GE(calls[k], 2) << kernel_name(dispconv_kernel(k)) << " needs contract geometries";
}

// Each footprint placed against a guard page at either end: no implementation faults.
TEST(Footprint, KernelsStayInsideTheirFootprints) {
    int runs = 0;
    for (const CheckedCall& c : contract_calls()) {
        dispconv_footprint fp;
        ASSERT_EQ(footprint_of(c, fp), DISPCONV_OK) << describe(c);
        for (Isa isa : isas())
            for (auto edge : {GuardedBytes::at_end, GuardedBytes::at_start}) {
                Placed p = place(fp, edge, -1, uint32_t(runs));
                RawRun r{kernel_table(isa), &c, p.pointers.data()};
                ASSERT_FALSE(faults(raw_body, &r))
                    << describe(c) << " on " << isa_name(isa) << " touched memory outside its footprint ("
                    << (edge == GuardedBytes::at_end ? "after its end" : "before its start") << ")";
                ++runs;
            }
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// Restore_RGB24_To_Alpha is defined to load each pixel as the 32-bit word at its start and keep
// the next pixel's first byte, so the bitmap's first byte is read but never needed: none of our
// implementations loads it, yet callers must still provide it.
bool needed_by_no_implementation(const CheckedCall& c, int b, GuardedBytes::Edge edge) {
    return c.kernel == DISPCONV_KERNEL_Restore_RGB24_To_Alpha && b == DISPCONV_BUFFER_IMAGE &&
           edge == GuardedBytes::at_start;
}

// One byte less at either end of any buffer and some implementation touches the guard page: the
// footprint claims no byte the kernels never reach. The portable kernels need not load whole
// blocks (and the optimiser drops loads they do not use), so an edge only the SIMD sets reach is
// proven only where one is built: edges no implementation here reaches are listed, and fail only
// in builds that promise every edge reached (DISPCONV_REQUIRE_REACH: x86 with AVX2).
TEST(Footprint, KernelsReachBothEndsOfTheirFootprints) {
    for (const CheckedCall& c : contract_calls()) {
        dispconv_footprint fp;
        ASSERT_EQ(footprint_of(c, fp), DISPCONV_OK) << describe(c);
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
            if (hull(fp, b).begin == hull(fp, b).end) continue;
            for (auto edge : {GuardedBytes::at_end, GuardedBytes::at_start}) {
                if (needed_by_no_implementation(c, b, edge)) continue;
                bool reached = false;
                for (Isa isa : isas()) {
                    Placed p = place(fp, edge, b, 7);
                    RawRun r{kernel_table(isa), &c, p.pointers.data()};
                    reached = reached || faults(raw_body, &r);
                }
                if (reached) continue;
                const std::string what = describe(c) + ": the " + (edge == GuardedBytes::at_end ? "last" : "first") +
                                         " byte of " + buffer_name(dispconv_buffer(b));
                EXPECT_FALSE(DISPCONV_REQUIRE_REACH) << "no implementation touches " << what;
                if (!DISPCONV_REQUIRE_REACH) std::printf("not reached by any implementation here: %s\n", what.c_str());
            }
        }
    }
}
#endif

// Buffers of exactly the footprint's size, with room around them to see stray writes.
struct Exact {
    static constexpr size_t pad = 64;
    std::array<std::vector<uint8_t>, DISPCONV_BUFFER_COUNT> bytes;
    std::array<dispconv_range, DISPCONV_BUFFER_COUNT> hulls{};

    Exact(const dispconv_footprint& fp, uint32_t seed) {
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
            hulls[b] = hull(fp, b);
            const size_t n = size_t(hulls[b].end - hulls[b].begin);
            if (!n) continue;
            bytes[b].assign(n + 2 * pad, canary);
            fill(bytes[b].data() + pad, n, fp, b, seed);
        }
    }
    size_t size(int b) const { return bytes[b].empty() ? 0 : bytes[b].size() - 2 * pad; }
    uint8_t* pointer(int b) { return bytes[b].empty() ? nullptr : bytes[b].data() + pad - hulls[b].begin; }
    // The region of exactly the footprint, optionally losing a byte at one end, or const.
    Region region(int b, int lose_front = 0, int lose_back = 0, bool read_only = false) {
        if (bytes[b].empty()) return {};
        std::span<uint8_t> s(bytes[b].data() + pad + lose_front, size(b) - lose_front - lose_back);
        const std::ptrdiff_t origin = -hulls[b].begin - lose_front;
        if (read_only) return Region(std::span<const uint8_t>(s), origin);
        return Region(s, origin);
    }
};

::testing::AssertionResult unchanged(const Exact& before, const Exact& after) {
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
        if (before.bytes[b] != after.bytes[b])
            return ::testing::AssertionFailure() << buffer_name(dispconv_buffer(b)) << " was written";
    return ::testing::AssertionSuccess();
}

// An accepted call writes what the raw kernel writes, and only inside the footprint; each
// buffer one byte short at either end, empty, or const where it is written is refused with
// nothing written.
TEST(Footprint, CheckedInterfaceAcceptsExactlyTheFootprint) {
    for (const CheckedCall& c : contract_calls()) {
        dispconv_footprint fp;
        ASSERT_EQ(footprint_of(c, fp), DISPCONV_OK) << describe(c);
        const Exact pristine(fp, 3);

        Exact checked = pristine;
        std::array<Region, DISPCONV_BUFFER_COUNT> regions;
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) regions[b] = checked.region(b);
        MixInfo after;
        const Result r = run_checked(c, regions.data(), &after);
        ASSERT_TRUE(r) << describe(c) << ": " << describe(r);

        Exact raw = pristine;
        std::array<uint8_t*, DISPCONV_BUFFER_COUNT> pointers{};
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) pointers[b] = raw.pointer(b);
        MIX_INFO raw_after;
        run_raw(active_kernels(), c, pointers.data(), &raw_after);
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
            ASSERT_EQ(checked.bytes[b], raw.bytes[b]) << describe(c) << ": " << buffer_name(dispconv_buffer(b))
                                                      << " differs from the raw kernel's, or was written outside its footprint";
        // Untouched roles have no pointer on either side, so their moves compare as equal.
        EXPECT_EQ(record_moves(after, regions.data()), record_moves(raw_after, pointers.data())) << describe(c);

        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
            if (!pristine.size(b)) continue;
            struct Variant {
                const char* kind;
                int front, back;
                bool read_only, empty;
                Status status;
            };
            const Variant variants[] = {{"short at the end", 0, 1, false, false, Status::short_buffer},
                                        {"short at the start", 1, 0, false, false, Status::short_buffer},
                                        {"empty span", 0, 0, false, true, Status::empty_span},
                                        {"const written buffer", 0, 0, true, false, Status::read_only}};
            for (const Variant& v : variants) {
                if (v.read_only && !written_by(fp, b)) continue;
                Exact work = pristine;
                for (int o = 0; o < DISPCONV_BUFFER_COUNT; ++o) regions[o] = work.region(o);
                regions[b] = v.empty ? Region(std::span<uint8_t>()) : work.region(b, v.front, v.back, v.read_only);
                const Result bad = run_checked(c, regions.data());
                EXPECT_EQ(bad.status, v.status) << describe(c) << ", " << buffer_name(dispconv_buffer(b)) << " "
                                                << v.kind << ": " << describe(bad);
                EXPECT_EQ(bad.buffer, b) << describe(c) << ", " << v.kind;
                if (v.status == Status::short_buffer) {
                    EXPECT_EQ(bad.missing_before, v.front) << describe(c);
                    EXPECT_EQ(bad.missing_after, v.back) << describe(c);
                }
                EXPECT_TRUE(unchanged(pristine, work)) << describe(c) << ", " << v.kind;
            }
        }
    }
}

// The record kernels and the frame-descriptor stretcher refuse to run without their record.
TEST(Footprint, MissingRecordsAreRefused) {
    for (int k = 0; k < DISPCONV_KERNEL_COUNT; ++k) {
        const auto kernel = dispconv_kernel(k);
        if (facts(kernel).shape != Shape::record && facts(kernel).shape != Shape::edge_directed) continue;
        dispconv_call call{};
        call.kernel = kernel, call.width = 64, call.height = 16, call.dst_stride = 256;
        dispconv_footprint fp;
        EXPECT_EQ(dispconv_get_footprint(&call, &fp), DISPCONV_BAD_ARGUMENT) << kernel_name(kernel);
        EXPECT_NE(fp.problem, nullptr);
    }
}

// Geometries outside the contract are refused before any buffer is looked at.
TEST(Footprint, GeometriesOutsideTheContractAreRefused) {
    for (const BadCall& bad : bad_calls()) {
        dispconv_footprint fp;
        EXPECT_EQ(int(footprint_of(bad.call, fp)), int(bad.expected)) << describe(bad.call);
        EXPECT_NE(fp.problem, nullptr) << describe(bad.call);
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
            EXPECT_EQ(hull(fp, b).begin, hull(fp, b).end) << describe(bad.call) << ": ranges left on refusal";

        // Generous buffers: only the geometry can make the call fail.
        constexpr size_t room = size_t(1) << 16;
        std::array<std::vector<uint8_t>, DISPCONV_BUFFER_COUNT> bytes;
        std::array<Region, DISPCONV_BUFFER_COUNT> regions;
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
            bytes[b].assign(room, canary);
            regions[b] = Region(bytes[b], room / 2);
        }
        const Result r = run_checked(bad.call, regions.data());
        EXPECT_EQ(r.status, bad.expected) << describe(bad.call) << ": " << describe(r);
        EXPECT_NE(r.problem, nullptr);
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
            EXPECT_EQ(std::count(bytes[b].begin(), bytes[b].end(), canary), ptrdiff_t(room))
                << describe(bad.call) << ": " << buffer_name(dispconv_buffer(b)) << " written";
    }
}

}  // namespace
}  // namespace dispconv::test
