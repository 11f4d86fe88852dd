// The program's PNG input (sub-picture art). Bad input must end in a ToolError; any crash,
// leak or stray access is a bug.
#include <cstdint>
#include <cstdlib>

#include "fuzz_input.hpp"
#include "png_io.hpp"
#include "y4m.hpp"

using namespace dispconv::tool;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    dispconv::fuzz::InputFile file(data, size);
    try {
        const RgbaPicture p = read_png(file.path());
        if (p.width <= 0 || p.height <= 0 || p.width > max_picture_side || p.height > max_picture_side ||
            p.rgba.size() != size_t(p.width) * p.height * 4)
            std::abort();
    } catch (const ToolError& e) {
        if (!*e.what()) std::abort();  // every refusal says why
    }
    return 0;
}
