// Which kernel families this build of the library declares. The build system looks for them
// in the public header, so that the tool builds and reports a missing family as unavailable
// instead of failing to compile.
#pragma once

#include "dispconv.h"

#ifndef DISPCONV_TOOL_HAVE_STRETCH
#define DISPCONV_TOOL_HAVE_STRETCH 0
#endif
#ifndef DISPCONV_TOOL_HAVE_SUBPICTURE
#define DISPCONV_TOOL_HAVE_SUBPICTURE 0
#endif
#ifndef DISPCONV_TOOL_HAVE_MIX
#define DISPCONV_TOOL_HAVE_MIX 0
#endif

namespace dispconv::tool {

inline constexpr bool have_stretch = DISPCONV_TOOL_HAVE_STRETCH;
// A sub-picture needs both its preparation and the mixers.
inline constexpr bool have_subpicture = DISPCONV_TOOL_HAVE_SUBPICTURE && DISPCONV_TOOL_HAVE_MIX;

}  // namespace dispconv::tool
