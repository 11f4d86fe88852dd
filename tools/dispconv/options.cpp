#include "options.hpp"

#include <getopt.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "dispconv.hpp"
#include "y4m.hpp"

namespace dispconv::tool {
namespace {

double parse_number(const char* text, const char* option, double lo, double hi) {
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(text, &end);
    if (end == text || *end != '\0' || errno != 0 || !std::isfinite(value))
        throw UsageError(std::string("--") + option + " needs a number, not '" + text + "'");
    if (value < lo || value > hi)
        throw UsageError(std::string("--") + option + " must lie between " + std::to_string(static_cast<int>(lo)) +
                         " and " + std::to_string(static_cast<int>(hi)));
    return value;
}

int parse_count(const char* text, const char* option, int lo, int hi) {
    const double value = parse_number(text, option, lo, hi);
    if (value != std::floor(value)) throw UsageError(std::string("--") + option + " needs a whole number");
    return static_cast<int>(value);
}

void parse_size(const char* text, Options& options) {
    int w = 0, h = 0;
    char tail = 0;
    if (std::sscanf(text, "%dx%d%c", &w, &h, &tail) != 2)
        throw UsageError(std::string("--size needs WIDTHxHEIGHT, not '") + text + "'");
    if (w < 1 || h < 1 || w > max_picture_side || h > max_picture_side ||
        static_cast<long long>(w) * h > max_picture_area)
        throw UsageError(std::string("--size ") + text + " is out of range (1x1 to 16384 per side, 8192x8192 in area)");
    options.clip_width = w;
    options.clip_height = h;
}

void parse_position(const char* text, Options& options) {
    int x = 0, y = 0;
    char tail = 0;
    if (std::sscanf(text, "%d,%d%c", &x, &y, &tail) != 2 || x < 0 || y < 0 || x >= max_picture_side ||
        y >= max_picture_side)
        throw UsageError(std::string("--subpicture-at needs X,Y (whole numbers from 0), not '") + text + "'");
    options.subpicture_x = x;
    options.subpicture_y = y;
}

Stretch parse_stretch(const std::string& name) {
    for (Stretch s : {Stretch::none, Stretch::double_height, Stretch::double_height_filter, Stretch::double_size,
                      Stretch::edge})
        if (name == stretch_name(s)) return s;
    throw UsageError("unknown stretch '" + name + "' (choose none, 1x2, 1x2-filter, 2x2 or edge)");
}

long parse_isa(const std::string& name) {
    std::string names;
    for (const IsaName& n : isa_names) {
        if (name == n.name) return n.bit;
        names += (names.empty() ? "" : ", ") + std::string(n.name);
    }
    throw UsageError("unknown instruction set '" + name + "' for --isa (choose " + names + ")");
}

int clamp_gain(double factor) { return static_cast<int>(std::lround(64 * factor)); }

}  // namespace

const char* stretch_name(Stretch stretch) {
    switch (stretch) {
        case Stretch::none: return "none";
        case Stretch::double_height: return "1x2";
        case Stretch::double_height_filter: return "1x2-filter";
        case Stretch::double_size: return "2x2";
        case Stretch::edge: return "edge";
    }
    return "none";
}

const char* usage_text() {
    return "usage: dispconv [options] [INPUT.y4m | -]\n"
           "Runs a video through the display kernels and writes pictures you can open.\n"
           "Without INPUT it uses a built-in clip (colour bars, gradients, fine detail, moving edges);\n"
           "- reads YUV4MPEG2 from standard input.\n"
           "\n"
           "  -o, --output PATH      a directory for PNG pictures (default dispconv-out),\n"
           "                         a file ending in .y4m, or - for YUV4MPEG2 on standard\n"
           "                         output (.y4m and -: yuy2 and yv12 surfaces)\n"
           "      --force            write into a directory holding frame_*.png pictures that\n"
           "                         dispconv did not write there (an earlier run's are replaced)\n"
           "  -f, --format FORMAT    surface: rgb32 (default), rgb24, rgb565, rgb555, rgb664,\n"
           "                         rgb655, yuy2, yv12\n"
           "  -s, --stretch MODE     none (default), 1x2, 1x2-filter, 2x2, edge\n"
           "  -i, --interlaced[=top|bottom]\n"
           "                         show one field of each frame, doubled to full height\n"
           "                         (with a sub-picture or the 1x2, 1x2-filter, edge stretches);\n"
           "                         without a field, the input's first field\n"
           "      --subpicture PNG   mix a PNG with transparency over every frame, centred\n"
           "      --subpicture-at X,Y  put the sub-picture's top-left corner at X,Y instead\n"
           "      --no-subpicture    leave out the built-in clip's subtitle\n"
           "      --contrast X       luma factor about mid-grey, 0 to 4 (default 1)\n"
           "      --brightness X     added to luma, -255 to 255 (default 0)\n"
           "      --saturation X     chroma factor, 0 to 4 (default 1)\n"
           "  -n, --frames N         process at most N frames (built-in clip: default 24)\n"
           "      --size WxH         size of the built-in clip (default 640x360)\n"
           "      --isa SET          run the kernels on one instruction set: portable, sse2,\n"
           "                         avx2, avx512 or neon (default: the best this CPU runs)\n"
           "  -q, --quiet            no progress bar, notes or summary\n"
           "  -h, --help             this text\n"
           "      --version          the version\n"
           "\n"
           "Progress, notes and the summary go to standard error. Exit status: 0 done, 1 a file\n"
           "could not be read or written, 2 a command line dispconv cannot carry out, 130 or 143\n"
           "stopped by SIGINT or SIGTERM (unfinished files removed).\n";
}

Options parse_options(int argc, char** argv) {
    enum {
        opt_subpicture = 256, opt_subpicture_at, opt_no_subpicture, opt_contrast, opt_brightness, opt_saturation,
        opt_size, opt_version, opt_force, opt_isa
    };
    static const option long_options[] = {
        {"output", required_argument, nullptr, 'o'},
        {"force", no_argument, nullptr, opt_force},
        {"format", required_argument, nullptr, 'f'},
        {"stretch", required_argument, nullptr, 's'},
        {"interlaced", optional_argument, nullptr, 'i'},
        {"subpicture", required_argument, nullptr, opt_subpicture},
        {"subpicture-at", required_argument, nullptr, opt_subpicture_at},
        {"no-subpicture", no_argument, nullptr, opt_no_subpicture},
        {"contrast", required_argument, nullptr, opt_contrast},
        {"brightness", required_argument, nullptr, opt_brightness},
        {"saturation", required_argument, nullptr, opt_saturation},
        {"frames", required_argument, nullptr, 'n'},
        {"size", required_argument, nullptr, opt_size},
        {"isa", required_argument, nullptr, opt_isa},
        {"quiet", no_argument, nullptr, 'q'},
        {"help", no_argument, nullptr, 'h'},
        {"version", no_argument, nullptr, opt_version},
        {nullptr, 0, nullptr, 0},
    };
    Options options;
    optind = 0;  // full re-initialisation, so that the parser can run more than once
    opterr = 0;
    int c;
    while ((c = getopt_long(argc, argv, ":o:f:s:i::n:qh", long_options, nullptr)) != -1) {
        switch (c) {
            case 'o': options.output = optarg; break;
            case opt_force: options.force = true; break;
            case 'f':
                if (!parse_surface_format(optarg, options.format))
                    throw UsageError(std::string("unknown surface format '") + optarg + "' (choose " +
                                     surface_format_names() + ")");
                break;
            case 's': options.stretch = parse_stretch(optarg); break;
            case 'i': {
                const std::string which = optarg ? optarg : "";
                if (which != "" && which != "top" && which != "bottom")
                    throw UsageError("--interlaced takes top or bottom, not '" + which + "'");
                options.field = which == "" ? first_field : which == "top" ? 0 : 1;
                break;
            }
            case opt_subpicture: options.subpicture = optarg; break;
            case opt_subpicture_at: parse_position(optarg, options); break;
            case opt_no_subpicture: options.no_subpicture = true; break;
            case opt_contrast: options.contrast = parse_number(optarg, "contrast", 0, 4); break;
            case opt_brightness: options.brightness = parse_number(optarg, "brightness", -255, 255); break;
            case opt_saturation: options.saturation = parse_number(optarg, "saturation", 0, 4); break;
            case 'n': options.frames = parse_count(optarg, "frames", 1, 1000000); break;
            case opt_size: parse_size(optarg, options); break;
            case opt_isa: options.isa = parse_isa(optarg); break;
            case 'q': options.quiet = true; break;
            case 'h': options.help = true; break;
            case opt_version: options.version = true; break;
            case ':': throw UsageError(std::string("option ") + argv[optind - 1] + " needs a value");
            default: throw UsageError(std::string("unknown option '") + argv[optind - 1] + "'");
        }
    }
    if (optind < argc) options.input = argv[optind++];
    if (optind < argc) throw UsageError(std::string("unexpected argument '") + argv[optind] + "' (one input at most)");
    if (!options.subpicture.empty() && options.no_subpicture)
        throw UsageError("--subpicture and --no-subpicture contradict each other");
    if (options.subpicture_x >= 0 && options.subpicture.empty())
        throw UsageError("--subpicture-at needs --subpicture");
    if (options.output.empty()) throw UsageError("--output needs a path, or - for standard output");
    return options;
}

const char* choose_isa(const Options& options) {
    if (options.isa < 0) return isa_name(dispconv_set_isa_mask(~0u));
    const auto bit = static_cast<uint32_t>(options.isa);
    if (bit != 0 && !(dispconv_isa_available() & bit)) {
        std::string available = "portable";
        for (const IsaName& n : isa_names)
            if (n.bit & dispconv_isa_available()) available += std::string(", ") + n.name;
        throw UsageError(std::string("--isa ") + isa_name(bit) + " is not available here (available: " + available + ")");
    }
    return isa_name(dispconv_set_isa_mask(bit));
}

ajust_contrast_info adjust_settings(double contrast, double brightness, double saturation, bool chroma_follows_luma) {
    ajust_contrast_info s{};
    s.luma_gain = clamp_gain(contrast);
    s.chroma_gain = clamp_gain(saturation);
    s.luma_offset = 128 - 2 * s.luma_gain + static_cast<int>(std::lround(brightness));
    const int chroma_gain = chroma_follows_luma ? s.luma_gain : s.chroma_gain;
    s.u_offset = s.v_offset = 128 - 2 * chroma_gain;
    return s;
}

bool is_neutral(const ajust_contrast_info& s) {
    return s.luma_gain == 64 && s.chroma_gain == 64 && s.luma_offset + s.luma_offset_extra == 0 &&
           s.u_offset + s.u_offset_extra == 0 && s.v_offset + s.v_offset_extra == 0;
}

}  // namespace dispconv::tool
