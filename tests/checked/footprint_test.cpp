// Every kernel stays inside the footprint the library computes for it, reaches both of its ends,
// and the checked interface accepts exactly the calls whose footprint fits their spans.
#include <setjmp.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

#include "checked/checked_support.hpp"
#include "support/test_support.hpp"

namespace dispconv::test {
namespace {

std::vector<Isa> isas() {
    std::vector<Isa> v;
    for (int i = 0; i < isa_count; ++i)
        if (kernel_table(Isa(i))) v.push_back(Isa(i));
    return v;
}

// `bytes` usable bytes between two inaccessible pages, aligned to the start or the end; the
// pages go with the pointer.
using Guarded = std::unique_ptr<uint8_t, std::function<void(uint8_t*)>>;
Guarded guarded_bytes(size_t bytes, bool at_start) {
    const size_t page = size_t(sysconf(_SC_PAGESIZE)), pages = (bytes + page - 1) / page, total = (pages + 2) * page;
    auto* m = static_cast<uint8_t*>(mmap(nullptr, total, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (m == MAP_FAILED || (pages && mprotect(m + page, pages * page, PROT_READ | PROT_WRITE) != 0)) std::abort();
    return Guarded(at_start ? m + page : m + page + pages * page - bytes, [m, total](uint8_t*) { munmap(m, total); });
}

sigjmp_buf* fault_target = nullptr;
void on_fault(int) {
    if (fault_target) siglongjmp(*fault_target, 1);
    std::abort();
}

// Runs the call on one set with every touched buffer placed so that its footprint ends at (or
// starts right after) a guard page, `shrink` (a role, or -1) a byte short at that edge; true when
// it touched a guard page.
bool faults_at(const CheckedCall& c, const dispconv_footprint& fp, Isa isa, bool at_start, int shrink, uint32_t seed) {
    std::array<Guarded, DISPCONV_BUFFER_COUNT> bytes;
    std::array<uint8_t*, DISPCONV_BUFFER_COUNT> pointers{};
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        const dispconv_range h = hull(fp, b);
        if (h.begin == h.end) continue;
        const size_t n = size_t(h.end - h.begin) - (b == shrink ? 1 : 0);
        bytes[b] = guarded_bytes(n, at_start);
        fill_random(bytes[b].get(), n, seed * 31 + b);
        // At the start edge a shrunk buffer loses its first byte: the pointer moves back one.
        pointers[b] = bytes[b].get() - h.begin - (b == shrink && at_start ? 1 : 0);
    }
    // A fault abandons the kernel and comes back here.
    struct sigaction action{}, old_segv{}, old_bus{};
    action.sa_handler = on_fault;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_NODEFER;
    sigaction(SIGSEGV, &action, &old_segv);
    sigaction(SIGBUS, &action, &old_bus);
    sigjmp_buf target;
    fault_target = &target;
    const bool faulted = sigsetjmp(target, 1) != 0;
    if (!faulted) run_raw(*kernel_table(isa), c, pointers.data());
    fault_target = nullptr;
    sigaction(SIGSEGV, &old_segv, nullptr);
    sigaction(SIGBUS, &old_bus, nullptr);
    return faulted;
}

// Each footprint placed against a guard page at either end: no implementation faults.
TEST(Footprint, KernelsStayInsideTheirFootprints) {
    uint32_t runs = 0;
    for (const CheckedCall& c : contract_calls()) {
        dispconv_footprint fp;
        ASSERT_EQ(footprint_of(c, fp), DISPCONV_OK) << describe(c);
        for (Isa isa : isas())
            for (bool at_start : {false, true})
                ASSERT_FALSE(faults_at(c, fp, isa, at_start, -1, runs++))
                    << describe(c) << " on " << isa_name(isa) << " touched memory outside its footprint ("
                    << (at_start ? "before its start" : "after its end") << ")";
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// Restore_RGB24_To_Alpha is defined to load each pixel as the 32-bit word at its start and keep
// the next pixel's first byte, so the bitmap's first byte is read but never needed: none of our
// implementations loads it, yet callers must still provide it.
bool needed_by_no_implementation(const CheckedCall& c, int b, bool at_start) {
    return c.kernel == DISPCONV_KERNEL_Restore_RGB24_To_Alpha && b == DISPCONV_BUFFER_IMAGE && at_start;
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
            for (bool at_start : {false, true}) {
                if (needed_by_no_implementation(c, b, at_start)) continue;
                bool reached = false;
                for (Isa isa : isas()) reached = reached || faults_at(c, fp, isa, at_start, b, 7);
                if (reached) continue;
                const std::string what = describe(c) + ": the " + (at_start ? "first" : "last") +
                                         " byte of " + buffer_name(dispconv_buffer(b));
                EXPECT_FALSE(DISPCONV_REQUIRE_REACH) << "no implementation touches " << what;
                if (!DISPCONV_REQUIRE_REACH) std::printf("not reached by any implementation here: %s\n", what.c_str());
            }
        }
    }
}
#endif

// Every kernel has contract calls, touching the buffers the catalogue names. Each runs on
// buffers with room around their footprints (where a stray write shows), then with each buffer
// exactly its footprint, a byte short at either end, empty, or made from const bytes (refused
// where the kernel writes it).
TEST(Footprint, CheckedInterfaceAcceptsExactlyTheFootprint) {
    std::array<int, DISPCONV_KERNEL_COUNT> calls{};
    const Fill fill = [](int b, std::vector<uint8_t>& v) { fill_random(v.data(), v.size(), 3 + b); };
    const Placement room{16, 16}, variants[] = {{0, 0}, {-1, 0}, {0, -1}, {0, 0, true}, {0, 0, false, true}};
    for (const CheckedCall& c : contract_calls()) {
        dispconv_footprint fp;
        ASSERT_EQ(footprint_of(c, fp), DISPCONV_OK) << describe(c) << ": " << (fp.problem ? fp.problem : "");
        ++calls[c.kernel];
        Placements place;
        place.fill(room);
        EXPECT_EQ(check_accepted(c, fp, place, fill), "") << describe(c);
        uint32_t touched = 0;
        for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
            if (hull(fp, b).begin == hull(fp, b).end) continue;
            touched |= 1u << b;
            for (const Placement& v : variants) {
                place[b] = v;
                EXPECT_EQ(check_accepted(c, fp, place, fill), "")
                    << describe(c) << ", " << buffer_name(dispconv_buffer(b)) << " " << v.front << "/" << v.back
                    << (v.empty ? " empty" : "") << (v.read_only ? " const" : "");
            }
            place[b] = room;
        }
        EXPECT_EQ(touched, facts(c.kernel).buffers) << describe(c);
    }
    for (int k = 0; k < DISPCONV_KERNEL_COUNT; ++k)
        EXPECT_GE(calls[k], 2) << kernel_name(dispconv_kernel(k)) << " needs contract geometries";
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
    for (const BadCall& bad : bad_calls()) EXPECT_EQ(check_refused(bad.call, bad.expected), "") << describe(bad.call);
}

}  // namespace
}  // namespace dispconv::test
