#include "app.hpp"

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>

#include "clip.hpp"
#include "frame.hpp"
#include "options.hpp"
#include "output.hpp"
#include "pipeline.hpp"
#include "png_io.hpp"
#include "subpicture.hpp"
#include "y4m.hpp"

namespace dispconv::tool {
namespace {

volatile std::sig_atomic_t stop_signal = 0;

extern "C" void on_stop_signal(int signal) { stop_signal = signal; }

void install_signal_handlers() {
    struct sigaction action = {};
    action.sa_handler = on_stop_signal;
    sigemptyset(&action.sa_mask);
    // No SA_RESTART: a read or write blocked on a pipe returns, so that the run stops promptly.
    action.sa_flags = 0;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // A reader leaving the pipe makes the next write fail with EPIPE, reported as a write error.
    std::signal(SIGPIPE, SIG_IGN);
}

// A run stopped by SIGINT or SIGTERM, with what was done about its files.
struct Interrupted {
    int signal;
    std::string cleanup;
};

void check_stop() {
    if (stop_signal) throw Interrupted{stop_signal, "no file written"};
}

// A one-line progress bar on standard error, drawn only on a terminal.
class Progress {
public:
    Progress(int total, bool enabled) : total_(total), enabled_(enabled && isatty(STDERR_FILENO) && total != 1) {}
    ~Progress() { finish(); }
    void finish() {
        if (drawn_) std::fputs("\r\033[K", stderr);
        drawn_ = false;
    }
    void update(int done) {
        if (!enabled_) return;
        drawn_ = true;
        if (total_ <= 0) {
            std::fprintf(stderr, "\r%d frames", done);
        } else {
            const int width = 30, filled = done * width / total_;
            std::fprintf(stderr, "\r[%.*s%*s] %d/%d", filled, "##############################", width - filled, "",
                         done, total_);
        }
        std::fflush(stderr);
    }

private:
    int total_;
    bool enabled_;
    bool drawn_ = false;
};

struct Input {
    std::unique_ptr<Y4mReader> reader;  // null: the built-in clip
    std::string name;                   // for notes
    Y4mHeader header;
    int frames = 0;  // frames to process; -1 while unknown (until the file ends)
    int next = 0;

