// The load kernels instantiated on one instruction set's vocabulary (compiled once per set).
#include "core/isa_unit.hpp"
#include "load/walks.hpp"

#define DISPCONV_FAMILY load
#define DISPCONV_FAMILY_TABLE LoadKernels
#define DISPCONV_FAMILY_LIST "load/kernels.def"
#include "core/family_table.inc"
