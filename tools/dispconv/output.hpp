// Where the pictures go. Files are written under temporary names and renamed only when the
// whole run has succeeded, so a failed or interrupted run leaves no partial file behind.
// A directory of pictures keeps the list of the pictures the last run wrote there, so that the
// next run into it replaces all of them and two runs never mix; pictures of the same names that
// dispconv did not write stop the run unless it is forced.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "surface.hpp"
#include "y4m.hpp"

namespace dispconv::tool {

enum class OutputKind { pictures, y4m_file, standard_output };

// "-" is standard output, a name ending in .y4m a YUV4MPEG2 file, anything else a directory.
OutputKind output_kind(const std::string& path);

// The list a directory of pictures holds of the pictures dispconv wrote there.
inline constexpr const char* picture_list_name = ".dispconv-files";

class OutputSink {
public:
    // A directory of PNG pictures, a .y4m file or standard output; a YUV4MPEG2 header takes the
    // rate, interlace flag and range from `header` and the size and chroma from the frames.
    // Throws UsageError for a directory holding pictures dispconv did not write, unless `force`.
    OutputSink(const std::string& path, const Y4mHeader& header, bool force);
    ~OutputSink();  // discards whatever was not committed
    OutputSink(const OutputSink&) = delete;
    OutputSink& operator=(const OutputSink&) = delete;

    // Writes the top-left width x height pixels of the surface as the next frame.
    void write(const Surface& surface, int width, int height);
    void commit();
    // Removes what this run wrote, and the directories it created if they are empty; returns
    // what it did in words.
    std::string discard();
    std::string describe() const;
    // Pictures of an earlier run that the commit removed, beyond those the new ones replaced.
    int removed_earlier() const { return replaced_; }

private:
    std::string path_;
    OutputKind kind_;
    Y4mHeader header_;
    std::unique_ptr<Y4mWriter> writer_;
    std::vector<std::string> parts_, finals_;
    std::set<std::string> earlier_;     // pictures an earlier run wrote into the directory
    std::vector<std::string> created_;  // directories this run created, innermost first
    int frames_ = 0, replaced_ = 0;
    bool done_ = false;
};

}  // namespace dispconv::tool
