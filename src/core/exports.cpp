// The exported entry points: each forwards to the chosen instruction set's kernel.
#include "core/kernel_table.hpp"

#define DISPCONV_KERNEL(name, params, args) \
    extern "C" void name params { dispconv::active_kernels().DISPCONV_FAMILY->name args; }
#define DISPCONV_FAMILY load
#include "load/kernels.def"
#undef DISPCONV_FAMILY
#define DISPCONV_FAMILY stretch
#include "stretch/kernels.def"
#undef DISPCONV_FAMILY
#define DISPCONV_FAMILY subpicture
#include "subpicture/kernels.def"
#undef DISPCONV_FAMILY
#define DISPCONV_FAMILY mix
#include "mix/kernels.def"
#undef DISPCONV_FAMILY
#undef DISPCONV_KERNEL
