// Helpers for the dispconv program's tests: scratch directories, YUV4MPEG2 files made on the
// spot, and running the built program.
#pragma once

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "picture.hpp"

namespace dispconv::tool::test {

namespace fs = std::filesystem;

// A fresh directory, removed with everything in it at the end of the test.
struct ScratchDir {
    fs::path path;
    ScratchDir() {
        std::string pattern = (fs::temp_directory_path() / "dispconv-test-XXXXXX").string();
        path = mkdtemp(pattern.data());
    }
    ~ScratchDir() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    std::string operator/(const std::string& name) const { return (path / name).string(); }
};

inline std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

inline void write_file(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// A picture whose samples all differ from their neighbours and from frame to frame.
inline PlanarPicture test_picture(int width, int height, Chroma chroma, int index) {
    PlanarPicture p;
    p.allocate(width, height, chroma);
    for (size_t i = 0; i < p.y.size(); ++i) p.y[i] = static_cast<uint8_t>(16 + (i * 7 + index * 13) % 220);
    for (size_t i = 0; i < p.u.size(); ++i) {
        p.u[i] = static_cast<uint8_t>(40 + (i * 5 + index) % 180);
        p.v[i] = static_cast<uint8_t>(200 - (i * 3 + index) % 170);
    }
    return p;
}

inline std::string y4m_header(int width, int height, const char* chroma_tag, const char* extra = "") {
    return "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) + " F25:1 Ip A1:1 C" + chroma_tag +
           extra + "\n";
}

inline std::string y4m_frame(const PlanarPicture& p) {
    std::string bytes = "FRAME\n";
    bytes.append(p.y.begin(), p.y.end());
    bytes.append(p.u.begin(), p.u.end());
    bytes.append(p.v.begin(), p.v.end());
    return bytes;
}

struct Result {
    int status = -1;
    std::string out, err;
};

// Runs the built program with the given arguments (already quoted where needed); in a cross build,
// through the emulator that runs the suite, as the shell cannot start a foreign program itself.
inline Result run_program(const std::string& arguments, const ScratchDir& scratch) {
    const std::string out = scratch / "stdout.txt", err = scratch / "stderr.txt";
    const std::string command = std::string(DISPCONV_TOOL_EMULATOR " '") + DISPCONV_TOOL_PATH + "' " + arguments +
                                " >'" + out + "' 2>'" + err + "'";
    const int raw = std::system(command.c_str());
    Result r;
    r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    r.out = read_file(out);
    r.err = read_file(err);
    return r;
}

inline std::vector<std::string> files_in(const std::string& dir) {
    std::vector<std::string> names;
    std::error_code ignored;
    if (!fs::is_directory(dir, ignored)) return names;
    for (const auto& entry : fs::directory_iterator(dir)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace dispconv::tool::test
