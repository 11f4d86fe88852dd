// DISPCONV_TEST_ISA=portable|sse2|avx2 runs the whole suite with the exported kernels routed
// through that instruction set (CTest runs it once per instruction set besides the best one).
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/kernel_table.hpp"
#include "support/test_support.hpp"

namespace {

class ForcedIsa : public ::testing::Environment {
public:
    void SetUp() override {
        const char* wanted = std::getenv("DISPCONV_TEST_ISA");
        if (!wanted) return;
        for (int i = 0; i < dispconv::isa_count; ++i) {
            const auto isa = static_cast<dispconv::Isa>(i);
            if (std::string(wanted) != dispconv::isa_name(isa)) continue;
            ASSERT_NE(dispconv::kernel_table(isa), nullptr) << wanted << " is not built or not supported here";
            dispconv::force_isa_for_testing(isa);
            ASSERT_EQ(dispconv::active_isa(), isa);
            std::printf("exported kernels run on %s\n", wanted);
            return;
        }
        FAIL() << "unknown instruction set " << wanted;
    }
};

[[maybe_unused]] auto* const registered = ::testing::AddGlobalTestEnvironment(new ForcedIsa);

}  // namespace
