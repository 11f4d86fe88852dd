// Sub-picture preparation from RGBA art through the library's preparation kernels.
#include <tuple>

#include "clip.hpp"
#include "subpicture.hpp"
#include "tool_support.hpp"

namespace dispconv::tool::test {
namespace {

TEST(SubPicture, PlacementIsCentredOrGivenAndCutToTheFrame) {
    struct Case {
        int art_w, art_h, frame_w, frame_h, at_x, at_y;  // at_x -1: centred
        Placement expected;
    };
    const Case cases[] = {
        {100, 20, 640, 360, -1, 0, {270, 170, 0, 0, 100, 20}},
        {101, 20, 640, 360, -1, 0, {268, 170, 0, 0, 101, 20}},  // (640 - 101) / 2 = 269, moved to 268
        {640, 360, 640, 360, -1, 0, {0, 0, 0, 0, 640, 360}},
        {800, 500, 640, 360, -1, 0, {0, 0, 80, 70, 640, 360}},  // cut evenly on both sides
        {800, 20, 640, 360, -1, 0, {0, 170, 80, 0, 640, 20}},
        {100, 20, 640, 360, 600, 350, {600, 350, 0, 0, 40, 10}},  // cut at the right and the bottom
        {100, 20, 640, 360, 0, 0, {0, 0, 0, 0, 100, 20}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.art_w) + "x" + std::to_string(c.art_h) + " at " + std::to_string(c.at_x));
        const Placement p = c.at_x < 0 ? centre_art(c.art_w, c.art_h, c.frame_w, c.frame_h)
                                       : place_art_at(c.at_x, c.at_y, c.art_w, c.art_h, c.frame_w, c.frame_h);
        const Placement& e = c.expected;
        EXPECT_EQ(std::tie(p.x, p.y, p.art_x, p.art_y, p.width, p.height),
                  std::tie(e.x, e.y, e.art_x, e.art_y, e.width, e.height));
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
    const Placement at = centre_art(6, 2, 64, 32);
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

    // Art wider than the frame loses as much on the left as on the right: of 80 columns with
    // only 7, 8, 71 and 72 opaque, the 64-wide frame shows 8 at its left edge and 71 at its right.
    RgbaPicture wide;
    wide.width = 80;
    wide.height = 1;
    wide.rgba.assign(80 * 4, 0);
    for (int x : {7, 8, 71, 72}) wide.rgba[x * 4 + 3] = 255;
    const SubPicture cut = prepare_subpicture(wide, g);
    const int first_row = centre_art(80, 1, 64, 32).y;
    for (int x = 0; x < g.padded_width; ++x)
        EXPECT_EQ(cut.opacity.data()[first_row * cut.stride + x], x == 0 || x == 63 ? 16 : 0) << x;
}

}  // namespace
}  // namespace dispconv::tool::test
