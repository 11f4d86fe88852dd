// YUV4MPEG2 reading and writing.
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

TEST(Y4mHeader, RejectsWhatItCannotShowWithAReason) {
    struct Case {
        std::string line;
        const char* reason;
    };
    const Case cases[] = {
        {"P6 640 480 255", "not a YUV4MPEG2 file"},
        {"YUV4MPEG2 W64 H64 C444", "unsupported chroma layout '444'"},
        {"YUV4MPEG2 W64 H64 C420p10", "unsupported bit depth"},
        {"YUV4MPEG2 W0 H64", "is empty"},
        {"YUV4MPEG2 W100000 H64", "too large"},
        {"YUV4MPEG2 W-5 H64", "malformed width"},
        {"YUV4MPEG2 W64 Habc", "malformed height"},
        {"YUV4MPEG2 W64", "lacks the picture width or height"},
        {"YUV4MPEG2 W64 H64 F-1:1", "malformed frame rate '-1:1'"},  // would wrap to a negative rate
        {"YUV4MPEG2 W64 H64 F3000000000:1", "malformed frame rate"},
        {"YUV4MPEG2 W64 H64 Ix", "unknown interlace tag"},
        {std::string("YUV4MPEG2 W64 H64 I\0", 20), "unknown interlace tag"},  // a NUL byte is no tag
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        try {
            parse_y4m_header(c.line);
            ADD_FAILURE() << "accepted";
        } catch (const ToolError& e) {
            EXPECT_NE(std::string(e.what()).find(c.reason), std::string::npos) << e.what();
        }
    }
}

TEST(Y4mFile, WriterAndReaderRoundTripOddSizesInBothLayouts) {
    ScratchDir scratch;
    for (Chroma chroma : {Chroma::c420, Chroma::c422}) {
        const std::string path = scratch / "clip.y4m";
        Y4mHeader header;
        header.width = 37;  // odd: chroma planes are rounded up
        header.height = 21;
        header.chroma = chroma;
        header.rate_num = 24000;
        header.rate_den = 1001;
        header.interlace = 't';
        header.full_range = true;
        {
            Y4mWriter writer(path, header);
            for (int i = 0; i < 3; ++i) writer.write_frame(test_picture(37, 21, chroma, i));
            writer.close();
        }
        Y4mReader reader(path);
        EXPECT_EQ(reader.header().chroma, chroma);
        EXPECT_EQ(reader.header().interlace, 't');
        EXPECT_TRUE(reader.header().full_range);
        EXPECT_EQ(reader.header().rate_num, 24000);
        PlanarPicture p;
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(reader.read_frame(p));
            const PlanarPicture expected = test_picture(37, 21, chroma, i);
            EXPECT_EQ(p.u.size(), static_cast<size_t>(19 * (chroma == Chroma::c420 ? 11 : 21)));
            EXPECT_EQ(p.y, expected.y);
            EXPECT_EQ(p.u, expected.u);
            EXPECT_EQ(p.v, expected.v);
        }
        EXPECT_FALSE(reader.read_frame(p));
    }
}

}  // namespace
}  // namespace dispconv::tool::test
