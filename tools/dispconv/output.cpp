#include "output.hpp"

#include <cstdio>
#include <filesystem>

#include "png_io.hpp"

namespace dispconv::tool {

namespace fs = std::filesystem;

bool is_y4m_path(const std::string& path) {
    return path.size() > 4 && path.compare(path.size() - 4, 4, ".y4m") == 0;
}

OutputSink::OutputSink(const std::string& path, const Y4mHeader& header)
    : path_(path), y4m_(is_y4m_path(path)), header_(header) {
    std::error_code error;
    if (y4m_) return;
    if (fs::exists(path_, error) && !fs::is_directory(path_, error))
        throw ToolError("output '" + path_ + "' exists and is not a directory");
    fs::create_directories(path_, error);
    if (error) throw ToolError("cannot create output directory '" + path_ + "': " + error.message());
}

OutputSink::~OutputSink() {
    if (committed_) return;
    writer_.reset();
    for (const std::string& part : parts_) std::remove(part.c_str());
}

void OutputSink::write(const Surface& surface, int width, int height) {
    if (y4m_) {
        if (!writer_) {
            Y4mHeader h = header_;
            h.width = width;
            h.height = height;
            h.chroma = surface.format() == SurfaceFormat::yuy2 ? Chroma::c422 : Chroma::c420;
            parts_.push_back(path_ + ".part");
            finals_.push_back(path_);
            writer_ = std::make_unique<Y4mWriter>(parts_.back(), h);
        }
        writer_->write_frame(surface_to_planar(surface, width, height));
        return;
    }
    char name[32];
    std::snprintf(name, sizeof name, "frame_%04zu.png", finals_.size() + 1);
    const std::string final_path = (fs::path(path_) / name).string();
    parts_.push_back(final_path + ".part");
    finals_.push_back(final_path);
    write_png(parts_.back(), surface_to_rgb(surface, width, height));
}

void OutputSink::commit() {
    if (writer_) writer_->close();
    for (size_t i = 0; i < parts_.size(); ++i) {
        std::error_code error;
        fs::rename(parts_[i], finals_[i], error);
        if (error) throw ToolError("cannot rename '" + parts_[i] + "' to '" + finals_[i] + "': " + error.message());
    }
    committed_ = true;
}

std::string OutputSink::describe() const {
    if (y4m_) return "a YUV4MPEG2 file " + path_;
    if (finals_.size() == 1) return "1 PNG picture " + finals_.front();
    return std::to_string(finals_.size()) + " PNG pictures " + finals_.front() + " .. " +
           fs::path(finals_.back()).filename().string();
}

}  // namespace dispconv::tool
