// Shared machinery of the footprint tests, the cross check, the threads test and the kernel fuzzer:
// one description of a call that can be sent through the checked C++ interface or through any
// instruction set's raw kernel, the checks of an accepted and of a refused call and of every set
// against portable, and buffers that end (or start) exactly at an inaccessible page.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/kernel_table.hpp"
#include "dispconv.hpp"
#include "support/catalogue.hpp"

namespace dispconv::test {

// A call: the kernel, every argument that decides its footprint, and the values that do not.
struct CheckedCall {
    dispconv_kernel kernel{};
    int32_t width = 0, height = 0, src_stride = 0, dst_stride = 0, plane = 0, start_line = 0;
    MIX_INFO info{};                 // record kernels: the size and stride fields
    int32_t frame_structure = 0;     // strech_opt_yuy2_ajust
    int32_t frame_width = 0;
    ajust_contrast_info settings{};  // passed as `adjust` and as info.surface_format
    bool no_settings = false;        // pass null instead
    uint32_t color_key = 0, mask_value = 0, key_value = 0;
};

// A call outside the contract and the refusal it must get.
struct BadCall {
    CheckedCall call;
    Status expected;
};

std::string describe(const CheckedCall& c);

// The footprint the library computes for the call.
dispconv_status footprint_of(const CheckedCall& c, dispconv_footprint& fp);
// Hull of the reads and writes of one buffer (empty when untouched).
dispconv_range hull(const dispconv_footprint& fp, int buffer);

// Through one instruction set's kernel, pointers indexed by dispconv_buffer; `after` receives the
// record as the kernel leaves it (record kernels).
void run_raw(const KernelTable& t, const CheckedCall& c, uint8_t* const* pointers, MIX_INFO* after = nullptr);

// A call of kernel k: width, height, `pad` bytes (or pixels) more per row of each buffer,
// strides negated by `sign` where the kernel allows it.
CheckedCall make_call(dispconv_kernel k, int32_t width, int32_t height, int pad, int sign, int32_t layout);
// Every kernel's calls inside the contract (a spread of geometries per kernel) and outside it.
std::vector<CheckedCall> contract_calls();
std::vector<BadCall> bad_calls();

// Each touched buffer's bytes, and the index of the kernel's pointer in them.
struct Buffers {
    std::array<std::vector<uint8_t>, DISPCONV_BUFFER_COUNT> bytes;
    std::array<std::ptrdiff_t, DISPCONV_BUFFER_COUNT> origin{};
    std::array<uint8_t*, DISPCONV_BUFFER_COUNT> pointers();  // null for untouched buffers
};

// The raw kernel of every instruction set this CPU has, each on its own copy of `in`: every
// buffer whole and the record left (with its reserved words) must come out as portable leaves
// them, and where `fp` is given nothing may change outside its write footprint. Returns what went
// wrong, or ""; `portable` receives portable's run, `record` its record.
std::string same_on_every_isa(const CheckedCall& c, const Buffers& in, const dispconv_footprint* fp,
                              Buffers* portable = nullptr, std::vector<std::ptrdiff_t>* record = nullptr);

// How one buffer's span sits around its footprint's hull: `front` / `back` bytes added before /
// after it (negative: missing), or no bytes at all, or made from const bytes.
struct Placement {
    int64_t front = 0, back = 0;
    bool empty = false, read_only = false;
};
using Placements = std::array<Placement, DISPCONV_BUFFER_COUNT>;
using Fill = std::function<void(int buffer, std::vector<uint8_t>& bytes)>;

// Each buffer the footprint touches, sized to its hull, placed as `place` says and filled by `fill`.
Buffers footprint_buffers(const dispconv_footprint& fp, const Placements& place, const Fill& fill);

// A call inside the contract, each touched buffer its own allocation placed as `place` says and
// filled by `fill`. Where a buffer is short, empty, or const but written, the checked interface
// must refuse it, naming that buffer and the bytes missing, and write nothing. Otherwise it must
// write what portable writes (as every instruction set must), only inside the write footprint,
// and leave the record alike. Returns what went wrong, or "".
std::string check_accepted(const CheckedCall& c, const dispconv_footprint& fp, const Placements& place,
                           const Fill& fill);
// A call outside the contract: the footprint and the checked interface refuse it with `expected`,
// give a reason, leave no ranges and write nothing. Returns what went wrong, or "".
std::string check_refused(const CheckedCall& c, Status expected);

}  // namespace dispconv::test
