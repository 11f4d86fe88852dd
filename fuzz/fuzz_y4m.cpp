// The program's YUV4MPEG2 input: header, frames and their padding into the kernels' frame.
// Bad input must end in a ToolError; any crash, leak (of memory or of an open file) or stray
// access is a bug.
#include <cstdint>
#include <cstring>

#include "frame.hpp"
#include "fuzz_input.hpp"
#include "y4m.hpp"

using namespace dispconv::tool;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const dispconv::fuzz::NoFileLeft no_file_left;
    dispconv::fuzz::InputFile file(data, size);
    try {
        Y4mReader reader(file.path());
        const Y4mHeader& h = reader.header();
        // What the program relies on in an accepted header (the rate is written back out).
        if (h.width <= 0 || h.height <= 0 || h.width > max_picture_side || h.height > max_picture_side ||
            h.rate_num <= 0 || h.rate_den <= 0 || !std::strchr("ptbm", h.interlace) || h.interlace == 0)
            std::abort();
        // As the program does: one padded source frame, reloaded for every frame read.
        SourceFrame source(Geometry::for_size(h.width, h.height), h.chroma);
        PlanarPicture picture;
        for (int frame = 0; frame < 8 && reader.read_frame(picture); ++frame) {
            if (picture.width != h.width || picture.height != h.height) std::abort();
            source.load(picture);
        }
    } catch (const ToolError& e) {
        if (!*e.what()) std::abort();  // every refusal says why
    }
    return 0;
}
