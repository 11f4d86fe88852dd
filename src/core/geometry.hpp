// Loop geometry shared by the walks.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dispconv {
namespace {

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

}  // namespace
}  // namespace dispconv
