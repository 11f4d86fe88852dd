// YUV4MPEG2 files: a text header line, then frames each led by a "FRAME" line and holding the
// Y, U and V planes one after the other. Only 8-bit 4:2:0 and 4:2:2 are accepted.
#pragma once

#include <cstdio>
#include <string>

#include "picture.hpp"

namespace dispconv::tool {

inline constexpr int max_picture_side = 16384;
inline constexpr long long max_picture_area = 8192LL * 8192;

struct Y4mHeader {
    int width = 0;
    int height = 0;
    Chroma chroma = Chroma::c420;
    int rate_num = 25, rate_den = 1;
    char interlace = 'p';  // p progressive, t top field first, b bottom field first, m mixed
    bool full_range = false;  // XCOLORRANGE=FULL: samples 0-255 instead of video range
};

// "top field first" and the like, for notes; empty for a progressive picture.
std::string describe_interlace(char interlace);

// Parses a header line (without its newline). Throws ToolError with a one-line reason.
Y4mHeader parse_y4m_header(const std::string& line);

class Y4mReader {
public:
    explicit Y4mReader(const std::string& path);  // "-" reads standard input
    ~Y4mReader();
    Y4mReader(const Y4mReader&) = delete;
    Y4mReader& operator=(const Y4mReader&) = delete;

    const Y4mHeader& header() const { return header_; }
    // Reads the next frame; false at the end of the file. Throws on a damaged frame.
    bool read_frame(PlanarPicture& picture);

private:
    FILE* file_ = nullptr;
    bool owned_ = false;
    std::string name_;
    Y4mHeader header_;
    int frames_read_ = 0;
};

class Y4mWriter {
public:
    Y4mWriter(const std::string& path, const Y4mHeader& header);  // "-" writes standard output
    ~Y4mWriter();
    Y4mWriter(const Y4mWriter&) = delete;
    Y4mWriter& operator=(const Y4mWriter&) = delete;

    // Throws when the data cannot be written (a full disk, a reader gone from the pipe).
    void write_frame(const PlanarPicture& picture);
    void close();  // flushes; throws if the data did not reach the file

private:
    void check();
    FILE* file_ = nullptr;
    bool owned_ = false;
    std::string name_;
};

}  // namespace dispconv::tool
