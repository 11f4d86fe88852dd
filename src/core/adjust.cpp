#include "core/adjust.hpp"

#include <atomic>

#include "dispconv.h"

namespace dispconv { namespace {

// Relaxed atomics: a change of settings during a frame may take effect part-way through it,
// which is accepted, but it is never a data race.
struct SharedConstants {
    std::atomic<int16_t> luma_gain{0}, chroma_gain{0}, luma_offset{0}, u_offset{0}, v_offset{0};
};
SharedConstants shared_constants;

int16_t low16(uint32_t v) { return static_cast<int16_t>(static_cast<uint16_t>(v)); }
int16_t low16_sum(int32_t a, int32_t b) { return low16(static_cast<uint32_t>(a) + static_cast<uint32_t>(b)); }

}  // namespace

AdjustConstants load_adjust_constants() {
    constexpr auto relaxed = std::memory_order_relaxed;
    return {shared_constants.luma_gain.load(relaxed), shared_constants.chroma_gain.load(relaxed),
            shared_constants.luma_offset.load(relaxed), shared_constants.u_offset.load(relaxed),
            shared_constants.v_offset.load(relaxed)};
}

}  // namespace dispconv

extern "C" void get_contrast_data(void* settings) {
    using namespace dispconv;
    constexpr auto relaxed = std::memory_order_relaxed;
    const auto* s = static_cast<const ajust_contrast_info*>(settings);
    // Offsets are 16-bit sums that wrap, as the lanes they fill.
    shared_constants.luma_gain.store(low16(static_cast<uint32_t>(s->luma_gain)), relaxed);
    shared_constants.chroma_gain.store(low16(static_cast<uint32_t>(s->chroma_gain)), relaxed);
    shared_constants.luma_offset.store(low16_sum(s->luma_offset, s->luma_offset_extra), relaxed);
    shared_constants.u_offset.store(low16_sum(s->u_offset, s->u_offset_extra), relaxed);
    shared_constants.v_offset.store(low16_sum(s->v_offset, s->v_offset_extra), relaxed);
}
