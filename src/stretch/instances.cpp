// The stretch kernels instantiated on one instruction set's vocabulary (compiled once per set).
#include "core/isa_unit.hpp"
#include "stretch/walks.hpp"

namespace dispconv {

const StretchKernels* DISPCONV_ISA_FUNCTION(stretch_kernels)() {
    static constexpr StretchKernels table = {
#define DISPCONV_KERNEL(name, params, args) &kernels::name<Vocab>,
#include "stretch/kernels.def"
#undef DISPCONV_KERNEL
    };
    return &table;
}

}  // namespace dispconv
