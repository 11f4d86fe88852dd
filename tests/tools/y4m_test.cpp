// YUV4MPEG2 reading and writing.
#include "tool_support.hpp"
#include "y4m.hpp"

namespace dispconv::tool::test {
namespace {

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
        {
            Y4mWriter writer(path, header);
            for (int i = 0; i < 3; ++i) writer.write_frame(test_picture(37, 21, chroma, i));
            writer.close();
        }
        Y4mReader reader(path);
        EXPECT_EQ(reader.header().chroma, chroma);
        EXPECT_EQ(reader.header().interlace, 't');
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
