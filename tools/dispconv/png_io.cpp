#include "png_io.hpp"

#include <png.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "y4m.hpp"

namespace dispconv::tool {

RgbaPicture read_png(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) throw ToolError("cannot read '" + path + "': " + std::strerror(errno));
    unsigned char signature[8] = {};
    const size_t got = std::fread(signature, 1, sizeof signature, file);
    std::fclose(file);
    if (got != sizeof signature || png_sig_cmp(signature, 0, sizeof signature) != 0)
        throw ToolError("'" + path + "' is not a PNG file");

    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        throw ToolError("'" + path + "' is a damaged PNG file: " + image.message);
    if (image.width == 0 || image.height == 0 || image.width > max_picture_side || image.height > max_picture_side) {
        const std::string size = std::to_string(image.width) + "x" + std::to_string(image.height);
        png_image_free(&image);
        throw ToolError("'" + path + "' has an unsupported size " + size);
    }
    image.format = PNG_FORMAT_RGBA;
    RgbaPicture picture;
    picture.width = static_cast<int>(image.width);
    picture.height = static_cast<int>(image.height);
    picture.rgba.resize(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, picture.rgba.data(), 0, nullptr))
        throw ToolError("'" + path + "' is a damaged PNG file: " + image.message);
    return picture;
}

void write_png(const std::string& path, const RgbPicture& picture) {
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    if (!png_image_write_to_file(&image, path.c_str(), 0, picture.rgb.data(), 0, nullptr))
        throw ToolError("cannot write '" + path + "': " + image.message);
}

}  // namespace dispconv::tool
