// The built program end to end: real files in, pictures out, and one clear line for every
// kind of bad input, with nothing left behind.
#include <unistd.h>

#include <csignal>

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

// A file read from standard input through a YUV surface, as many frames as asked for: 4:2:0
// through loadimage_yv12_ajust with neutral settings comes back byte for byte, its odd size,
// rate, field order and range too; 4:2:2 through LoadYUY2_YUY2_adjust keeps luma and gives each
// odd row the chroma of the row above.
TEST(Program, Y4mFileFromStandardInputComesBackThroughAYuvSurface) {
    ScratchDir scratch;
    for (const Chroma chroma : {Chroma::c420, Chroma::c422}) {
        SCOPED_TRACE(chroma == Chroma::c420 ? "4:2:0" : "4:2:2");
        Y4mHeader header;
        header.width = 37, header.height = 21, header.chroma = chroma;
        header.rate_num = 24000, header.rate_den = 1001, header.interlace = 't', header.full_range = true;
        for (const int frames : {3, 2}) {
            Y4mWriter writer(scratch / (frames == 3 ? "in.y4m" : "want.y4m"), header);
            for (int i = 0; i < frames; ++i) {
                PlanarPicture p = test_picture(37, 21, chroma, i);
                const int cw = p.chroma_width();
                for (int row = 1; frames == 2 && chroma == Chroma::c422 && row < p.chroma_height(); row += 2)
                    for (std::vector<uint8_t>* plane : {&p.u, &p.v})
                        std::copy_n(plane->begin() + (row - 1) * cw, cw, plane->begin() + row * cw);
                writer.write_frame(p);
            }
            writer.close();
        }
        const Result r = run_program(std::string("-n 2 -f ") + (chroma == Chroma::c420 ? "yv12" : "yuy2") + " -o '" +
                                         (scratch / "out.y4m") + "' - < '" + (scratch / "in.y4m") + "'", scratch);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_NE(r.err.find("2 frames"), std::string::npos) << r.err;
        EXPECT_EQ(read_file(scratch / "out.y4m"), read_file(scratch / "want.y4m"));
    }
}

// A picture of the size given, written by the program itself (for sub-picture art).
std::string write_png(const ScratchDir& scratch, const std::string& size) {
    const std::string dir = scratch / ("png" + size);
    EXPECT_EQ(run_program("-q -n 1 --size " + size + " -o '" + dir + "'", scratch).status, 0);
    return dir + "/frame_0001.png";
}

// One line for every kind of bad input, with its exit status and nothing left behind (one case
// of each reader's refusals; damaged files are the fuzz targets' work); and one note for each
// thing an input holds that the run does not show, unless quiet. The headers' tags come in any
// order, with the 4:2:0 spellings, none at all, and tags the program passes over.
TEST(Program, SaysWhatItRefusesAndWhatItLeavesOut) {
    ScratchDir scratch;
    const std::string frame = y4m_frame(test_picture(64, 32, Chroma::c420, 0));
    write_file(scratch / "text.y4m", "hello, world\n");
    write_file(scratch / "truncated.y4m", y4m_header(64, 32, "420") + frame + frame + frame.substr(0, 100));
    write_file(scratch / "good.y4m", "YUV4MPEG2 H32 W64 I? XCOLORRANGE=LIMITED\n" + frame);
    write_file(scratch / "top.y4m", "YUV4MPEG2 W64 H32 F30000:1001 It A10:11 C420jpeg XYSCSS=420JPEG\n" + frame);
    write_file(scratch / "bottom.y4m", y4m_header(64, 32, "420mpeg2", " Ib") + frame);
    write_file(scratch / "full.y4m", y4m_header(64, 32, "420", " XCOLORRANGE=FULL") + frame);
    write_file(scratch / "422.y4m", y4m_header(64, 32, "422") + y4m_frame(test_picture(64, 32, Chroma::c422, 0)));
    write_file(scratch / "444.y4m", y4m_header(64, 32, "444") + frame);
    write_file(scratch / "fake.png", "GIF89a this is no PNG");
    const std::string bar = "'" + write_png(scratch, "40x12") + "'";

    struct Case {
        std::string args;
        int status;
        const char* says;  // null: nothing (no note)
    };
    const std::string d = scratch.path.string() + "/";
    std::string missing_isa;  // a set this library or CPU lacks: there is always one
    for (const IsaName& n : isa_names)
        if (n.bit && !(dispconv_isa_available() & n.bit)) missing_isa = n.name;
    const std::string not_here = "--isa " + missing_isa + " is not available here";
    const Case cases[] = {
        {"'" + d + "missing.y4m'", 1, "cannot read"},
        {"'" + d + "text.y4m'", 1, "not a YUV4MPEG2 file"},
        {"'" + d + "truncated.y4m'", 1, "frame 3 is truncated"},
        {"'" + d + "444.y4m'", 1, "unsupported chroma layout '444'"},
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
        {"--isa " + missing_isa, 2, not_here.c_str()},
        {"-f rgb32 -o '" + d + "out/x.y4m'", 2, "needs a yuy2 or yv12 surface"},
        {"-f rgb565 -o -", 2, "-o - writes YUV4MPEG2, which needs a yuy2 or yv12 surface"},
        {"-f yv12 '" + d + "422.y4m'", 2, "-f yv12 needs a 4:2:0 input"},
        {"-f yv12 -s edge", 2, "-s edge cannot write a yv12 surface"},
        {"--interlaced --no-subpicture", 2, "--interlaced needs a sub-picture"},
        {"--subpicture-at 64,0 --subpicture " + bar + " '" + d + "good.y4m'", 2, "lies outside the 64x32 frame"},
        {"'" + d + "bottom.y4m'", 0, "is interlaced (bottom field first) and shown as whole frames"},
        {"-q '" + d + "bottom.y4m'", 0, nullptr},
        {"'" + d + "top.y4m'", 0, "is interlaced (top field first) and shown as whole frames"},
        {"--interlaced -s 1x2 '" + d + "bottom.y4m'", 0, nullptr},
        {"'" + d + "full.y4m'", 0, "is full range (XCOLORRANGE=FULL), but the kernels assume video range"},
        {"--no-subpicture '" + d + "422.y4m'", 0, "is 4:2:2, and the kernels give each odd row the chroma"},
        {"--size 32x16 --subpicture " + bar, 0, "larger than the 32x16 frame: its middle 32x12"},
        {"--subpicture-at 20,10 --subpicture " + bar + " '" + d + "good.y4m'", 0, nullptr},
        {"--subpicture-at 30,10 --subpicture " + bar + " '" + d + "bottom.y4m' -i", 0,
         "at 30,10 reaches past the 64x32 frame: its top-left 34x12 is shown"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const std::string out = d + (c.status ? "out" : "shown");
        const Result r = run_program((c.status ? "-q -o '" : "-n 1 --force -o '") + out + "' " + c.args + " </dev/null", scratch);
        EXPECT_EQ(r.status, c.status) << r.err;
        if (c.says) {
            EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
        }
        EXPECT_TRUE(r.out.empty()) << r.out;
        if (c.status) {
            EXPECT_EQ(r.err.rfind("dispconv: ", 0), 0u) << r.err;
            EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << "one line: " << r.err;
            EXPECT_TRUE(files_in(out).empty()) << "left " << files_in(out).front();
        } else {
            int notes = 0;
            for (size_t at = r.err.find("dispconv: note: "); at != std::string::npos; at = r.err.find("dispconv: note: ", at + 1))
                ++notes;
            EXPECT_EQ(notes, c.says ? 1 : 0) << r.err;
        }
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
