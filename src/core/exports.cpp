// The exported entry points: each forwards to the chosen instruction set's kernel.
#include "core/kernel_table.hpp"

#define DISPCONV_KERNEL(name, params, args) \
    extern "C" void name params { dispconv::active_kernels().load->name args; }
#include "load/kernels.def"
#undef DISPCONV_KERNEL

#define DISPCONV_KERNEL(name, params, args) \
    extern "C" void name params { dispconv::active_kernels().stretch->name args; }
#include "stretch/kernels.def"
#undef DISPCONV_KERNEL

#define DISPCONV_KERNEL(name, params, args) \
    extern "C" void name params { dispconv::active_kernels().subpicture->name args; }
#include "subpicture/kernels.def"
#undef DISPCONV_KERNEL

#define DISPCONV_KERNEL(name, params, args) \
    extern "C" void name params { dispconv::active_kernels().mix->name args; }
#include "mix/kernels.def"
#undef DISPCONV_KERNEL
