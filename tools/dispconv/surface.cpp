#include "surface.hpp"

#include <algorithm>
#include <cmath>

namespace dispconv::tool {
namespace {

const FormatInfo formats[] = {
    {SurfaceFormat::rgb32, "rgb32", 4, -1, false},  {SurfaceFormat::rgb24, "rgb24", 3, -1, false},
    {SurfaceFormat::rgb565, "rgb565", 2, 0, false}, {SurfaceFormat::rgb555, "rgb555", 2, 1, false},
    {SurfaceFormat::rgb664, "rgb664", 2, 2, false}, {SurfaceFormat::rgb655, "rgb655", 2, 3, false},
    {SurfaceFormat::yuy2, "yuy2", 2, -1, true},     {SurfaceFormat::yv12, "yv12", 1, -1, true},
};

// Widens an n-bit field to 8 bits by repeating its top bits, so full scale maps to 255.
uint8_t widen(unsigned value, int bits) {
    unsigned x = value << (8 - bits);
    return static_cast<uint8_t>(x | (x >> bits));
}

struct Field {
    int shift, bits;
};
struct Layout16 {
    Field r, g, b;
};
// Bit positions of the four 16-bit layouts the kernels write.
const Layout16 layouts16[] = {
    {{11, 5}, {5, 6}, {0, 5}},   // 5-6-5
    {{11, 5}, {6, 5}, {1, 5}},   // 5-5-5 with bit 0 clear
    {{10, 6}, {4, 6}, {0, 4}},   // 6-6-4
    {{10, 6}, {5, 5}, {0, 5}},   // 6-5-5
};

uint8_t field_of(unsigned word, Field f) { return widen((word >> f.shift) & ((1u << f.bits) - 1), f.bits); }

// B, G, R(, unused) to R, G, B; the pixel size is a constant so that the loop vectorises.
template <int bytes_per_pixel>
void bgr_to_rgb(const uint8_t* src, uint8_t* dst, int width) {
    for (int x = 0; x < width; ++x, src += bytes_per_pixel, dst += 3) {
        dst[0] = src[2];
        dst[1] = src[1];
        dst[2] = src[0];
    }
}

uint8_t clamp_byte(double x) { return static_cast<uint8_t>(std::clamp(std::lround(x), 0L, 255L)); }

}  // namespace

const FormatInfo& format_info(SurfaceFormat format) {
    for (const FormatInfo& f : formats)
        if (f.format == format) return f;
    return formats[0];
}

bool parse_surface_format(const std::string& name, SurfaceFormat& format) {
    for (const FormatInfo& f : formats)
        if (name == f.name) {
            format = f.format;
            return true;
        }
    return false;
}

std::string surface_format_names() {
    std::string names;
    for (const FormatInfo& f : formats) names += (names.empty() ? "" : ", ") + std::string(f.name);
    return names;
}

Surface::Surface(SurfaceFormat format, int width, int height)
    : format_(format), width_(width), height_(height), stride_(width * format_info(format).bytes_per_pixel) {
    const size_t plane = static_cast<size_t>(stride_) * height;
    const size_t size = format == SurfaceFormat::yv12 ? plane + plane / 2 : plane;
    buffer_ = PaddedBuffer(size, static_cast<size_t>(stride_));
}

void yuv_to_rgb(int y, int u, int v, uint8_t* rgb) {
    const double luma = 1.164 * (y - 16);
    rgb[0] = clamp_byte(luma + 1.596 * (v - 128));
    rgb[1] = clamp_byte(luma - 0.391 * (u - 128) - 0.813 * (v - 128));
    rgb[2] = clamp_byte(luma + 2.018 * (u - 128));
}

RgbPicture surface_to_rgb(const Surface& surface, int width, int height) {
    RgbPicture out;
    out.width = width;
    out.height = height;
    out.rgb.resize(static_cast<size_t>(width) * height * 3);
    const FormatInfo& info = format_info(surface.format());
    // One loop per format, so that the per-pixel work stays small next to the PNG encoder.
    for (int row = 0; row < height; ++row) {
        const uint8_t* line = surface.data() + static_cast<size_t>(row) * surface.stride();
        uint8_t* dst = out.rgb.data() + static_cast<size_t>(row) * width * 3;
        switch (surface.format()) {
            case SurfaceFormat::rgb32: bgr_to_rgb<4>(line, dst, width); break;
            case SurfaceFormat::rgb24: bgr_to_rgb<3>(line, dst, width); break;
            case SurfaceFormat::rgb565:
            case SurfaceFormat::rgb555:
            case SurfaceFormat::rgb664:
            case SurfaceFormat::rgb655: {
                const Layout16& l = layouts16[info.rgb16_layout];
                for (int x = 0; x < width; ++x, dst += 3) {
                    const unsigned word = line[2 * x] | (line[2 * x + 1] << 8);
                    dst[0] = field_of(word, l.r);
                    dst[1] = field_of(word, l.g);
                    dst[2] = field_of(word, l.b);
                }
                break;
            }
            case SurfaceFormat::yuy2:
                for (int x = 0; x < width; ++x, dst += 3) {
                    const uint8_t* pair = line + (x / 2) * 4;  // Y0 U Y1 V
                    yuv_to_rgb(pair[(x & 1) * 2], pair[1], pair[3], dst);
                }
                break;
            case SurfaceFormat::yv12: {
                const size_t c = static_cast<size_t>(row / 2) * (surface.stride() / 2);
                for (int x = 0; x < width; ++x, dst += 3)
                    yuv_to_rgb(line[x], surface.plane_u()[c + x / 2], surface.plane_v()[c + x / 2], dst);
                break;
            }
        }
    }
    return out;
}

PlanarPicture surface_to_planar(const Surface& surface, int width, int height) {
    PlanarPicture out;
    const bool packed = surface.format() == SurfaceFormat::yuy2;
    out.allocate(width, height, packed ? Chroma::c422 : Chroma::c420);
    const int cw = out.chroma_width();
    for (int row = 0; row < height; ++row) {
        const uint8_t* line = surface.data() + static_cast<size_t>(row) * surface.stride();
        for (int x = 0; x < width; ++x) out.y[static_cast<size_t>(row) * width + x] = packed ? line[2 * x] : line[x];
    }
    for (int row = 0; row < out.chroma_height(); ++row) {
        for (int x = 0; x < cw; ++x) {
            const size_t o = static_cast<size_t>(row) * cw + x;
            if (packed) {
                const uint8_t* pair = surface.data() + static_cast<size_t>(row) * surface.stride() + 4 * x;
                out.u[o] = pair[1];
                out.v[o] = pair[3];
            } else {
                const size_t c = static_cast<size_t>(row) * (surface.stride() / 2) + x;
                out.u[o] = surface.plane_u()[c];
                out.v[o] = surface.plane_v()[c];
            }
        }
    }
    return out;
}

}  // namespace dispconv::tool
