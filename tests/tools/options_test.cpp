// The command line and the picture settings.
#include <initializer_list>
#include <tuple>

#include "options.hpp"
#include "support/test_support.hpp"
#include "tool_support.hpp"

namespace dispconv::tool::test {
namespace {

Options parse(std::initializer_list<const char*> args) {
    std::vector<std::string> storage{"dispconv"};
    storage.insert(storage.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& s : storage) argv.push_back(s.data());
    argv.push_back(nullptr);
    return parse_options(static_cast<int>(storage.size()), argv.data());
}

TEST(CommandLine, ReadsEveryChoice) {
    const Options o = parse({"-f", "rgb655", "--stretch=1x2-filter", "--interlaced=bottom", "--contrast", "1.5",
                             "--brightness=-20", "--saturation", "0", "-n", "3", "--size", "96x40", "-o", "pics",
                             "--subpicture", "menu.png", "--subpicture-at", "4,6", "--force", "-q", "in.y4m"});
    EXPECT_EQ(std::tie(o.format, o.stretch, o.field, o.frames, o.clip_width, o.clip_height, o.subpicture_x, o.subpicture_y),
              std::make_tuple(SurfaceFormat::rgb655, Stretch::double_height_filter, 1, 3, 96, 40, 4, 6));
    EXPECT_EQ(std::tie(o.contrast, o.brightness, o.saturation, o.force, o.quiet), std::make_tuple(1.5, -20.0, 0.0, true, true));
    EXPECT_EQ(std::tie(o.output, o.subpicture, o.input), std::make_tuple("pics", "menu.png", "in.y4m"));

    const Options d = parse({});
    EXPECT_EQ(std::tie(d.format, d.stretch, d.field, d.input), std::make_tuple(SurfaceFormat::rgb32, Stretch::none, -1, ""));
    EXPECT_EQ(parse({"-i"}).field, first_field);
    EXPECT_EQ(parse({"-"}).input, "-");
}

// Grey stays grey and mid-grey stays mid-grey under any contrast and saturation, through the
// library's own adjustment; brightness moves luma alone, and contrast and saturation scale the
// distance from mid-grey.
TEST(PictureSettings, KeepGreyThroughTheAdjustingKernel) {
    const auto through = [](double contrast, double brightness, double saturation, uint8_t sample) {
        ajust_contrast_info s = adjust_settings(contrast, brightness, saturation);
        get_contrast_data(&s);
        return dispconv::test::adjust_through_kernel(sample, sample, sample);
    };
    for (double contrast : {0.0, 0.5, 1.0, 1.7, 4.0})
        for (double saturation : {0.0, 0.25, 1.0, 2.5, 4.0})
            EXPECT_EQ(through(contrast, 0, saturation, 128), (dispconv::test::Adjusted{128, 128, 128}))
                << "contrast " << contrast << " saturation " << saturation;
    EXPECT_EQ(through(1, 30, 1, 100), (dispconv::test::Adjusted{130, 100, 100}));
    EXPECT_EQ(through(2, 0, 0.5, 100), (dispconv::test::Adjusted{72, 114, 114}));  // 128 - 2 * 28, 128 - 28 / 2
}

}  // namespace
}  // namespace dispconv::tool::test
