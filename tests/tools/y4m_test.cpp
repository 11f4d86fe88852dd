// The YUV4MPEG2 header: every tag the program reads, in any order. Refusals are shown through the
// program and, for damaged headers, left to the fuzz target.
#include "tool_support.hpp"
#include "y4m.hpp"

namespace dispconv::tool::test {
namespace {

TEST(Y4mHeader, AcceptsTheLayoutsTheKernelsRead) {
    struct Case {
        const char* line;
        int width, height;
        Chroma chroma;
        char interlace;
        int rate_num, rate_den;
        bool full_range;
    };
    const Case cases[] = {
        {"YUV4MPEG2 W720 H480 F30000:1001 It A10:11 C420jpeg", 720, 480, Chroma::c420, 't', 30000, 1001, false},
        {"YUV4MPEG2 W16 H8 C422 Ib XCOLORRANGE=FULL", 16, 8, Chroma::c422, 'b', 25, 1, true},
        {"YUV4MPEG2 H2 W3", 3, 2, Chroma::c420, 'p', 25, 1, false},  // 4:2:0 when no C tag, any order
        {"YUV4MPEG2 W64 H64 C420mpeg2 XYSCSS=420MPEG2 I? XCOLORRANGE=LIMITED", 64, 64, Chroma::c420, 'p', 25, 1, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        const Y4mHeader h = parse_y4m_header(c.line);
        EXPECT_EQ(h.width, c.width);
        EXPECT_EQ(h.height, c.height);
        EXPECT_EQ(h.chroma, c.chroma);
        EXPECT_EQ(h.interlace, c.interlace);
        EXPECT_EQ(h.rate_num, c.rate_num);
        EXPECT_EQ(h.rate_den, c.rate_den);
        EXPECT_EQ(h.full_range, c.full_range);
    }
}

}  // namespace
}  // namespace dispconv::tool::test
