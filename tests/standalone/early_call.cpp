// Kernels called from a static constructor, before the library's own initialisation may have
// run (the library is linked statically after this object, so its initialisers come later):
// they must still find their kernel table and work. Nothing has set the adjust constants yet,
// so they are zero and the adjusting kernel turns every sample to 0.
#include <cstdint>
#include <cstdio>

#include "dispconv.h"

namespace {

struct EarlyCall {
    uint8_t src[64], dst[64], adjusted[64];
    EarlyCall() {
        for (int i = 0; i < 64; ++i) src[i] = static_cast<uint8_t>(3 * i + 1), dst[i] = 0, adjusted[i] = 1;
        LoadYUY2_YUY2(src, nullptr, nullptr, dst, 16, 2, 16, 32, nullptr);
        LoadYUY2_YUY2_adjust(src, nullptr, nullptr, adjusted, 16, 2, 16, 32, nullptr);
    }
};
EarlyCall early;

}  // namespace

int main() {
    // Row 0 is copied; row 1 keeps its own luma and takes the chroma of row 0.
    for (int i = 0; i < 64; ++i) {
        const int want = i < 32 || i % 2 == 0 ? early.src[i] : early.src[i - 32];
        if (early.dst[i] != want || early.adjusted[i] != 0) {
            std::printf("byte %d is %d and %d adjusted, expected %d and 0\n", i, early.dst[i], early.adjusted[i], want);
            return 1;
        }
    }
    std::printf("kernels called during static initialisation worked, the adjusting one with zero constants\n");
    return 0;
}
