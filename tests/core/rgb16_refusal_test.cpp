// Every kernel that writes 16-bit RGB refuses a layout selector outside 0..3: nothing written,
// the record left as it was.
#include "mix/mix_support.hpp"

namespace dispconv::test {
namespace {

TEST(Rgb16Layout, SelectorsOutsideTheTableWriteNothing) {
    const FrameKernel frame_kernels[] = {loadimage_rgb16, loadimage_rgb16_ajust, LoadYUY2_RGB16,
                                         LoadYUY2_RGB16_adjust, strech_picture_1X2_yuy2_ajust_rgb16};
    const MixKernel record_kernels[] = {mix_ayuy2_rgb16_p_ajust, mix_ayuy2_rgb16_i_ajust,
                                        load_subpicture_yuy2_rgb16, load_subpicture_yuy2_rgb16_ajust};
    set_adjust();
    for (const int32_t layout : {4, 7, -1, 1000}) {
        SCOPED_TRACE(::testing::Message() << "layout " << layout);
        MixJob job(16, 12, 32, 13);
        job.surface.rgb16_layout = layout;
        const Buffer untouched = job.image;
        for (const FrameKernel k : frame_kernels)
            k(job.frame_y.data(), job.frame_u.data(), job.frame_v.data(), job.image.data(), 16, 12,
              job.frame_stride, 32, &job.surface);
        EXPECT_TRUE(same_bytes(untouched, job.image));
        for (const MixKernel k : record_kernels) {
            const MIX_INFO before = job.record();
            MIX_INFO info = before;
            k(&info);
            EXPECT_TRUE(same_bytes(untouched, job.image));
            EXPECT_TRUE(same_record(before, info));
        }
    }
}

}  // namespace
}  // namespace dispconv::test
