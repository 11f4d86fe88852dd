// The instruction set as a caller chooses it.
#include "dispconv.hpp"
#include "support/test_support.hpp"

namespace {

uint32_t highest_bit(uint32_t bits) { return bits ? 1u << (31 - __builtin_clz(bits)) : 0; }

TEST(Isa, MaskSelectsTheBestAvailableSetWithinIt) {
    const uint32_t available = dispconv_isa_available();
    const uint32_t known = DISPCONV_ISA_SSE2 | DISPCONV_ISA_AVX2 | DISPCONV_ISA_AVX512 | DISPCONV_ISA_NEON;
    EXPECT_EQ(available & ~known, 0u);
    EXPECT_EQ(dispconv_set_isa_mask(0), 0u);
    EXPECT_EQ(dispconv_set_isa_mask(~0u), highest_bit(available));
    EXPECT_EQ(dispconv_set_isa_mask(0x80000000u), 0u) << "unknown bits are ignored";
    EXPECT_EQ(dispconv_set_isa_mask(known & ~available), 0u) << "only unavailable sets: portable";
    for (const dispconv::IsaName& n : dispconv::isa_names) {
        if (!(available & n.bit)) continue;
        EXPECT_EQ(dispconv_set_isa_mask(n.bit | 0x80000000u), n.bit) << n.name;
        EXPECT_EQ(dispconv_set_isa_mask((n.bit << 1) - 1), n.bit) << n.name << " and the sets below it";
    }
    dispconv_set_isa_mask(dispconv::test::suite_isa_mask);
}

}  // namespace
