#include "y4m.hpp"

#include <cctype>
#include <cerrno>
#include <cstring>
#include <sstream>
#include <string_view>
#include <vector>

namespace dispconv::tool {
namespace {

// Reads one line of at most `limit` bytes; false if the file ends before any byte.
bool read_line(FILE* file, std::string& line, size_t limit, bool& too_long) {
    line.clear();
    too_long = false;
    int c;
    while ((c = std::fgetc(file)) != EOF) {
        if (c == '\n') return true;
        if (line.size() >= limit) {
            too_long = true;
            return true;
        }
        line.push_back(static_cast<char>(c));
    }
    return !line.empty();
}

int parse_size(const std::string& text, const char* what) {
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos)
        throw ToolError(std::string("YUV4MPEG2 header has a malformed ") + what + " '" + text + "'");
    return std::stoi(text);
}

Chroma parse_chroma(const std::string& tag) {
    if (tag == "420" || tag == "420jpeg" || tag == "420paldv" || tag == "420mpeg2") return Chroma::c420;
    if (tag == "422") return Chroma::c422;
    const size_t p = tag.find('p');
    if (p != std::string::npos && p + 1 < tag.size() && std::isdigit(static_cast<unsigned char>(tag[p + 1])))
        throw ToolError("unsupported bit depth in chroma layout '" + tag + "': only 8-bit input is supported");
    throw ToolError("unsupported chroma layout '" + tag + "': only 4:2:0 and 4:2:2 are supported");
}

}  // namespace

Y4mHeader parse_y4m_header(const std::string& line) {
    static const char magic[] = "YUV4MPEG2";
    if (line.compare(0, sizeof magic - 1, magic) != 0 ||
        (line.size() > sizeof magic - 1 && line[sizeof magic - 1] != ' '))
        throw ToolError("not a YUV4MPEG2 file (the header does not start with YUV4MPEG2)");
    Y4mHeader header;
    bool have_width = false, have_height = false;
    std::istringstream tokens(line.substr(sizeof magic - 1));
    std::string token;
    while (tokens >> token) {
        const std::string value = token.substr(1);
        switch (token[0]) {
            case 'W': header.width = parse_size(value, "width"); have_width = true; break;
            case 'H': header.height = parse_size(value, "height"); have_height = true; break;
            case 'C': header.chroma = parse_chroma(value); break;
            case 'I':
                // Not strchr: it would find a NUL byte, the terminator of "ptbm?".
                if (value.size() != 1 || std::string_view("ptbm?").find(value[0]) == std::string_view::npos)
                    throw ToolError("YUV4MPEG2 header has an unknown interlace tag '" + value + "'");
                header.interlace = value[0] == '?' ? 'p' : value[0];
                break;
            case 'F': {
                // Digits only: a signed or oversized count would wrap into a negative rate.
                const size_t colon = value.find(':');
                const std::string num = value.substr(0, colon);
                const std::string den = colon == std::string::npos ? "" : value.substr(colon + 1);
                const auto count = [](const std::string& t) {
                    return !t.empty() && t.size() <= 9 && t.find_first_not_of("0123456789") == std::string::npos;
                };
                if (!count(num) || !count(den) || std::stoi(num) == 0 || std::stoi(den) == 0)
                    throw ToolError("YUV4MPEG2 header has a malformed frame rate '" + value + "'");
                header.rate_num = std::stoi(num);
                header.rate_den = std::stoi(den);
                break;
            }
            case 'X':
                if (value == "COLORRANGE=FULL") header.full_range = true;
                if (value == "COLORRANGE=LIMITED") header.full_range = false;
                break;
            default: break;  // aspect ratio and other extensions do not change the pixels
        }
    }
    if (!have_width || !have_height) throw ToolError("YUV4MPEG2 header lacks the picture width or height");
    if (header.width == 0 || header.height == 0)
        throw ToolError("picture size " + std::to_string(header.width) + "x" + std::to_string(header.height) +
                        " is empty");
    if (header.width > max_picture_side || header.height > max_picture_side ||
        static_cast<long long>(header.width) * header.height > max_picture_area)
        throw ToolError("picture size " + std::to_string(header.width) + "x" + std::to_string(header.height) +
                        " is too large (at most " + std::to_string(max_picture_side) + " per side and 8192x8192 in area)");
    return header;
}

