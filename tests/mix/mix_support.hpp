// A mixing job for the tests: random frame and sub-picture planes (alphas 0..16) with spare
// rows below the area, canary-filled output planes, and the record that describes them.
#pragma once

#include <cstring>
#include <tuple>

#include "support/test_support.hpp"

namespace dispconv::test {

struct MixJob {
    int width, height, frame_stride, sub_stride, image_stride;
    Buffer frame_y, frame_u, frame_v, alpha, sub_y, sub_u, sub_v, image, image_u, image_v;
    ajust_contrast_info surface{};

    MixJob(int w, int h, int image_pitch, uint32_t seed, int frame_pitch = 0, int sub_pitch = 0)
        : width(w), height(h), frame_stride(frame_pitch ? frame_pitch : w + 16),
          sub_stride(sub_pitch ? sub_pitch : w + 32), image_stride(image_pitch),
          frame_y(rows() * frame_stride), frame_u(rows() * (frame_stride / 2)),
          frame_v(rows() * (frame_stride / 2)), alpha(rows() * sub_stride),
          sub_y(rows() * sub_stride), sub_u(rows() * (sub_stride / 2)),
          sub_v(rows() * (sub_stride / 2)), image(rows() * image_stride),
          image_u(rows() * (image_stride / 2)), image_v(rows() * (image_stride / 2)) {
        uint32_t s = seed;
        for (Buffer* b : {&frame_y, &frame_u, &frame_v, &sub_y, &sub_u, &sub_v, &alpha})
            fill_random(b->data(), b->size(), s++);
        for (size_t i = 0; i < alpha.size(); ++i) alpha[i] %= 17;
    }
    size_t rows() const { return size_t(height) + 4; }

    MIX_INFO record() {
        return MIX_INFO{frame_stride,  sub_stride,     image_stride,   width,         height,
                        frame_y.data(), frame_v.data(), frame_u.data(), alpha.data(), sub_y.data(),
                        sub_v.data(),  sub_u.data(),   image.data(),   image_u.data(),
                        image_v.data(), 0x12345678u,   7,              9,             &surface};
    }
    uint8_t& fy(int row, int x) { return frame_y[size_t(row) * frame_stride + x]; }
    uint8_t& fu(int row, int x) { return frame_u[size_t(row) * (frame_stride / 2) + x]; }
    uint8_t& fv(int row, int x) { return frame_v[size_t(row) * (frame_stride / 2) + x]; }
};

inline void fill_all(Buffer& b, uint8_t value) { std::memset(b.data(), value, b.size()); }
inline auto fields(const MIX_INFO& r) {
    return std::tie(r.frame_stride, r.sub_stride, r.image_stride, r.width, r.height, r.frame_y,
                    r.frame_v, r.frame_u, r.sub_opacity, r.sub_y, r.sub_v, r.sub_u, r.image,
                    r.image_u, r.image_v, r.color_key, r.reserved1, r.reserved2, r.surface_format);
}
inline bool same_record(const MIX_INFO& a, const MIX_INFO& b) { return fields(a) == fields(b); }

// Runs `mixer` on the job's record into a separate YUY2 image of 2 * width bytes per row.
inline Buffer mix_to_yuy2(MixKernel mixer, MixJob& job, MIX_INFO* record_out = nullptr) {
    Buffer yuy2(job.rows() * 2 * job.width);
    MIX_INFO info = job.record();
    info.image = yuy2.data();
    info.image_stride = 2 * job.width;
    mixer(&info);
    if (record_out) *record_out = info;
    return yuy2;
}

// The RGB rows of `rows` YUY2 rows, each converted on its own by a plain frame loader (source
// stride 0 makes the second row of its pair the first again).
inline Buffer convert_rows(FrameKernel convert, int layout, const Buffer& yuy2, int width,
                           int rows, int bpp, Buffer expected, int dst_stride) {
    ajust_contrast_info s{};
    s.rgb16_layout = layout;
    std::vector<uint8_t> scratch(2 * size_t(width) * bpp);
    for (int r = 0; r < rows; ++r) {
        convert(const_cast<uint8_t*>(yuy2.data()) + size_t(r) * 2 * width, nullptr, nullptr,
                scratch.data(), width, 1, 0, width * bpp, &s);
        std::memcpy(&expected[size_t(r) * dst_stride], scratch.data(), size_t(width) * bpp);
    }
    return expected;
}

}  // namespace dispconv::test
