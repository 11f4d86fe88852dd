// Loop geometry shared by the walks.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dispconv { namespace {

// Iterations of a counter loop tested at the bottom: `do { ...; count -= step; } while the
// subtraction neither borrowed nor reached zero`. A zero count still runs once; a negative one
// (a caller error) is a huge unsigned count.
constexpr uint32_t loop_count(int32_t count, int32_t step) {
    const uint32_t c = static_cast<uint32_t>(count);
    const uint32_t s = static_cast<uint32_t>(step);
    return c <= s ? 1u : (c + s - 1u) / s;
}

// Byte pointer arithmetic with signed 32-bit steps, as the kernels' strides are.
inline uint8_t* at(void* p, ptrdiff_t offset) { return static_cast<uint8_t*>(p) + offset; }
inline const uint8_t* at(const void* p, ptrdiff_t offset) {
    return static_cast<const uint8_t*>(p) + offset;
}

// Whether runs of `bytes` written at a and b share a byte: then the stores must keep the
// reference's block-by-block order. The distance is taken modulo the address space: on 32-bit
// targets two rows of one surface may lie on either side of the 2 GiB line.
inline bool runs_overlap(const uint8_t* a, const uint8_t* b, ptrdiff_t bytes) {
    const uintptr_t d = reinterpret_cast<uintptr_t>(b) - reinterpret_cast<uintptr_t>(a);
    const uintptr_t distance = d < uintptr_t(0) - d ? d : uintptr_t(0) - d;
    return bytes > 0 && distance < uintptr_t(bytes);
}

// Runs run(first, count) over `blocks` blocks of two destination rows of `row_bytes`: all at
// once where the rows share no byte, else block by block, so that each block's two rows are
// stored before the next block's, the order the kernels define.
template <class Run>
void in_block_order(const uint8_t* d0, const uint8_t* d1, ptrdiff_t row_bytes, uint32_t blocks, Run&& run) {
    if (!runs_overlap(d0, d1, row_bytes)) return run(0u, blocks);
    for (uint32_t i = 0; i < blocks; ++i) run(i, 1u);
}

} }  // namespace dispconv
