// The built program end to end: real files in, pictures out, and one clear line for every
// kind of bad input, with nothing left behind.
#include <png.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

#include "dispconv.hpp"

#include "png_io.hpp"
#include "tool_support.hpp"
#include "y4m.hpp"

namespace dispconv::tool::test {
namespace {

TEST(Program, BuiltInClipGivesOnePicturePerFrameAndASummary) {
    ScratchDir scratch;
    const Result r = run_program("-n 3 --size 100x60 -o '" + (scratch / "pics") + "'", scratch);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(files_in(scratch / "pics"), (std::vector<std::string>{".dispconv-files", "frame_0001.png", "frame_0002.png", "frame_0003.png"}));
    const RgbaPicture first = read_png(scratch / "pics/frame_0001.png");
    EXPECT_EQ(first.width, 100);
    EXPECT_EQ(first.height, 60);
    EXPECT_NE(r.err.find("wrote 3 PNG pictures"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("frames/s"), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find("[#"), std::string::npos) << "no progress bar when stderr is not a terminal";
    EXPECT_TRUE(r.out.empty()) << "standard output is kept for pictures: " << r.out;
    // The top-left corner is the first colour bar, 75% white.
    EXPECT_NEAR(first.rgba[0], 191, 3);
    EXPECT_NEAR(first.rgba[1], 191, 3);
    EXPECT_NEAR(first.rgba[2], 191, 3);
}

TEST(Program, RealY4mFileComesBackUnchangedThroughAYuvSurface) {
    // 4:2:0 through loadimage_yv12_ajust with neutral settings, and 4:2:2 through
    // LoadYUY2_YUY2_adjust, which keeps luma and the chroma of the first row of each pair.
    ScratchDir scratch;
    const int w = 52, h = 30;  // neither a multiple of the kernels' blocks
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
        EXPECT_NE(r.err.find("4 frames"), std::string::npos) << r.err;
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
    EXPECT_EQ(files_in(scratch / "pics"), (std::vector<std::string>{".dispconv-files", "frame_0001.png", "frame_0002.png"}));
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

// The readers' and the parser's own refusals are checked in their suites; here one of each kind
// of failure shows the program's handling: one line, the exit status, nothing left behind.
TEST(Program, BadInputGivesOneLineAndLeavesNothingBehind) {
    ScratchDir scratch;
    const std::string frame = y4m_frame(test_picture(64, 32, Chroma::c420, 0));
    write_file(scratch / "text.y4m", "hello, world\n");
    write_file(scratch / "truncated.y4m", y4m_header(64, 32, "420") + frame + frame + frame.substr(0, 100));
    write_file(scratch / "good.y4m", y4m_header(64, 32, "420") + frame);
    write_file(scratch / "good422.y4m", y4m_header(64, 32, "422") + y4m_frame(test_picture(64, 32, Chroma::c422, 0)));
    write_file(scratch / "fake.png", "GIF89a this is no PNG");
    write_rgba_png(scratch / "bar.png");

    struct Case {
        std::string args;
        int status;
        std::string reason;
    };
    const std::string d = scratch.path.string() + "/";
    std::string missing_isa;  // a set this library or CPU lacks: there is always one
    for (const IsaName& n : isa_names)
        if (n.bit && !(dispconv_isa_available() & n.bit)) missing_isa = n.name;
    const Case cases[] = {
        {"'" + d + "missing.y4m'", 1, "cannot read"},
        {"'" + d + "text.y4m'", 1, "not a YUV4MPEG2 file"},
        {"'" + d + "truncated.y4m'", 1, "frame 3 is truncated"},
        {"--subpicture '" + d + "fake.png' '" + d + "good.y4m'", 1, "is not a PNG file"},
        {"--frobnicate", 2, "unknown option '--frobnicate'"},
        {"-f rgb16", 2, "unknown surface format 'rgb16'"},
        {"-s 3x3", 2, "unknown stretch '3x3'"},
        {"--contrast 5", 2, "--contrast must lie between 0 and 4"},
        {"-n 0", 2, "--frames must lie between"},
        {"--size big", 2, "--size needs WIDTHxHEIGHT"},
        {"a.y4m b.y4m", 2, "unexpected argument 'b.y4m'"},
        {"--subpicture s.png --no-subpicture", 2, "contradict"},
        {"--subpicture-at 10,20", 2, "--subpicture-at needs --subpicture"},
        {"--isa mmx", 2, "unknown instruction set 'mmx' for --isa"},
        {"--isa " + missing_isa, 2, "--isa " + missing_isa + " is not available here"},
        {"-f rgb32 -o '" + d + "out/x.y4m'", 2, "needs a yuy2 or yv12 surface"},
        {"-f rgb565 -o -", 2, "-o - writes YUV4MPEG2, which needs a yuy2 or yv12 surface"},
        {"-f yv12 '" + d + "good422.y4m'", 2, "-f yv12 needs a 4:2:0 input"},
        {"-f yv12 -s edge", 2, "-s edge cannot write a yv12 surface"},
        {"--interlaced --no-subpicture", 2, "--interlaced needs a sub-picture"},
        {"--subpicture-at 64,0 --subpicture '" + d + "bar.png' '" + d + "good.y4m'", 2, "lies outside the 64x32 frame"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const Result r = run_program("-q -o '" + d + "out' " + c.args + " </dev/null", scratch);
        EXPECT_EQ(r.status, c.status) << r.err;
        EXPECT_NE(r.err.find(c.reason), std::string::npos) << r.err;
        EXPECT_EQ(r.err.rfind("dispconv: ", 0), 0u) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << "one line: " << r.err;
        EXPECT_TRUE(r.out.empty()) << r.out;
        EXPECT_TRUE(files_in(d + "out").empty()) << "left " << files_in(d + "out").front();
    }
}

// Every instruction set the CPU runs gives the same pictures, and the summary names the one
// used; standard output carries what a file would.
TEST(Program, IsaOptionChoosesTheKernelsAndStandardOutputIsTheFile) {
    ScratchDir scratch;
    const std::string args = "-n 2 --size 70x30 -f yuy2 -s edge --no-subpicture ";
    ASSERT_EQ(run_program("-q " + args + "-o '" + (scratch / "file.y4m") + "'", scratch).status, 0);
    const std::string file = read_file(scratch / "file.y4m");
    for (const IsaName& n : isa_names) {
        if (n.bit && !(dispconv_isa_available() & n.bit)) continue;
        SCOPED_TRACE(n.name);
        const Result r = run_program(args + "-o - --isa " + n.name, scratch);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_NE(r.err.find(std::string("; ") + n.name + " kernels strech_opt_yuy2_ajust:"), std::string::npos) << r.err;
        EXPECT_NE(r.err.find("wrote YUV4MPEG2 to standard output"), std::string::npos) << r.err;
        EXPECT_EQ(r.out, file);
    }
}

// What the input holds that the run does not show is said in one note each, unless quiet.
TEST(Program, NotesSayWhatTheRunLeavesOut) {
    ScratchDir scratch;
    const std::string frame = y4m_frame(test_picture(64, 32, Chroma::c420, 0));
    write_file(scratch / "bottom.y4m", y4m_header(64, 32, "420", " Ib") + frame);
    write_file(scratch / "full.y4m", y4m_header(64, 32, "420", " XCOLORRANGE=FULL") + frame);
    write_file(scratch / "plain.y4m", y4m_header(64, 32, "420") + frame);
    write_file(scratch / "422.y4m", y4m_header(64, 32, "422") + y4m_frame(test_picture(64, 32, Chroma::c422, 0)));
    write_rgba_png(scratch / "bar.png");  // 40x12
    struct Case {
        std::string args;
        const char* note;  // null: none
    };
    const Case cases[] = {
        {"'" + (scratch / "bottom.y4m") + "'", "is interlaced (bottom field first) and shown as whole frames"},
        {"-q '" + (scratch / "bottom.y4m") + "'", nullptr},
        {"--interlaced -s 1x2 '" + (scratch / "bottom.y4m") + "'", nullptr},
        {"'" + (scratch / "full.y4m") + "'", "is full range (XCOLORRANGE=FULL), but the kernels assume video range"},
        {"--no-subpicture '" + (scratch / "422.y4m") + "'", "is 4:2:2, and the kernels give each odd row the chroma"},
        {"--size 32x16 --subpicture '" + (scratch / "bar.png") + "'", "larger than the 32x16 frame: its middle 32x12"},
        {"--subpicture-at 20,10 --subpicture '" + (scratch / "bar.png") + "' '" + (scratch / "plain.y4m") + "'", nullptr},
        {"--subpicture-at 30,10 --subpicture '" + (scratch / "bar.png") + "' '" + (scratch / "bottom.y4m") + "' -i",
         "at 30,10 reaches past the 64x32 frame: its top-left 34x12 is shown"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const Result r = run_program("-n 1 -o '" + (scratch / "out") + "' --force " + c.args, scratch);
        ASSERT_EQ(r.status, 0) << r.err;
        int notes = 0;
        for (size_t at = r.err.find("dispconv: note: "); at != std::string::npos; at = r.err.find("dispconv: note: ", at + 1))
            ++notes;
        EXPECT_EQ(notes, c.note ? 1 : 0) << r.err;
        if (c.note) {
            EXPECT_NE(r.err.find(c.note), std::string::npos) << r.err;
        }
    }
}

// --interlaced without a field shows the file's first field: the same pictures as naming it, and
// not those of the other field.
TEST(Program, InterlacedRunShowsTheFilesFirstField) {
    ScratchDir scratch;
    for (const char* order : {"t", "b"}) {
        SCOPED_TRACE(order);
        const std::string first = *order == 't' ? "top" : "bottom", second = *order == 't' ? "bottom" : "top";
        write_file(scratch / "in.y4m", y4m_header(64, 32, "420", order == std::string("t") ? " It" : " Ib") +
                                           y4m_frame(test_picture(64, 32, Chroma::c420, 0)));
        std::string pictures[3];
        const std::string fields[3] = {"", "=" + first, "=" + second};
        for (int i = 0; i < 3; ++i) {
            const std::string out = scratch / ("out" + std::to_string(i) + ".y4m");
            const Result r = run_program("-q -s 1x2 -f yuy2 --interlaced" + fields[i] + " -o '" + out + "' '" +
                                             (scratch / "in.y4m") + "'", scratch);
            ASSERT_EQ(r.status, 0) << r.err;
            pictures[i] = read_file(out);
        }
        EXPECT_EQ(pictures[0], pictures[1]);
        EXPECT_NE(pictures[0], pictures[2]);
    }
}

// A second run into the same directory replaces the first run's pictures, all of them; pictures
// dispconv did not write there stop it unless forced, and are never deleted.
TEST(Program, ReusedOutputDirectoryNeverMixesRuns) {
    ScratchDir scratch;
    const std::string out = scratch / "out", run = "--size 64x32 -o '" + out + "' -n ";
    ASSERT_EQ(run_program("-q " + run + "3", scratch).status, 0);
    Result r = run_program(run + "2", scratch);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("removed 1 left from an earlier run"), std::string::npos) << r.err;
    EXPECT_EQ(files_in(out), (std::vector<std::string>{".dispconv-files", "frame_0001.png", "frame_0002.png"}));

    write_file(out + "/frame_0009.png", "someone else's");
    write_file(out + "/notes.txt", "someone else's");
    const std::vector<std::string> before = files_in(out);
    r = run_program(run + "1", scratch);
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("holds frame_0009.png that dispconv did not write there"), std::string::npos) << r.err;
    EXPECT_EQ(files_in(out), before);

    r = run_program("-q --force " + run + "1", scratch);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(files_in(out),
              (std::vector<std::string>{".dispconv-files", "frame_0001.png", "frame_0009.png", "notes.txt"}));
    EXPECT_EQ(read_file(out + "/frame_0009.png"), "someone else's");
}

// SIGINT or SIGTERM while the input waits for more frames: the unfinished pictures go, the
// earlier run's stay as they were, and the status says which signal.
TEST(Program, StopSignalRemovesUnfinishedFiles) {
    std::signal(SIGPIPE, SIG_IGN);  // should the program die early, the test fails rather than ends
    ScratchDir scratch;
    const std::string out = scratch / "out";
    ASSERT_EQ(run_program("-q -n 1 --size 64x32 -o '" + out + "'", scratch).status, 0);
    const std::string earlier = read_file(out + "/frame_0001.png");
    const std::string frame = y4m_frame(test_picture(64, 32, Chroma::c420, 0));
    const std::string input = y4m_header(64, 32, "420") + frame + frame;
    for (int signal : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signal);
        int pipe_fds[2];
        ASSERT_EQ(pipe(pipe_fds), 0);
        const std::string err_path = scratch / "err.txt";
        const pid_t pid = fork();
        if (pid == 0) {
            dup2(pipe_fds[0], STDIN_FILENO);
            close(pipe_fds[0]);
            close(pipe_fds[1]);
            if (!std::freopen(err_path.c_str(), "w", stderr)) _exit(126);
            // Under a cross build's emulator the shell hands over to it (exec), so the signal
            // still reaches the program.
            const std::string command = std::string("exec ") + DISPCONV_TOOL_EMULATOR + " '" + DISPCONV_TOOL_PATH + "' -o '" + out + "' -";
            execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        close(pipe_fds[0]);
        ASSERT_EQ(write(pipe_fds[1], input.data(), input.size()), static_cast<ssize_t>(input.size()));
        // Both frames are written under temporary names; the program then waits for a third.
        auto parts = [&] {
            const std::vector<std::string> names = files_in(out);
            return std::count_if(names.begin(), names.end(), [](const std::string& n) { return n.ends_with(".part"); });
        };
        for (int wait = 0; wait < 1000 && parts() < 2; ++wait) usleep(10000);
        EXPECT_EQ(parts(), 2);
        kill(pid, signal);
        int raw = 0;
        waitpid(pid, &raw, 0);
        close(pipe_fds[1]);
        ASSERT_TRUE(WIFEXITED(raw));
        EXPECT_EQ(WEXITSTATUS(raw), 128 + signal);
        const std::string err = read_file(err_path);
        EXPECT_NE(err.find(signal == SIGINT ? "interrupted by SIGINT; removed 2 unfinished files"
                                            : "interrupted by SIGTERM; removed 2 unfinished files"),
                  std::string::npos) << err;
        EXPECT_EQ(files_in(out), (std::vector<std::string>{".dispconv-files", "frame_0001.png"}));
        EXPECT_EQ(read_file(out + "/frame_0001.png"), earlier);
    }
}

TEST(Program, VersionIsTheLibrarysAndTheHeaders) {
    ScratchDir scratch;
    const std::string header_version = std::to_string(DISPCONV_VERSION_MAJOR) + "." +
                                       std::to_string(DISPCONV_VERSION_MINOR) + "." +
                                       std::to_string(DISPCONV_VERSION_PATCH);
    EXPECT_EQ(dispconv_version(), header_version);
    EXPECT_EQ(run_program("--version", scratch).out, "dispconv " + header_version + "\n");
}

}  // namespace
}  // namespace dispconv::tool::test
