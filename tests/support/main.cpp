// The suite's main: `--isa=NAME` runs every test with the exported kernels on that instruction
// set (CTest runs the suite once per set built), chosen through the public interface;
// `--seed=N` gives the cross check other inputs.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "dispconv.hpp"
#include "support/test_support.hpp"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--seed=", 7) == 0) dispconv::test::cross_seed = uint32_t(std::strtoul(argv[i] + 7, nullptr, 0));
        if (std::strncmp(argv[i], "--isa=", 6) != 0) continue;
        const char* wanted = argv[i] + 6;
        const dispconv::IsaName* found = nullptr;
        for (const dispconv::IsaName& n : dispconv::isa_names)
            if (std::strcmp(n.name, wanted) == 0) found = &n;
        if (!found) {
            std::fprintf(stderr, "--isa=%s: unknown instruction set\n", wanted);
            return 2;
        }
        if (found->bit && !(dispconv_isa_available() & found->bit)) {
            std::printf("%s is not built or not supported here: skipped\n", wanted);
            return 77;  // CTest's skip code for this test
        }
        dispconv::test::suite_isa_mask = found->bit;
        if (dispconv_set_isa_mask(found->bit) != found->bit) return 2;
        std::printf("exported kernels run on %s\n", wanted);
    }
    return RUN_ALL_TESTS();
}
