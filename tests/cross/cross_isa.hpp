// The cross-implementation check: every kernel run through the portable reference and every
// other instruction set this CPU has, on the same random input, into the same canary-filled
// arena; the whole arena (and any record the kernel updates) must come out byte-identical.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/kernel_table.hpp"
#include "support/test_support.hpp"

namespace dispconv::test {

// What one kernel call touches: a source arena of random bytes and a destination arena of
// canary (or random, for kernels that modify in place) bytes, plus the records.
struct Arenas {
    std::vector<uint8_t> src, dst;
    MIX_INFO info{};
    tagVideoFrame frame{};
    ajust_contrast_info settings{};
};

struct CrossCase {
    std::string name;      // kernel and geometry, printed on a mismatch
    size_t src_bytes = 0, dst_bytes = 0;
    bool random_dst = false;
    int dst_pitch = 0;     // for locating a difference as row and column of the surface
    size_t dst_origin = 0; // arena offset of the surface's first byte
    // Fills the records (pointers into the arenas) and calls the kernel of the given table.
    std::function<void(const KernelTable&, Arenas&)> run;
    // Record fields after the call, pointers as offsets into the arenas.
    std::function<std::vector<int64_t>(const Arenas&)> record;
};

// Room a walk needs around its first byte: `rows` rows whose starts are `step` apart, each
// touching `span` bytes from its start and `before` bytes ahead of it.
struct Extent {
    size_t before, after;
};
Extent extent(int rows, int64_t step, int64_t span, int64_t before = 0);

// Places planes one after another in an arena, each with a guard band of 64 bytes.
struct ArenaPlan {
    size_t size = 64;
    size_t place(const Extent& e) {
        const size_t origin = size + e.before;
        size = origin + e.after + 64;
        return origin;
    }
};

// The MIX_INFO record after a call, pointers as offsets into the arenas (a CrossCase::record).
std::vector<int64_t> mix_record(const Arenas& a);

// "kernel name value name value ...", for a case's name.
std::string describe(const std::string& kernel, std::initializer_list<std::pair<const char*, int64_t>> fields);

// Runs `c` on every instruction set and reports any difference from the portable result.
::testing::AssertionResult same_on_every_isa(const CrossCase& c, uint32_t seed);

// Adjust settings the cross checks cycle through (neutral, strong, wrapping, negative).
void load_cross_settings(int index);
inline constexpr int cross_settings_count = 4;

struct FrameGeometry {
    int width, height, src_stride, dst_stride;
    bool bottom_up = false;   // dst at the last row with a negative pitch
    int layout = 0;           // rgb16_layout
    int dst_rows = 0;         // destination rows the kernel may write (default 2 * height + 8)
};
// A case for a frame-signature kernel: planar Y, U, V (or packed YUY2 at src_y) in the source
// arena, the surface in the destination arena, each with generous room for the kernel's
// overruns.
CrossCase frame_case(const std::string& kernel, std::function<FrameKernel(const KernelTable&)> pick,
                     const FrameGeometry& g);

}  // namespace dispconv::test
