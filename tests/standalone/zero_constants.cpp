// Before the first get_contrast_data() the adjust constants are zero, so an adjusting kernel
// turns every sample to 0. Needs a process of its own: nothing may set the constants first.
#include <cstdint>
#include <cstdio>

#include "dispconv.h"

int main() {
    uint8_t src[64], dst[64];
    for (int i = 0; i < 64; ++i) src[i] = static_cast<uint8_t>(100 + i);
    LoadYUY2_YUY2_adjust(src, nullptr, nullptr, dst, 16, 2, 16, 32, nullptr);
    for (int i = 0; i < 64; ++i) {
        if (dst[i] != 0) {
            std::printf("byte %d is %d, expected 0 before any settings\n", i, dst[i]);
            return 1;
        }
    }
    std::printf("adjusting kernel before any settings wrote zeros\n");
    return 0;
}
