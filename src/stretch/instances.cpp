// The stretch kernels instantiated on one instruction set's vocabulary (compiled once per set).
#include "core/isa_unit.hpp"
#include "stretch/walks.hpp"

#define DISPCONV_FAMILY stretch
#define DISPCONV_FAMILY_TABLE StretchKernels
#define DISPCONV_FAMILY_LIST "stretch/kernels.def"
#include "core/family_table.inc"
