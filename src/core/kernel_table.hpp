// Per-instruction-set kernel tables. Each kernel family lists its kernels once, in
// <family>/kernels.def, as DISPCONV_KERNEL(name, parameters, arguments); the list generates the
// table type, the per-instruction-set instantiations and the exported entry points.
#pragma once

#include "dispconv.h"

#define DISPCONV_FRAME_ARGS (src_y, src_u, src_v, dst, width, height, src_stride, dst_stride, adjust)
#define DISPCONV_MIX_PARAMS (MIX_INFO * info)
#define DISPCONV_MIX_ARGS (info)

namespace dispconv {

// Instruction sets in order of preference; `portable` is the reference and always present.
enum class Isa : int { portable = 0, sse2 = 1, avx2 = 2, avx512 = 3, neon = 4 };
inline constexpr int isa_count = 5;
const char* isa_name(Isa isa);
// The set's DISPCONV_ISA_ bit (0 for portable): the enumerators follow the bits' order.
constexpr uint32_t isa_bit(Isa isa) { return isa == Isa::portable ? 0u : 1u << (static_cast<int>(isa) - 1); }
static_assert(isa_bit(Isa::sse2) == DISPCONV_ISA_SSE2 && isa_bit(Isa::avx2) == DISPCONV_ISA_AVX2 &&
              isa_bit(Isa::avx512) == DISPCONV_ISA_AVX512 && isa_bit(Isa::neon) == DISPCONV_ISA_NEON);

#define DISPCONV_KERNEL(name, params, args) void(*name) params;
struct LoadKernels {
#include "load/kernels.def"
};
struct StretchKernels {
#include "stretch/kernels.def"
};
struct SubpictureKernels {
#include "subpicture/kernels.def"
};
struct MixKernels {
#include "mix/kernels.def"
};
#undef DISPCONV_KERNEL

struct KernelTable {
    Isa isa;
    const LoadKernels* load;
    const StretchKernels* stretch;
    const SubpictureKernels* subpicture;
    const MixKernels* mix;
};

// The table of one instruction set, or null when it was not built or this CPU lacks it.
const KernelTable* kernel_table(Isa isa);
// The table the exported kernels use now: the fastest this CPU supports, chosen on first use,
// or the one dispconv_set_isa_mask chose.
const KernelTable& active_kernels();

}  // namespace dispconv
