// The command line and the picture settings.
#include <initializer_list>

#include "options.hpp"
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
    EXPECT_EQ(o.format, SurfaceFormat::rgb655);
    EXPECT_EQ(o.stretch, Stretch::double_height_filter);
    EXPECT_EQ(o.field, 1);
    EXPECT_DOUBLE_EQ(o.contrast, 1.5);
    EXPECT_DOUBLE_EQ(o.brightness, -20);
    EXPECT_DOUBLE_EQ(o.saturation, 0);
    EXPECT_EQ(o.frames, 3);
    EXPECT_EQ(o.clip_width, 96);
    EXPECT_EQ(o.clip_height, 40);
    EXPECT_EQ(o.output, "pics");
    EXPECT_EQ(o.subpicture, "menu.png");
    EXPECT_EQ(o.subpicture_x, 4);
    EXPECT_EQ(o.subpicture_y, 6);
    EXPECT_TRUE(o.force);
    EXPECT_TRUE(o.quiet);
    EXPECT_EQ(o.input, "in.y4m");

    const Options d = parse({});
    EXPECT_EQ(d.format, SurfaceFormat::rgb32);
    EXPECT_EQ(d.stretch, Stretch::none);
    EXPECT_EQ(d.field, -1);
    EXPECT_TRUE(d.input.empty());
    EXPECT_EQ(parse({"-i"}).field, first_field);
    EXPECT_EQ(parse({"-"}).input, "-");
}

// Grey stays grey and mid-grey stays mid-grey under any contrast and saturation, through the
// library's own adjustment.
TEST(PictureSettings, KeepGreyThroughTheAdjustingKernel) {
    for (double contrast : {0.0, 0.5, 1.0, 1.7, 4.0})
        for (double saturation : {0.0, 0.25, 1.0, 2.5, 4.0}) {
            SCOPED_TRACE("contrast " + std::to_string(contrast) + " saturation " + std::to_string(saturation));
            ajust_contrast_info s = adjust_settings(contrast, 0, saturation);
            get_contrast_data(&s);
            // Two rows of 16 pixels: the kernel works on row pairs.
            uint8_t src[64], dst[64] = {};
            for (int i = 0; i < 64; ++i) src[i] = 128;  // Y 128, U 128, V 128
            LoadYUY2_YUY2_adjust(src, nullptr, nullptr, dst, 16, 2, 16, 32, nullptr);
            for (int i = 0; i < 64; ++i) EXPECT_EQ(dst[i], 128) << "byte " << i;
        }
    ajust_contrast_info brighter = adjust_settings(1, 30, 1);
    get_contrast_data(&brighter);
    uint8_t src[64], dst[64] = {};
    for (int i = 0; i < 64; ++i) src[i] = 100;
    LoadYUY2_YUY2_adjust(src, nullptr, nullptr, dst, 16, 2, 16, 32, nullptr);
    EXPECT_EQ(dst[0], 130);  // luma raised
    EXPECT_EQ(dst[1], 100);  // chroma untouched
    // Contrast and saturation scale the distance from mid-grey.
    ajust_contrast_info stronger = adjust_settings(2, 0, 0.5);
    get_contrast_data(&stronger);
    LoadYUY2_YUY2_adjust(src, nullptr, nullptr, dst, 16, 2, 16, 32, nullptr);
    EXPECT_EQ(dst[0], 72);   // 128 - 2 * 28
    EXPECT_EQ(dst[1], 114);  // 128 - 28 / 2
}

}  // namespace
}  // namespace dispconv::tool::test