    bool read(PlanarPicture& picture) {
        if (frames >= 0 && next >= frames) return false;
        if (reader) {
            if (!reader->read_frame(picture)) return false;
        } else {
            picture = make_clip_frame(header.width, header.height, next);
        }
        ++next;
        return true;
    }
};

Input open_input(const Options& options) {
    Input input;
    if (options.input.empty()) {
        input.header.width = options.clip_width;
        input.header.height = options.clip_height;
        input.frames = options.frames > 0 ? options.frames : clip_default_frames;
        return input;
    }
    input.reader = std::make_unique<Y4mReader>(options.input);
    input.name = options.input == "-" ? "standard input" : "'" + options.input + "'";
    input.header = input.reader->header();
    input.frames = options.frames > 0 ? options.frames : -1;
    return input;
}

std::string size_text(int width, int height) { return std::to_string(width) + "x" + std::to_string(height); }

// Where the sub-picture goes, with a note when part of it is cut off.
Placement place_subpicture(const Options& options, const RgbaPicture& art, const Geometry& geometry,
                           std::string& note) {
    const std::string frame = size_text(geometry.width, geometry.height);
    const std::string what = "the sub-picture '" + options.subpicture + "' (" + size_text(art.width, art.height) + ")";
    if (options.subpicture_x < 0) {
        const Placement at = centre_art(art.width, art.height, geometry.width, geometry.height);
        if (at.width < art.width || at.height < art.height)
            note = what + " is larger than the " + frame + " frame: its middle " + size_text(at.width, at.height) +
                   " is shown";
        return at;
    }
    if (options.subpicture_x >= geometry.width || options.subpicture_y >= geometry.height)
        throw UsageError("--subpicture-at " + std::to_string(options.subpicture_x) + "," +
                         std::to_string(options.subpicture_y) + " lies outside the " + frame + " frame");
    const Placement at = place_art_at(options.subpicture_x, options.subpicture_y, art.width, art.height,
                                      geometry.width, geometry.height);
    if (at.width < art.width || at.height < art.height)
        note = what + " at " + std::to_string(at.x) + "," + std::to_string(at.y) + " reaches past the " + frame +
               " frame: its top-left " + size_text(at.width, at.height) + " is shown";
    return at;
}

int run(const Options& options, const char* isa) {
    auto note = [&options](const std::string& text) {
        if (!options.quiet && !text.empty()) std::fprintf(stderr, "dispconv: note: %s\n", text.c_str());
    };
    Input input = open_input(options);
    check_stop();
    const Geometry geometry = Geometry::for_size(input.header.width, input.header.height);
    const OutputKind output = output_kind(options.output);
    if (output != OutputKind::pictures && !format_info(options.format).yuv)
        throw UsageError(std::string(output == OutputKind::standard_output ? "-o - writes" : "a .y4m output is") +
                         " YUV4MPEG2, which needs a yuy2 or yv12 surface, not -f " + format_info(options.format).name);

    const char interlace = input.header.interlace;
    int field = options.field;
    if (field == first_field) field = interlace == 'b' ? 1 : 0;
    if (field < 0 && interlace != 'p')
        note(input.name + " is interlaced (" + describe_interlace(interlace) +
             ") and shown as whole frames; --interlaced shows one field at a time");
    if (input.header.chroma == Chroma::c422 && options.stretch != Stretch::double_size)
        note(input.name + " is 4:2:2, and the kernels give each odd row the chroma of the row above: "
             "the colour of odd rows is not shown");
    if (input.header.full_range)
        note(input.name + " is full range (XCOLORRANGE=FULL), but the kernels assume video range (16-235): "
             "its darkest and lightest shades will clip");

    std::optional<RgbaPicture> art;
    if (!options.subpicture.empty()) {
        art = read_png(options.subpicture);
    } else if (!input.reader && !options.no_subpicture) {
        art = make_subtitle(input.header.width, input.header.height);
    }
    check_stop();

    Job job;
    job.format = options.format;
    job.stretch = options.stretch;
    job.field = field;
    job.subpicture = art.has_value();
    job.contrast = options.contrast;
    job.brightness = options.brightness;
    job.saturation = options.saturation;
    const Chroma chroma = input.header.chroma;
    Pipeline pipeline(job, geometry, chroma);
    if (pipeline.ignores_saturation() && options.saturation != 1.0)
        note("the yv12 stretches scale chroma with the contrast; --saturation has no effect");

    std::optional<SubPicture> sub;
    if (art) {
        std::string cut;
        const Placement at = place_subpicture(options, *art, geometry, cut);
        note(cut);
        sub = prepare_subpicture(*art, geometry, at);
    }

    Y4mHeader out_header = input.header;
    if (field >= 0) out_header.interlace = 'p';
    OutputSink sink(options.output, out_header, options.force);
    Progress progress(input.frames, !options.quiet);
    std::chrono::steady_clock::duration kernel_time{};
    int done = 0;
    try {
        SourceFrame source(geometry, chroma);
        PlanarPicture picture;
        for (;;) {
            check_stop();
            if (!input.read(picture)) break;
            check_stop();
            source.load(picture);
            const auto start = std::chrono::steady_clock::now();
            const Surface& surface = pipeline.run(source, sub ? &*sub : nullptr);
            kernel_time += std::chrono::steady_clock::now() - start;
            sink.write(surface, pipeline.output_width(), pipeline.output_height());
            progress.update(++done);
        }
        check_stop();
        sink.commit();
    } catch (const Interrupted& stop) {
        throw Interrupted{stop.signal, sink.discard()};
    } catch (const ToolError&) {
        // A read or write cut short by the signal fails; the signal is the news.
        if (stop_signal) throw Interrupted{stop_signal, sink.discard()};
        throw;
    }
    progress.finish();

    if (!options.quiet) {
        const double seconds = std::chrono::duration<double>(kernel_time).count();
        std::fprintf(stderr,
                     "dispconv: wrote %s (%dx%d %s, stretch %s%s%s)%s; %s kernels %s: %d frames in %.2f ms, %.0f frames/s\n",
                     sink.describe().c_str(), pipeline.output_width(), pipeline.output_height(),
                     format_info(options.format).name, stretch_name(options.stretch),
                     field >= 0 ? (field ? ", bottom field" : ", top field") : "", sub ? ", sub-picture" : "",
                     sink.removed_earlier() > 0
                         ? (", removed " + std::to_string(sink.removed_earlier()) + " left from an earlier run").c_str()
                         : "",
                     isa, pipeline.kernels().c_str(), done, seconds * 1e3, seconds > 0 ? done / seconds : 0.0);
    }
    return 0;
}

}  // namespace

int run_tool(int argc, char** argv) {
    Options options;
    try {
        options = parse_options(argc, argv);
    } catch (const UsageError& e) {
        std::fprintf(stderr, "dispconv: %s (see dispconv --help)\n", e.what());
        return 2;
    }
    if (options.help) {
        std::fputs(usage_text(), stdout);
        return 0;
    }
    if (options.version) {
        std::printf("dispconv %s\n", dispconv_version());
        return 0;
    }
    install_signal_handlers();
    try {
        return run(options, choose_isa(options));
    } catch (const Interrupted& e) {
        std::fprintf(stderr, "dispconv: interrupted by %s; %s\n", e.signal == SIGINT ? "SIGINT" : "SIGTERM",
                     e.cleanup.c_str());
        return 128 + e.signal;
    } catch (const UsageError& e) {
        std::fprintf(stderr, "dispconv: %s (see dispconv --help)\n", e.what());
        return 2;
    } catch (const ToolError& e) {
        if (stop_signal) {
            std::fprintf(stderr, "dispconv: interrupted by %s; no file written\n", stop_signal == SIGINT ? "SIGINT" : "SIGTERM");
            return 128 + stop_signal;
        }
        std::fprintf(stderr, "dispconv: error: %s\n", e.what());
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "dispconv: error: out of memory\n");
    }
    return 1;
}

}  // namespace dispconv::tool
