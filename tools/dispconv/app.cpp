#include "app.hpp"

#include <unistd.h>

#include <chrono>
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
    input.header = input.reader->header();
    input.frames = options.frames > 0 ? options.frames : -1;
    return input;
}

int run(const Options& options) {
    Input input = open_input(options);
    const Geometry geometry = Geometry::for_size(input.header.width, input.header.height);
    const bool y4m_out = is_y4m_path(options.output);
    if (y4m_out && !format_info(options.format).yuv)
        throw ToolError(std::string("a .y4m output needs a yuy2 or yv12 surface, not ") + format_info(options.format).name);

    std::optional<RgbaPicture> art;
    if (!options.subpicture.empty()) {
        art = read_png(options.subpicture);
    } else if (!input.reader && !options.no_subpicture) {
        art = make_subtitle(input.header.width, input.header.height);
    }

    Job job;
    job.format = options.format;
    job.stretch = options.stretch;
    job.field = options.field;
    job.subpicture = art.has_value();
    job.contrast = options.contrast;
    job.brightness = options.brightness;
    job.saturation = options.saturation;
    const Chroma chroma = input.header.chroma;
    Pipeline pipeline(job, geometry, chroma);
    if (pipeline.ignores_saturation() && options.saturation != 1.0 && !options.quiet)
        std::fprintf(stderr, "dispconv: note: the yv12 stretches scale chroma with the contrast; --saturation has no effect\n");

    std::optional<SubPicture> sub;
    if (art) sub = prepare_subpicture(*art, geometry);

    Y4mHeader out_header = input.header;
    if (options.field >= 0) out_header.interlace = 'p';
    OutputSink sink(options.output, out_header);
    SourceFrame source(geometry, chroma);
    Progress progress(input.frames, !options.quiet);
    PlanarPicture picture;
    std::chrono::steady_clock::duration kernel_time{};
    int done = 0;
    while (input.read(picture)) {
        source.load(picture);
        const auto start = std::chrono::steady_clock::now();
        const Surface& surface = pipeline.run(source, sub ? &*sub : nullptr);
        kernel_time += std::chrono::steady_clock::now() - start;
        sink.write(surface, pipeline.output_width(), pipeline.output_height());
        progress.update(++done);
    }
    sink.commit();
    progress.finish();

    if (!options.quiet) {
        const double seconds = std::chrono::duration<double>(kernel_time).count();
        std::printf("dispconv: wrote %s (%dx%d %s, stretch %s%s%s); kernels %s: %d frames in %.2f ms, %.0f frames/s\n",
                    sink.describe().c_str(), pipeline.output_width(), pipeline.output_height(),
                    format_info(options.format).name, stretch_name(options.stretch),
                    options.field >= 0 ? (options.field ? ", bottom field" : ", top field") : "",
                    sub ? ", sub-picture" : "", pipeline.kernels().c_str(), done, seconds * 1e3,
                    seconds > 0 ? done / seconds : 0.0);
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
    try {
        return run(options);
    } catch (const ToolError& e) {
        std::fprintf(stderr, "dispconv: error: %s\n", e.what());
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "dispconv: error: out of memory\n");
    }
    return 1;
}

}  // namespace dispconv::tool
