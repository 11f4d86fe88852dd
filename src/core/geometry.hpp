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

}  // namespace
}  // namespace dispconv
