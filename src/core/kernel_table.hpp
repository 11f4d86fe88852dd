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
enum class Isa : int { portable = 0, sse2 = 1, avx2 = 2 };
inline constexpr int isa_count = 3;
const char* isa_name(Isa isa);

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
    const LoadKernels* load;
    const StretchKernels* stretch;
    const SubpictureKernels* subpicture;
    const MixKernels* mix;
};

// The table of one instruction set, or null when it was not built or this CPU lacks it.
const KernelTable* kernel_table(Isa isa);
// The fastest table this CPU supports, chosen once, thread-safely, on first use.
const KernelTable& active_kernels();
Isa active_isa();
// Tests only: route the exported kernels through another built, supported instruction set.
void force_isa_for_testing(Isa isa);

}  // namespace dispconv
