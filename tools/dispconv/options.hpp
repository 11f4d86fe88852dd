// The command line and the picture settings in ordinary units.
#pragma once

#include <string>

#include "dispconv.h"
#include "surface.hpp"

namespace dispconv::tool {

enum class Stretch { none, double_height, double_height_filter, double_size, edge };

const char* stretch_name(Stretch stretch);

// --interlaced without a field: the input's first field (top for a progressive input).
inline constexpr int first_field = 2;

struct Options {
    std::string input;                   // empty: the built-in clip
    std::string output = "dispconv-out"; // a directory for PNG pictures, a .y4m file or "-"
    bool force = false;                  // write into a directory holding pictures not ours
    SurfaceFormat format = SurfaceFormat::rgb32;
    Stretch stretch = Stretch::none;
    std::string subpicture;              // a PNG with transparency
    bool no_subpicture = false;
    int subpicture_x = -1, subpicture_y = -1;  // top-left corner on the frame; -1: centred
    int field = -1;                      // -1 whole frames; 0 top field, 1 bottom field, first_field
    double contrast = 1.0, brightness = 0.0, saturation = 1.0;
    int frames = -1;                     // at most this many (-1: all, or the clip's length)
    int clip_width = 640, clip_height = 360;
    long isa = -1;                       // a DISPCONV_ISA_ bit, 0 for portable; -1: the best
    bool quiet = false;
    bool help = false, version = false;
};

Options parse_options(int argc, char** argv);  // throws UsageError
// Chooses the instruction set the kernels run on, if the options name one; throws UsageError
// for one this library or CPU lacks. Returns the name of the set in use.
const char* choose_isa(const Options& options);
const char* usage_text();

// Contrast and saturation are factors (1 unchanged, 0 to 4), brightness is added to luma in
// 8-bit levels (-255 to 255). Gains are in 1/64; the offsets keep mid-grey (128) where it is:
// for a gain g the offset is 128 - 128 * g / 64, plus the brightness for luma.
// With chroma_follows_luma the chroma offsets are computed for the luma gain, for the kernels
// that scale chroma with the luma gain.
ajust_contrast_info adjust_settings(double contrast, double brightness, double saturation,
                                    bool chroma_follows_luma = false);
bool is_neutral(const ajust_contrast_info& settings);

}  // namespace dispconv::tool
