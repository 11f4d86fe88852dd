// Display surfaces in every format the kernels write, and the tool's own readers that turn a
// written surface back into 8-bit RGB (for PNG) or planar YUV (for YUV4MPEG2).
#pragma once

#include <string>

#include "picture.hpp"

namespace dispconv::tool {

enum class SurfaceFormat { rgb32, rgb24, rgb565, rgb555, rgb664, rgb655, yuy2, yv12 };

struct FormatInfo {
    SurfaceFormat format;
    const char* name;
    int bytes_per_pixel;  // of the packed formats; 1 for the YV12 luma plane
    int rgb16_layout;     // selector for the 16-bit kernels, -1 for the others
    bool yuv;
};

const FormatInfo& format_info(SurfaceFormat format);
bool parse_surface_format(const std::string& name, SurfaceFormat& format);
std::string surface_format_names();  // "rgb32, rgb24, ..."

// A surface of width x height pixels with rows `stride` bytes apart. A YV12 surface is one
// buffer: the Y plane, then the V plane, then the U plane, each chroma plane with rows
// stride / 2 bytes apart.
class Surface {
public:
    Surface() = default;
    Surface(SurfaceFormat format, int width, int height);

    SurfaceFormat format() const { return format_; }
    int width() const { return width_; }
    int height() const { return height_; }
    int stride() const { return stride_; }
    uint8_t* data() { return buffer_.data(); }
    const uint8_t* data() const { return buffer_.data(); }
    uint8_t* plane_v() { return data() + static_cast<size_t>(height_) * stride_; }
    uint8_t* plane_u() { return plane_v() + static_cast<size_t>(height_ / 2) * (stride_ / 2); }
    const uint8_t* plane_v() const { return data() + static_cast<size_t>(height_) * stride_; }
    const uint8_t* plane_u() const { return plane_v() + static_cast<size_t>(height_ / 2) * (stride_ / 2); }

private:
    SurfaceFormat format_ = SurfaceFormat::rgb32;
    int width_ = 0, height_ = 0, stride_ = 0;
    PaddedBuffer buffer_;
};

// The top-left width x height pixels of a surface as 8-bit RGB.
RgbPicture surface_to_rgb(const Surface& surface, int width, int height);

// The top-left width x height pixels of a YUY2 (to 4:2:2) or YV12 (to 4:2:0) surface.
PlanarPicture surface_to_planar(const Surface& surface, int width, int height);

// BT.601 video-range YUV to 8-bit RGB, rounded: the viewer's conversion, not a kernel's.
void yuv_to_rgb(int y, int u, int v, uint8_t* rgb);

}  // namespace dispconv::tool
