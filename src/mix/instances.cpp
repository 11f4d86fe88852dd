// The mix kernels instantiated on one instruction set's vocabulary (compiled once per set).
#include "core/isa_unit.hpp"
#include "mix/walks.hpp"

namespace dispconv {

const MixKernels* DISPCONV_ISA_FUNCTION(mix_kernels)() {
    static constexpr MixKernels table = {
#define DISPCONV_KERNEL(name, params, args) &kernels::name<Vocab>,
#include "mix/kernels.def"
#undef DISPCONV_KERNEL
    };
    return &table;
}

}  // namespace dispconv
