// PNG reading and writing through libpng's simplified interface.
#pragma once

#include <string>

#include "picture.hpp"

namespace dispconv::tool {

// Reads any PNG as 8-bit RGBA. Throws ToolError for files that are not PNG or are damaged.
RgbaPicture read_png(const std::string& path);

// Writes 8-bit RGB. Throws ToolError if the file cannot be written.
void write_png(const std::string& path, const RgbPicture& picture);

}  // namespace dispconv::tool
