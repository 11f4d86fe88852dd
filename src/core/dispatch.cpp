// Chooses the kernel table: the fastest set this CPU runs, on first use, or the best one within
// the mask a caller sets.
#include <atomic>

#include "core/kernel_table.hpp"

namespace dispconv {

#define DISPCONV_DECLARE_ISA_TABLES(isa)          \
    const LoadKernels* load_kernels_##isa();       \
    const StretchKernels* stretch_kernels_##isa(); \
    const SubpictureKernels* subpicture_kernels_##isa(); \
    const MixKernels* mix_kernels_##isa();
#define DISPCONV_ISA_TABLE(isa)                                                                 \
    KernelTable{Isa::isa, load_kernels_##isa(), stretch_kernels_##isa(), subpicture_kernels_##isa(), \
                mix_kernels_##isa()}

DISPCONV_DECLARE_ISA_TABLES(portable)
#if defined(DISPCONV_HAVE_SSE2)
DISPCONV_DECLARE_ISA_TABLES(sse2)
#endif
#if defined(DISPCONV_HAVE_AVX2)
DISPCONV_DECLARE_ISA_TABLES(avx2)
#endif
#if defined(DISPCONV_HAVE_AVX512)
DISPCONV_DECLARE_ISA_TABLES(avx512)
#endif
#if defined(DISPCONV_HAVE_NEON)
DISPCONV_DECLARE_ISA_TABLES(neon)
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
        case Isa::avx512:
            return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
#endif
#if defined(__aarch64__)
        case Isa::neon:
            return true;  // part of every aarch64 processor
#endif
        default:
            return false;
    }
}

// A family's table with the listed kernels taken from another set's table.
template <auto... Kernels, class Family>
[[maybe_unused]] Family taking(Family table, const Family* from) {
    ((table.*Kernels = from->*Kernels), ...);
    return table;
}

#if defined(DISPCONV_HAVE_AVX2) && defined(DISPCONV_HAVE_SSE2)
// The AVX2 table. The YV12 to YUY2 loader ran 3-5% faster at 720x480 on SSE2 than on AVX2
// (dispconv_bench, three runs; the same at 1920x1080, where memory bounds both): it only
// interleaves and stores, and the 256-bit steps add lane moves without saving time.
KernelTable avx2_table() {
    static const LoadKernels load = taking<&LoadKernels::loadimage_yuy2>(*load_kernels_avx2(), load_kernels_sse2());
    return {Isa::avx2, &load, stretch_kernels_avx2(), subpicture_kernels_avx2(), mix_kernels_avx2()};
}
#endif

#if defined(DISPCONV_HAVE_AVX512) && defined(DISPCONV_HAVE_AVX2)
// The AVX-512 table. The kernels listed here measured no faster on AVX-512 than on AVX2, or
// slower at one of the two sizes (dispconv_bench --isa=avx2,avx512 at 720x480 and 1920x1080,
// three runs): mostly copies and fills that memory bounds, and a few row walks that were 10-25%
// slower at 720x480. They keep their AVX2 versions, which also spares the processor's 512-bit
// power state where it buys nothing.
KernelTable avx512_table() {
    using L = LoadKernels;
    using S = StretchKernels;
    using P = SubpictureKernels;
    using M = MixKernels;
    static const L load = taking<&L::LoadYUY2_YUY2, &L::loadimage_yv12, &L::loadimage_yv12_ajust,
                                 &L::loadimage_half_yv12_ajust, &L::loadimage_yuy2_mono_ajust>(
        *load_kernels_avx512(), load_kernels_avx2());
    static const S stretch = taking<&S::strech_pic_2X2, &S::strech_picture_1X2_yuy2,
                                    &S::yuy2_strech_picture_2X2_yuy2_ajust>(*stretch_kernels_avx512(),
                                                                            stretch_kernels_avx2());
    static const P subpicture =
        taking<&P::LoadColorKeyRgb32, &P::LoadColorKeyRgb24, &P::LoadColorKeyRgb16, &P::Restore_RGB32_To_Alpha,
               &P::Restore_RGB24_To_Alpha, &P::Restore_RGB16_565_To_Alpha, &P::load_subpicture_alpha_rgb32,
               &P::load_subpicture_alpha_rgb24, &P::load_subpicture_alpha_rgb16_565>(*subpicture_kernels_avx512(),
                                                                                     subpicture_kernels_avx2());
    static const M mix = taking<&M::mix_ayv12_yv12_p, &M::mix_ayv12_yv12_p_ajust>(*mix_kernels_avx512(),
                                                                                 mix_kernels_avx2());
    return {Isa::avx512, &load, &stretch, &subpicture, &mix};
}
#endif

