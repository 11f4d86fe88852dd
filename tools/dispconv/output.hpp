// Where the pictures go. Everything is written under temporary names and renamed only when
// the whole run has succeeded, so a failed run leaves no partial file behind.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "surface.hpp"
#include "y4m.hpp"

namespace dispconv::tool {

bool is_y4m_path(const std::string& path);

class OutputSink {
public:
    // A directory of PNG pictures, or a .y4m file whose header takes the rate and interlace
    // flag from `header` and the size and chroma from the frames written.
    OutputSink(const std::string& path, const Y4mHeader& header);
    ~OutputSink();  // removes whatever was not committed
    OutputSink(const OutputSink&) = delete;
    OutputSink& operator=(const OutputSink&) = delete;

    // Writes the top-left width x height pixels of the surface as the next frame.
    void write(const Surface& surface, int width, int height);
    void commit();
    std::string describe() const;

private:
    std::string path_;
    bool y4m_;
    Y4mHeader header_;
    std::unique_ptr<Y4mWriter> writer_;
    std::vector<std::string> parts_, finals_;
    bool committed_ = false;
};

}  // namespace dispconv::tool
