// The program's surface readers, checked against the kernels that write the surfaces.
#include <cstdlib>

#include "frame.hpp"
#include "pipeline.hpp"
#include "surface.hpp"
#include "tool_support.hpp"

namespace dispconv::tool::test {
namespace {

// Runs one frame through the plain loading path and reads the surface back.
RgbPicture load_and_read(const PlanarPicture& picture, SurfaceFormat format) {
    const Geometry g = Geometry::for_size(picture.width, picture.height);
    SourceFrame frame(g, picture.chroma);
    frame.load(picture);
    Job job;
    job.format = format;
    Pipeline pipeline(job, g, picture.chroma);
    return surface_to_rgb(pipeline.run(frame, nullptr), pipeline.output_width(), pipeline.output_height());
}

TEST(SurfaceReader, EveryFormatShowsThePictureTheRgb32KernelShows) {
    // The RGB32 reader only reorders bytes; every other format must agree with it within its
    // precision. A swapped channel, chroma plane or row shows as a large difference.
    for (Chroma chroma : {Chroma::c420, Chroma::c422}) {
        const PlanarPicture picture = test_picture(70, 46, chroma, 3);
        const RgbPicture reference = load_and_read(picture, SurfaceFormat::rgb32);
        struct Case {
            SurfaceFormat format;
            int tolerance;
        };
        const Case cases[] = {{SurfaceFormat::rgb24, 0},  {SurfaceFormat::rgb565, 7}, {SurfaceFormat::rgb555, 7},
                              {SurfaceFormat::rgb664, 15}, {SurfaceFormat::rgb655, 7}, {SurfaceFormat::yuy2, 3},
                              {SurfaceFormat::yv12, 3}};
        for (const Case& c : cases) {
            if (chroma == Chroma::c422 && c.format == SurfaceFormat::yv12) continue;
            SCOPED_TRACE(format_info(c.format).name);
            const RgbPicture actual = load_and_read(picture, c.format);
            ASSERT_EQ(actual.width, 70);
            ASSERT_EQ(actual.height, 46);
            int worst = 0;
            size_t worst_at = 0;
            for (size_t i = 0; i < reference.rgb.size(); ++i) {
                const int d = std::abs(reference.rgb[i] - actual.rgb[i]);
                if (d > worst) worst = d, worst_at = i;
            }
            EXPECT_LE(worst, c.tolerance) << "at pixel " << worst_at / 3 << " channel " << worst_at % 3;
        }
    }
}

}  // namespace
}  // namespace dispconv::tool::test
