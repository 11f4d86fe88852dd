// The library's version string, built from the header's numbers so that they cannot disagree.
#include "dispconv.h"

#define DISPCONV_STRINGIFY_(x) #x
#define DISPCONV_STRINGIFY(x) DISPCONV_STRINGIFY_(x)

extern "C" const char* dispconv_version(void) {
    return DISPCONV_STRINGIFY(DISPCONV_VERSION_MAJOR) "." DISPCONV_STRINGIFY(DISPCONV_VERSION_MINOR) "." DISPCONV_STRINGIFY(
        DISPCONV_VERSION_PATCH);
}
