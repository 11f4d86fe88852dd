// The mix kernels instantiated on one instruction set's vocabulary (compiled once per set).
#include "core/isa_unit.hpp"
#include "mix/walks.hpp"

#define DISPCONV_FAMILY mix
#define DISPCONV_FAMILY_TABLE MixKernels
#define DISPCONV_FAMILY_LIST "mix/kernels.def"
#include "core/family_table.inc"
