// Every choice the command line offers, run on a smooth picture: each either shows that
// picture (scaled as its stretch says) or is refused with a reason before any kernel runs.
// Under the sanitizers this also proves that no choice makes a kernel leave its buffers.
#include <cmath>
#include <cstdlib>

#include "frame.hpp"
#include "pipeline.hpp"
#include "subpicture.hpp"
#include "tool_support.hpp"

namespace dispconv::tool::test {
namespace {

PlanarPicture smooth_picture(int width, int height, Chroma chroma) {
    PlanarPicture p;
    p.allocate(width, height, chroma);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) p.y[y * width + x] = static_cast<uint8_t>(40 + 90 * x / width + 90 * y / height);
    const int cw = p.chroma_width(), ch = p.chroma_height();
    for (int y = 0; y < ch; ++y)
        for (int x = 0; x < cw; ++x) {
            p.u[y * cw + x] = static_cast<uint8_t>(90 + 80 * y / ch);
            p.v[y * cw + x] = static_cast<uint8_t>(170 - 70 * x / cw);
        }
    return p;
}

TEST(Pipeline, EveryChoiceShowsThePictureOrIsRefused) {
    const int width = 50, height = 38;
    const Geometry g = Geometry::for_size(width, height);
    RgbaPicture clear;  // fully transparent art: the mixers run, the picture must not change
    clear.width = 16;
    clear.height = 8;
    clear.rgba.assign(16 * 8 * 4, 0);
    const SurfaceFormat formats[] = {SurfaceFormat::rgb32,  SurfaceFormat::rgb24,  SurfaceFormat::rgb565,
                                     SurfaceFormat::rgb555, SurfaceFormat::rgb664, SurfaceFormat::rgb655,
                                     SurfaceFormat::yuy2,   SurfaceFormat::yv12};
    // Unstretched whole frames differ from RGB32 only by each format's precision.
    const int precision[] = {0, 0, 7, 7, 15, 7, 3, 3};
    const Stretch stretches[] = {Stretch::none, Stretch::double_height, Stretch::double_height_filter,
                                 Stretch::double_size, Stretch::edge};
    int shown = 0, refused = 0;
    for (Chroma chroma : {Chroma::c420, Chroma::c422}) {
        const PlanarPicture picture = smooth_picture(width, height, chroma);
        SourceFrame frame(g, chroma);
        frame.load(picture);
        Job plain;
        const RgbPicture reference =
            surface_to_rgb(Pipeline(plain, g, chroma).run(frame, nullptr), width, height);
        for (int f = 0; f < 8; ++f)
            for (Stretch stretch : stretches)
                for (int field : {-1, 0, 1})
                    for (bool sub : {false, true}) {
                        const SurfaceFormat format = formats[f];
                        Job job;
                        job.format = format;
                        job.stretch = stretch;
                        job.field = field;
                        job.subpicture = sub;
                        job.contrast = 1.0;
                        const std::string what = std::string(format_info(format).name) + " " + stretch_name(stretch) +
                                                 " field " + std::to_string(field) + (sub ? " sub" : "") +
                                                 (chroma == Chroma::c422 ? " 4:2:2" : " 4:2:0");
                        SCOPED_TRACE(what);
                        std::unique_ptr<Pipeline> pipeline;
                        try {
                            pipeline = std::make_unique<Pipeline>(job, g, chroma);
                        } catch (const ToolError& e) {
                            ++refused;
                            EXPECT_GT(std::string(e.what()).size(), 20u);
                            continue;
                        }
                        ++shown;
                        std::unique_ptr<SubPicture> prepared;
                        if (sub) prepared = std::make_unique<SubPicture>(prepare_subpicture(clear, g));
                        const RgbPicture out =
                            surface_to_rgb(pipeline->run(frame, prepared.get()), pipeline->output_width(),
                                           pipeline->output_height());
                        const int sx = pipeline->scale_x(), sy = pipeline->scale_y();
                        ASSERT_EQ(out.width, width * sx);
                        ASSERT_EQ(out.height, height * sy);
                        // Compare with the unstretched picture at the matching place; the
                        // stretches interpolate and the 16-bit layouts truncate, so allow a
                        // little on average and more at single pixels.
                        long total = 0;
                        int worst = 0;
                        for (int y = 0; y < out.height; ++y)
                            for (int x = 0; x < out.width; ++x)
                                for (int c = 0; c < 3; ++c) {
                                    const int a = out.rgb[(y * out.width + x) * 3 + c];
                                    const int b = reference.rgb[((y / sy) * width + x / sx) * 3 + c];
                                    total += std::abs(a - b);
                                    worst = std::max(worst, std::abs(a - b));
                                }
                        const double mean = static_cast<double>(total) / (out.width * out.height * 3);
                        EXPECT_LT(mean, 6.0);
                        EXPECT_LT(worst, 48);
                        if (stretch == Stretch::none && field == -1 && !sub) {
                            EXPECT_LE(worst, precision[f]);
                        }
                    }
    }
    EXPECT_GT(shown, 100);
    EXPECT_GT(refused, 0);
}

}  // namespace
}  // namespace dispconv::tool::test
