#include "output.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "png_io.hpp"

namespace dispconv::tool {

namespace fs = std::filesystem;

namespace {

// The number of a picture named frame_0001.png and the like, or -1 for any other name. Only such
// names are taken from a picture list, so that a damaged or planted list cannot make the tool
// delete anything else.
long picture_number(const std::string& name) {
    if (name.size() < 14 || name.size() > 19 || name.compare(0, 6, "frame_") != 0 ||
        name.compare(name.size() - 4, 4, ".png") != 0 || name.find_first_not_of("0123456789", 6) != name.size() - 4)
        return -1;
    return std::stol(name.substr(6, name.size() - 10));
}

std::string count_of(long n, const std::string& things) {
    return std::to_string(n) + " " + (n == 1 ? things.substr(0, things.size() - 1) : things);
}

std::string picture_name(int number) {
    char name[32];
    std::snprintf(name, sizeof name, "frame_%04d.png", number);
    return name;
}

std::set<std::string> read_picture_list(const fs::path& dir) {
    std::set<std::string> names;
    std::ifstream list(dir / picture_list_name);
    std::string name;
    while (std::getline(list, name))
        if (picture_number(name) >= 0) names.insert(name);
    return names;
}

}  // namespace

OutputKind output_kind(const std::string& path) {
    if (path == "-") return OutputKind::standard_output;
    if (path.size() > 4 && path.compare(path.size() - 4, 4, ".y4m") == 0) return OutputKind::y4m_file;
    return OutputKind::pictures;
}

OutputSink::OutputSink(const std::string& path, const Y4mHeader& header, bool force)
    : path_(path), kind_(output_kind(path)), header_(header) {
    if (kind_ != OutputKind::pictures) return;
    std::error_code error;
    if (fs::exists(path_, error)) {
        if (!fs::is_directory(path_, error)) throw ToolError("output '" + path_ + "' exists and is not a directory");
        earlier_ = read_picture_list(path_);
        std::vector<std::string> foreign;
        for (const fs::directory_entry& entry : fs::directory_iterator(path_, error)) {
            const std::string name = entry.path().filename().string();
            if (picture_number(name) >= 0 && !earlier_.count(name)) foreign.push_back(name);
        }
        if (!foreign.empty() && !force)
            throw UsageError("output directory '" + path_ + "' holds " +
                             *std::min_element(foreign.begin(), foreign.end()) +
                             (foreign.size() > 1 ? " and " + std::to_string(foreign.size() - 1) + " more" : "") +
                             " that dispconv did not write there; choose another directory, or add --force");
        return;
    }
    for (fs::path p = path_; !p.empty() && !fs::exists(p, error); p = p.parent_path()) {
        created_.push_back(p.string());
        if (p == p.parent_path()) break;
    }
    fs::create_directories(path_, error);
    if (error) {
        created_.clear();
        throw ToolError("cannot create output directory '" + path_ + "': " + error.message());
    }
}

OutputSink::~OutputSink() {
    if (!done_) discard();
}

void OutputSink::write(const Surface& surface, int width, int height) {
    ++frames_;
    if (kind_ != OutputKind::pictures) {
        if (!writer_) {
            Y4mHeader h = header_;
            h.width = width;
            h.height = height;
            h.chroma = surface.format() == SurfaceFormat::yuy2 ? Chroma::c422 : Chroma::c420;
            std::string target = path_;
            if (kind_ == OutputKind::y4m_file) {
                parts_.push_back(path_ + ".part");
                finals_.push_back(path_);
                target = parts_.back();
            }
            writer_ = std::make_unique<Y4mWriter>(target, h);
        }
        writer_->write_frame(surface_to_planar(surface, width, height));
        return;
    }
    const std::string final_path = (fs::path(path_) / picture_name(frames_)).string();
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
    done_ = true;
    if (kind_ != OutputKind::pictures) return;
    // The new pictures are in place: remove the earlier run's pictures beyond them, then record
    // this run's.
    const fs::path dir = path_;
    for (const std::string& name : earlier_) {
        std::error_code error;
        const long number = picture_number(name);
        if (number <= frames_ && name == picture_name(static_cast<int>(number))) continue;  // replaced
        if (fs::is_regular_file(dir / name, error) && fs::remove(dir / name, error)) ++replaced_;
    }
    const fs::path list = dir / picture_list_name, part = dir / (std::string(picture_list_name) + ".part");
    {
        std::ofstream out(part);
        for (int i = 1; i <= frames_; ++i) out << picture_name(i) << '\n';
        if (!out.flush()) throw ToolError("cannot write '" + part.string() + "'");
    }
    std::error_code error;
    fs::rename(part, list, error);
    if (error) throw ToolError("cannot rename '" + part.string() + "' to '" + list.string() + "': " + error.message());
}

std::string OutputSink::discard() {
    done_ = true;
    writer_.reset();
    int removed = 0;
    for (const std::string& part : parts_)
        if (std::remove(part.c_str()) == 0) ++removed;
    parts_.clear();
    for (const std::string& dir : created_) {
        std::error_code error;
        if (!fs::remove(dir, error)) break;  // not empty: something else is in it
    }
    if (kind_ == OutputKind::standard_output) return count_of(frames_, "frames") + " had gone to standard output";
    if (removed == 0) return "no file written";
    return "removed " + count_of(removed, "unfinished files") +
           (earlier_.empty() ? "" : "; the earlier pictures in '" + path_ + "' are as they were");
}

std::string OutputSink::describe() const {
    switch (kind_) {
        case OutputKind::standard_output: return "YUV4MPEG2 to standard output";
        case OutputKind::y4m_file: return "a YUV4MPEG2 file " + path_;
        case OutputKind::pictures: break;
    }
    std::string text = finals_.size() == 1 ? "1 PNG picture " + finals_.front()
                                           : std::to_string(finals_.size()) + " PNG pictures " + finals_.front() +
                                                 " .. " + fs::path(finals_.back()).filename().string();
    return text;
}

}  // namespace dispconv::tool
