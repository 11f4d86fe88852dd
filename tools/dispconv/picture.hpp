// Pictures as the tool holds them: plain planar pictures at their true size (what files hold)
// and padded buffers with the room the kernels need around them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace dispconv::tool {

// Every failure the user can cause ends up as one of these: one line, no crash. A ToolError is a
// failure of input or output (exit status 1); a UsageError is a command line the tool cannot
// carry out (exit status 2).
struct ToolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
struct UsageError : ToolError {
    using ToolError::ToolError;
};

enum class Chroma { c420, c422 };

// A planar YUV picture at its true size, as read from or written to a file.
// Chroma planes are ceil(width / 2) wide and, for 4:2:0, ceil(height / 2) high.
struct PlanarPicture {
    int width = 0;
    int height = 0;
    Chroma chroma = Chroma::c420;
    std::vector<uint8_t> y, u, v;

    int chroma_width() const { return (width + 1) / 2; }
    int chroma_height() const { return chroma == Chroma::c420 ? (height + 1) / 2 : height; }
    void allocate(int w, int h, Chroma c);
};

// An 8-bit RGB picture (R, G, B per pixel, rows packed), the form written to PNG.
struct RgbPicture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgb;
};

// An 8-bit RGBA picture, the form read from PNG.
struct RgbaPicture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgba;
};

// A zero-filled byte buffer with slack before and after the usable area: the kernels read
// and write up to a block or a row beyond the areas they are given.
class PaddedBuffer {
public:
    PaddedBuffer() = default;
    PaddedBuffer(size_t size, size_t row_bytes, uint8_t fill = 0);
    uint8_t* data() { return storage_.data() + slack_; }
    const uint8_t* data() const { return storage_.data() + slack_; }
    size_t size() const { return size_; }

private:
    std::vector<uint8_t> storage_;
    size_t slack_ = 0;
    size_t size_ = 0;
};

inline int round_up(int value, int multiple) { return (value + multiple - 1) / multiple * multiple; }

// The padded size the tool gives every kernel: widths a multiple of 32 (so that chroma rows
// are whole 16-sample blocks) and at least 64, heights a multiple of 4 and at least 32, which
// meets every kernel's block size and minimum height.
struct Geometry {
    int width = 0, height = 0;                // the true picture size
    int padded_width = 0, padded_height = 0;  // what the kernels see
    static Geometry for_size(int width, int height);
};

}  // namespace dispconv::tool
