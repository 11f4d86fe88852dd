// The subpicture kernels instantiated on one instruction set's vocabulary (compiled once per set).
#include "core/isa_unit.hpp"
#include "subpicture/walks.hpp"

#define DISPCONV_FAMILY subpicture
#define DISPCONV_FAMILY_TABLE SubpictureKernels
#define DISPCONV_FAMILY_LIST "subpicture/kernels.def"
#include "core/family_table.inc"
