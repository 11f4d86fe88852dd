// The subpicture kernels instantiated on one instruction set's vocabulary (compiled once per set).
#include "core/isa_unit.hpp"
#include "subpicture/walks.hpp"

namespace dispconv {

const SubpictureKernels* DISPCONV_ISA_FUNCTION(subpicture_kernels)() {
    static constexpr SubpictureKernels table = {
#define DISPCONV_KERNEL(name, params, args) &kernels::name<Vocab>,
#include "subpicture/kernels.def"
#undef DISPCONV_KERNEL
    };
    return &table;
}

}  // namespace dispconv
