// The built program end to end: real files in, pictures out, and one clear line for every
// kind of bad input, with nothing left behind.
#include <png.h>

#include <cstring>

#include "png_io.hpp"
#include "tool_support.hpp"
#include "y4m.hpp"

namespace dispconv::tool::test {
namespace {

TEST(Program, BuiltInClipGivesOnePicturePerFrameAndASummary) {
    ScratchDir scratch;
    const Result r = run_program("-n 3 --size 100x60 -o '" + (scratch / "pics") + "'", scratch);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(files_in(scratch / "pics"), (std::vector<std::string>{"frame_0001.png", "frame_0002.png", "frame_0003.png"}));
    const RgbaPicture first = read_png(scratch / "pics/frame_0001.png");
    EXPECT_EQ(first.width, 100);
    EXPECT_EQ(first.height, 60);
    EXPECT_NE(r.out.find("wrote 3 PNG pictures"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("frames/s"), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("[#"), std::string::npos) << "no progress bar when stderr is not a terminal";
    // The top-left corner is the first colour bar, 75% white.
    EXPECT_NEAR(first.rgba[0], 191, 3);
    EXPECT_NEAR(first.rgba[1], 191, 3);
    EXPECT_NEAR(first.rgba[2], 191, 3);
}

TEST(Program, RealY4mFileComesBackUnchangedThroughAYuvSurface) {
    // 4:2:0 through loadimage_yv12_ajust with neutral settings, and 4:2:2 through
    // LoadYUY2_YUY2_adjust, which keeps luma and the chroma of the first row of each pair.
    ScratchDir scratch;
    const int w = 51, h = 29;  // odd: no multiple of the kernels' blocks, chroma planes rounded up
    for (const char* tag : {"420jpeg", "422"}) {
        SCOPED_TRACE(tag);
        const Chroma chroma = std::string(tag) == "422" ? Chroma::c422 : Chroma::c420;
        std::string bytes = y4m_header(w, h, tag, " It");
        for (int i = 0; i < 4; ++i) bytes += y4m_frame(test_picture(w, h, chroma, i));
        write_file(scratch / "in.y4m", bytes);
        const char* format = chroma == Chroma::c420 ? "yv12" : "yuy2";
        const Result r = run_program(std::string("-f ") + format + " -o '" + (scratch / "out.y4m") + "' '" +
                                         (scratch / "in.y4m") + "'", scratch);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_NE(r.out.find("4 frames"), std::string::npos) << r.out;
        Y4mReader reader(scratch / "out.y4m");
        EXPECT_EQ(reader.header().width, w);
        EXPECT_EQ(reader.header().interlace, 't');
        PlanarPicture out;
        for (int i = 0; i < 4; ++i) {
            ASSERT_TRUE(reader.read_frame(out));
            const PlanarPicture in = test_picture(w, h, chroma, i);
            EXPECT_EQ(out.y, in.y);
            const int cw = in.chroma_width();
            for (int row = 0; row < out.chroma_height(); ++row) {
                const int from = chroma == Chroma::c420 ? row : row & ~1;
                for (int x = 0; x < cw; ++x) {
                    ASSERT_EQ(out.u[row * cw + x], in.u[from * cw + x]) << "frame " << i << " row " << row;
                    ASSERT_EQ(out.v[row * cw + x], in.v[from * cw + x]) << "frame " << i << " row " << row;
                }
            }
        }
        EXPECT_FALSE(reader.read_frame(out));
    }
}

TEST(Program, ReadsStandardInputAndKeepsTheFrameLimit) {
    ScratchDir scratch;
    std::string bytes = y4m_header(40, 24, "420");
    for (int i = 0; i < 5; ++i) bytes += y4m_frame(test_picture(40, 24, Chroma::c420, i));
    write_file(scratch / "in.y4m", bytes);
    const Result r = run_program("-n 2 -f yuy2 -o '" + (scratch / "pics") + "' - < '" + (scratch / "in.y4m") + "'", scratch);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(files_in(scratch / "pics"), (std::vector<std::string>{"frame_0001.png", "frame_0002.png"}));
}

// The readers' and the parser's own refusals are checked in their suites; here one of each kind
// of failure shows the program's handling: one line, the exit status, nothing left behind.
TEST(Program, BadInputGivesOneLineAndLeavesNothingBehind) {
    ScratchDir scratch;
    const std::string frame = y4m_frame(test_picture(64, 32, Chroma::c420, 0));
    write_file(scratch / "text.y4m", "hello, world\n");
    write_file(scratch / "truncated.y4m", y4m_header(64, 32, "420") + frame + frame + frame.substr(0, 100));
    write_file(scratch / "good.y4m", y4m_header(64, 32, "420") + frame);
    write_file(scratch / "good422.y4m", y4m_header(64, 32, "422") + y4m_frame(test_picture(64, 32, Chroma::c422, 0)));
    write_file(scratch / "444.y4m", "YUV4MPEG2 W64 H32 C444\n");
    write_file(scratch / "deep.y4m", "YUV4MPEG2 W64 H32 C420p10\n");
    write_file(scratch / "fake.png", "GIF89a this is no PNG");
    std::string cut_png = "\x89PNG\r\n\x1a\n";
    cut_png += std::string("\0\0\0\x0dIHDR", 8);
    write_file(scratch / "cut.png", cut_png);

    struct Case {
        std::string args;
        int status;
        const char* reason;
    };
    const std::string d = scratch.path.string() + "/";
    const Case cases[] = {
        {"'" + d + "missing.y4m'", 1, "cannot read"},
        {"'" + d + "text.y4m'", 1, "not a YUV4MPEG2 file"},
        {"'" + d + "truncated.y4m'", 1, "frame 3 is truncated"},
        {"'" + d + "444.y4m'", 1, "unsupported chroma layout '444'"},
        {"'" + d + "deep.y4m'", 1, "unsupported bit depth"},
        {"--subpicture '" + d + "fake.png' '" + d + "good.y4m'", 1, "is not a PNG file"},
        {"--subpicture '" + d + "cut.png' '" + d + "good.y4m'", 1, "damaged PNG"},
        {"--subpicture '" + d + "none.png' '" + d + "good.y4m'", 1, "cannot read"},
        {"--frobnicate", 2, "unknown option '--frobnicate'"},
        {"-f rgb32 -o '" + d + "out/x.y4m'", 1, "needs a yuy2 or yv12 surface"},
        {"-f yv12 '" + d + "good422.y4m'", 1, "needs a 4:2:0 input"},
        {"--interlaced --no-subpicture", 1, "--interlaced needs a sub-picture"},
        {"--interlaced -s 2x2", 1, "--interlaced needs a sub-picture"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const Result r = run_program("-q -o '" + d + "out' " + c.args, scratch);
        EXPECT_EQ(r.status, c.status) << r.err;
        EXPECT_NE(r.err.find(c.reason), std::string::npos) << r.err;
        EXPECT_EQ(r.err.rfind("dispconv: ", 0), 0u) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << "one line: " << r.err;
        EXPECT_TRUE(r.out.empty()) << r.out;
        EXPECT_TRUE(files_in(d + "out").empty()) << "left " << files_in(d + "out").front();
    }
}

// A 40x12 RGBA picture: an opaque red bar with a half-transparent border.
void write_rgba_png(const std::string& path) {
    std::vector<uint8_t> rgba(40 * 12 * 4);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 40; ++x) {
            uint8_t* p = &rgba[(y * 40 + x) * 4];
            const bool border = x < 2 || y < 2 || x >= 38 || y >= 10;
            p[0] = 220, p[1] = 30, p[2] = 30, p[3] = border ? 128 : 255;
        }
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    image.width = 40;
    image.height = 12;
    image.format = PNG_FORMAT_RGBA;
    ASSERT_TRUE(png_image_write_to_file(&image, path.c_str(), 0, rgba.data(), 0, nullptr));
}

// Stretches, sub-pictures and fields: each run succeeds and writes pictures of the size its
// stretch and field choice give.
TEST(Program, StretchesAndSubPicturesWriteTheirPictureSize) {
    ScratchDir scratch;
    write_rgba_png(scratch / "bar.png");
    struct Case {
        std::string args;
        int width, height;
    };
    const Case cases[] = {
        {"-s 1x2", 100, 120},
        {"-s 1x2-filter -f yuy2", 100, 120},
        {"-s 2x2 -f rgb565", 200, 120},
        {"-s edge -f rgb24", 100, 120},
        {"-s edge --interlaced", 100, 60},
        {"-s 2x2 -f yv12 --contrast 1.2", 200, 120},
        {"--subpicture '" + (scratch / "bar.png") + "' -f yuy2", 100, 60},
        {"--interlaced=bottom -f rgb32", 100, 60},
        {"--interlaced -f yv12 --brightness 10", 100, 60},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const std::string out = scratch / "out";
        const Result r = run_program(c.args + " -n 2 --size 100x60 -o '" + out + "'", scratch);
        ASSERT_EQ(r.status, 0) << r.err;
        const RgbaPicture picture = read_png(out + "/frame_0002.png");
        EXPECT_EQ(picture.width, c.width);
        EXPECT_EQ(picture.height, c.height);
        std::filesystem::remove_all(out);
    }
}

}  // namespace
}  // namespace dispconv::tool::test
