// The load kernels instantiated on one instruction set's vocabulary (compiled once per set).
#include "core/isa_unit.hpp"
#include "load/walks.hpp"

namespace dispconv {

const LoadKernels* DISPCONV_ISA_FUNCTION(load_kernels)() {
    static constexpr LoadKernels table = {
#define DISPCONV_KERNEL(name, params, args) &kernels::name<Vocab>,
#include "load/kernels.def"
#undef DISPCONV_KERNEL
    };
    return &table;
}

}  // namespace dispconv
