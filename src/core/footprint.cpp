// dispconv_get_footprint: hands each call to its family's footprint.
#include "core/footprint.hpp"

#include "core/kernel_table.hpp"

namespace {

// Every kernel of the tables has its identifier, in family order.
constexpr int family_of(dispconv_kernel k) {
    if (k <= DISPCONV_KERNEL_loadimage_rgb16_ajust) return 0;
    if (k <= DISPCONV_KERNEL_strech_opt_yuy2_ajust) return 1;
    if (k <= DISPCONV_KERNEL_RelaceMaskWithColorKey) return 2;
    return 3;
}
#define DISPCONV_KERNEL(name, params, args) +1
static_assert(DISPCONV_KERNEL_COUNT == 0
#include "load/kernels.def"
#include "stretch/kernels.def"
#include "subpicture/kernels.def"
#include "mix/kernels.def"
              , "one identifier per kernel");
#undef DISPCONV_KERNEL
#define DISPCONV_KERNEL(name, params, args) static_assert(family_of(DISPCONV_KERNEL_##name) == FAMILY);
#define FAMILY 0
#include "load/kernels.def"
#undef FAMILY
#define FAMILY 1
#include "stretch/kernels.def"
#undef FAMILY
#define FAMILY 2
#include "subpicture/kernels.def"
#undef FAMILY
#define FAMILY 3
#include "mix/kernels.def"
#undef FAMILY
#undef DISPCONV_KERNEL

}  // namespace

extern "C" dispconv_status dispconv_get_footprint(const dispconv_call* call,
                                                  dispconv_footprint* footprint) {
    dispconv_footprint ignored;
    dispconv::FootprintBuilder f(footprint ? *footprint : ignored);
    if (!call || call->kernel < 0 || call->kernel >= DISPCONV_KERNEL_COUNT)
        return f.refuse(DISPCONV_BAD_ARGUMENT, "unknown kernel");
    switch (family_of(call->kernel)) {
        case 0:
            return dispconv::load_footprint(*call, f);
        case 1:
            return dispconv::stretch_footprint(*call, f);
        case 2:
            return dispconv::subpicture_footprint(*call, f);
        default:
            return dispconv::mix_footprint(*call, f);
    }
}