// Built on first use rather than as globals, so that a kernel called during static
// initialisation (before this file's globals would be set up) still finds its table.
const KernelTable* built_table(Isa isa) {
#define DISPCONV_TABLE_CASE(isa, make)     \
    case Isa::isa: {                       \
        static const KernelTable table = make; \
        return &table;                     \
    }
    switch (isa) {
        DISPCONV_TABLE_CASE(portable, DISPCONV_ISA_TABLE(portable))
#if defined(DISPCONV_HAVE_SSE2)
        DISPCONV_TABLE_CASE(sse2, DISPCONV_ISA_TABLE(sse2))
#endif
#if defined(DISPCONV_HAVE_AVX2) && defined(DISPCONV_HAVE_SSE2)
        DISPCONV_TABLE_CASE(avx2, avx2_table())
#elif defined(DISPCONV_HAVE_AVX2)
        DISPCONV_TABLE_CASE(avx2, DISPCONV_ISA_TABLE(avx2))
#endif
#if defined(DISPCONV_HAVE_AVX512) && defined(DISPCONV_HAVE_AVX2)
        DISPCONV_TABLE_CASE(avx512, avx512_table())
#elif defined(DISPCONV_HAVE_AVX512)
        DISPCONV_TABLE_CASE(avx512, DISPCONV_ISA_TABLE(avx512))
#endif
#if defined(DISPCONV_HAVE_NEON)
        DISPCONV_TABLE_CASE(neon, DISPCONV_ISA_TABLE(neon))
#endif
        default:
            return nullptr;
    }
#undef DISPCONV_TABLE_CASE
}

// The table the exported kernels use; null until the first call or dispconv_set_isa_mask.
// Constant-initialised, so usable during static initialisation.
std::atomic<const KernelTable*> current_table{nullptr};

// The best table built and supported here among the sets in mask (portable always qualifies).
const KernelTable* best_table(uint32_t mask) {
    for (int i = isa_count - 1; i > 0; --i) {
        const Isa isa = static_cast<Isa>(i);
        if (mask & isa_bit(isa))
            if (const KernelTable* table = kernel_table(isa)) return table;
    }
    return kernel_table(Isa::portable);
}

}  // namespace

const char* isa_name(Isa isa) {
    static constexpr const char* names[isa_count] = {"portable", "sse2", "avx2", "avx512", "neon"};
    const int i = static_cast<int>(isa);
    return i >= 0 && i < isa_count ? names[i] : "unknown";
}

const KernelTable* kernel_table(Isa isa) {
    const KernelTable* table = built_table(isa);
    return table && cpu_supports(isa) ? table : nullptr;
}

const KernelTable& active_kernels() {
    const KernelTable* table = current_table.load(std::memory_order_acquire);
    if (table) return *table;
    // First use: the default, every set. A concurrent dispconv_set_isa_mask wins.
    const KernelTable* best = best_table(~0u);
    return current_table.compare_exchange_strong(table, best, std::memory_order_acq_rel) ? *best : *table;
}

}  // namespace dispconv

extern "C" uint32_t dispconv_isa_available(void) {
    uint32_t bits = 0;
    for (int i = 1; i < dispconv::isa_count; ++i) {
        const auto isa = static_cast<dispconv::Isa>(i);
        if (dispconv::kernel_table(isa)) bits |= dispconv::isa_bit(isa);
    }
    return bits;
}

extern "C" uint32_t dispconv_set_isa_mask(uint32_t mask) {
    const dispconv::KernelTable* table = dispconv::best_table(mask);
    dispconv::current_table.store(table, std::memory_order_release);
    return dispconv::isa_bit(table->isa);
}
