// Chooses the kernel table once, from the CPU's features.
#include <atomic>

#include "core/kernel_table.hpp"

namespace dispconv {

#define DISPCONV_DECLARE_ISA_TABLES(isa)          \
    const LoadKernels* load_kernels_##isa();       \
    const StretchKernels* stretch_kernels_##isa(); \
    const SubpictureKernels* subpicture_kernels_##isa(); \
    const MixKernels* mix_kernels_##isa();
#define DISPCONV_ISA_TABLE(isa) \
    KernelTable{load_kernels_##isa(), stretch_kernels_##isa(), subpicture_kernels_##isa(), mix_kernels_##isa()}

DISPCONV_DECLARE_ISA_TABLES(portable)
#if defined(DISPCONV_HAVE_SSE2)
DISPCONV_DECLARE_ISA_TABLES(sse2)
#endif
#if defined(DISPCONV_HAVE_AVX2)
DISPCONV_DECLARE_ISA_TABLES(avx2)
#endif

namespace {

bool cpu_supports(Isa isa) {
    // Normally done by a constructor in the runtime; repeated here (once, thread-safely) for a
    // kernel called from another library's constructor that runs first.
    [[maybe_unused]] static const bool cpu_model_ready = [] {
#if defined(__x86_64__) || defined(__i386__)
        __builtin_cpu_init();
#endif
        return true;
    }();
    switch (isa) {
        case Isa::portable:
            return true;
#if defined(__x86_64__) || defined(__i386__)
        case Isa::sse2:
            return __builtin_cpu_supports("sse2");
        case Isa::avx2:
            return __builtin_cpu_supports("avx2");
#endif
        default:
            return false;
    }
}

// Built on first use rather than as globals, so that a kernel called during static
// initialisation (before this file's globals would be set up) still finds its table.
const KernelTable* built_table(Isa isa) {
    switch (isa) {
        case Isa::portable: {
            static const KernelTable table = DISPCONV_ISA_TABLE(portable);
            return &table;
        }
#if defined(DISPCONV_HAVE_SSE2)
        case Isa::sse2: {
            static const KernelTable table = DISPCONV_ISA_TABLE(sse2);
            return &table;
        }
#endif
#if defined(DISPCONV_HAVE_AVX2)
        case Isa::avx2: {
            static const KernelTable table = DISPCONV_ISA_TABLE(avx2);
            return &table;
        }
#endif
        default:
            return nullptr;
    }
}

}  // namespace

const char* isa_name(Isa isa) {
    switch (isa) {
        case Isa::portable:
            return "portable";
        case Isa::sse2:
            return "sse2";
        case Isa::avx2:
            return "avx2";
    }
    return "unknown";
}

const KernelTable* kernel_table(Isa isa) {
    const KernelTable* table = built_table(isa);
    return table && cpu_supports(isa) ? table : nullptr;
}

namespace {
// Set only by the test suite, to run every test on one instruction set's kernels.
std::atomic<int> forced_isa{-1};
}  // namespace

void force_isa_for_testing(Isa isa) {
    if (kernel_table(isa)) forced_isa.store(static_cast<int>(isa), std::memory_order_relaxed);
}

namespace {
// The fastest instruction set this CPU supports, chosen once.
Isa best_isa() {
    static const Isa best = [] {
        for (int i = isa_count - 1; i > 0; --i)
            if (kernel_table(static_cast<Isa>(i))) return static_cast<Isa>(i);
        return Isa::portable;
    }();
    return best;
}
}  // namespace

Isa active_isa() {
    const int forced = forced_isa.load(std::memory_order_relaxed);
    return forced >= 0 ? static_cast<Isa>(forced) : best_isa();
}

const KernelTable& active_kernels() {
    static const KernelTable* const best = kernel_table(best_isa());
    const int forced = forced_isa.load(std::memory_order_relaxed);
    return forced >= 0 ? *kernel_table(static_cast<Isa>(forced)) : *best;
}

}  // namespace dispconv
