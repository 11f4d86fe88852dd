// Footprints of the stretch kernels.
#include "core/footprint.hpp"

namespace dispconv {

dispconv_status stretch_footprint(const dispconv_call& c, FootprintBuilder& f) {
    switch (c.kernel) {
        default:
            return f.refuse(DISPCONV_BAD_ARGUMENT, "footprint not known for this kernel");
    }
}

}  // namespace dispconv