std::string describe_interlace(char interlace) {
    switch (interlace) {
        case 't': return "top field first";
        case 'b': return "bottom field first";
        case 'm': return "mixed fields";
        default: return "";
    }
}

Y4mReader::Y4mReader(const std::string& path) : name_(path) {
    if (path == "-") {
        file_ = stdin;
    } else {
        file_ = std::fopen(path.c_str(), "rb");
        if (!file_) throw ToolError("cannot read '" + path + "': " + std::strerror(errno));
        owned_ = true;
    }
    // A refused header leaves the constructor by throwing, so the destructor will not close the file.
    try {
        std::string line;
        bool too_long = false;
        if (!read_line(file_, line, 4096, too_long) || too_long)
            throw ToolError("'" + path + "' is not a YUV4MPEG2 file");
        try {
            header_ = parse_y4m_header(line);
        } catch (const ToolError& e) {
            throw ToolError("'" + path + "': " + e.what());
        }
    } catch (...) {
        if (owned_) std::fclose(file_);
        throw;
    }
}

Y4mReader::~Y4mReader() {
    if (owned_ && file_) std::fclose(file_);
}

bool Y4mReader::read_frame(PlanarPicture& picture) {
    std::string line;
    bool too_long = false;
    const int number = frames_read_ + 1;
    if (!read_line(file_, line, 4096, too_long)) {
        if (frames_read_ == 0) throw ToolError("'" + name_ + "' holds no frames");
        return false;
    }
    if (too_long || line.compare(0, 5, "FRAME") != 0 || (line.size() > 5 && line[5] != ' '))
        throw ToolError("'" + name_ + "': frame " + std::to_string(number) + " does not start with a FRAME line");
    picture.allocate(header_.width, header_.height, header_.chroma);
    const size_t expected = picture.y.size() + picture.u.size() + picture.v.size();
    size_t got = std::fread(picture.y.data(), 1, picture.y.size(), file_);
    if (got == picture.y.size()) got += std::fread(picture.u.data(), 1, picture.u.size(), file_);
    if (got == picture.y.size() + picture.u.size()) got += std::fread(picture.v.data(), 1, picture.v.size(), file_);
    if (got != expected)
        throw ToolError("'" + name_ + "': frame " + std::to_string(number) + " is truncated (" + std::to_string(got) +
                        " of " + std::to_string(expected) + " bytes)");
    ++frames_read_;
    return true;
}

Y4mWriter::Y4mWriter(const std::string& path, const Y4mHeader& header)
    : name_(path == "-" ? "standard output" : "'" + path + "'") {
    if (path == "-") {
        file_ = stdout;
    } else {
        file_ = std::fopen(path.c_str(), "wb");
        if (!file_) throw ToolError("cannot write " + name_ + ": " + std::strerror(errno));
        owned_ = true;
    }
    std::fprintf(file_, "YUV4MPEG2 W%d H%d F%d:%d I%c A1:1 C%s%s\n", header.width, header.height, header.rate_num,
                 header.rate_den, header.interlace, header.chroma == Chroma::c420 ? "420jpeg" : "422",
                 header.full_range ? " XCOLORRANGE=FULL" : "");
}

Y4mWriter::~Y4mWriter() {
    if (owned_ && file_) std::fclose(file_);
}

void Y4mWriter::check() {
    if (std::ferror(file_)) throw ToolError("cannot write " + name_ + ": " + std::strerror(errno));
}

void Y4mWriter::write_frame(const PlanarPicture& picture) {
    std::fputs("FRAME\n", file_);
    std::fwrite(picture.y.data(), 1, picture.y.size(), file_);
    std::fwrite(picture.u.data(), 1, picture.u.size(), file_);
    std::fwrite(picture.v.data(), 1, picture.v.size(), file_);
    // A pipe's reader sees each frame as soon as it is whole.
    if (!owned_) std::fflush(file_);
    check();
}

void Y4mWriter::close() {
    const bool failed = std::fflush(file_) != 0 || std::ferror(file_) != 0;
    const int saved = errno;
    const int closed = owned_ ? std::fclose(file_) : 0;
    file_ = nullptr;
    if (failed || closed != 0) throw ToolError("cannot write " + name_ + ": " + std::strerror(failed ? saved : errno));
}

}  // namespace dispconv::tool
