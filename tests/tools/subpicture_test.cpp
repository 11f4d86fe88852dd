// Sub-picture preparation from RGBA art through the library's preparation kernels.
#include "clip.hpp"
#include "subpicture.hpp"
#include "tool_support.hpp"

namespace dispconv::tool::test {
namespace {

TEST(SubPicture, PlacementIsCentredOnAnEvenColumnAndCutToTheFrame) {
    struct Case {
        int art_w, art_h, frame_w, frame_h, x, y;
    };
    const Case cases[] = {
        {100, 20, 640, 360, 270, 318},  // 360 - 20 - 22
        {101, 20, 640, 360, 268, 318},  // (640 - 101) / 2 = 269, moved to 268
        {640, 360, 640, 360, 0, 0},
        {800, 500, 640, 360, 0, 0},
    };
    for (const Case& c : cases) {
        const Placement p = place_art(c.art_w, c.art_h, c.frame_w, c.frame_h);
        EXPECT_EQ(p.x, c.x) << c.art_w << "x" << c.art_h;
        EXPECT_EQ(p.y, c.y) << c.art_w << "x" << c.art_h;
    }
}

TEST(SubPicture, PlanesHoldTheArtWhereItIsAndNothingElsewhere) {
    // 6x2 art on a 64x32 frame: white, half-transparent red, transparent, opaque blue, ...
    RgbaPicture art;
    art.width = 6;
    art.height = 2;
    const uint8_t row[6][4] = {{255, 255, 255, 255}, {255, 0, 0, 128}, {0, 255, 0, 0},
                               {0, 0, 255, 255},     {0, 0, 0, 0},     {255, 0, 0, 255}};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 6; ++x) art.rgba.insert(art.rgba.end(), row[x], row[x] + 4);
    const Geometry g = Geometry::for_size(64, 32);
    const SubPicture sub = prepare_subpicture(art, g);
    const Placement at = place_art(6, 2, 64, 32);
    ASSERT_EQ(at.x % 2, 0);

    const int levels[6] = {16, 8, 0, 16, 0, 16};
    for (int y = 0; y < g.padded_height; ++y)
        for (int x = 0; x < g.padded_width; ++x) {
            const bool inside = y >= at.y && y < at.y + 2 && x >= at.x && x < at.x + 6;
            const int expected = inside ? levels[x - at.x] : 0;
            ASSERT_EQ(sub.opacity.data()[y * sub.stride + x], expected) << x << "," << y;
        }
    uint8_t Y, U, V;
    const size_t top = static_cast<size_t>(at.y) * sub.stride + at.x;
    rgb_to_yuv(255, 255, 255, Y, U, V);
    EXPECT_NEAR(sub.y.data()[top], Y, 1);  // white
    rgb_to_yuv(0, 0, 255, Y, U, V);
    EXPECT_NEAR(sub.y.data()[top + 3], Y, 1);  // blue
    // Pair (4, 5): the left pixel is transparent, the right one red: the pair's chroma must be
    // red's, not the colour key's (magenta), which would show as a fringe.
    rgb_to_yuv(255, 0, 0, Y, U, V);
    const size_t pair = static_cast<size_t>(at.y) * (sub.stride / 2) + (at.x + 4) / 2;
    EXPECT_NEAR(sub.u.data()[pair], U, 1);
    EXPECT_NEAR(sub.v.data()[pair], V, 1);
    // Both rows of the art are in the planes (4:2:2: one chroma row per pixel row).
    EXPECT_EQ(sub.u.data()[pair + sub.stride / 2], sub.u.data()[pair]);
}

}  // namespace
}  // namespace dispconv::tool::test
