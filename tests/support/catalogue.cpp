#include "support/catalogue.hpp"

namespace dispconv::test {
namespace {

constexpr uint32_t bit(dispconv_buffer b) { return 1u << b; }
constexpr uint32_t Y = bit(DISPCONV_BUFFER_SRC_Y), YUV = Y | bit(DISPCONV_BUFFER_SRC_U) | bit(DISPCONV_BUFFER_SRC_V),
                   D = bit(DISPCONV_BUFFER_DST), M = bit(DISPCONV_BUFFER_MASK), O = bit(DISPCONV_BUFFER_SUB_OPACITY),
                   I = bit(DISPCONV_BUFFER_IMAGE),
                   SUB = bit(DISPCONV_BUFFER_SUB_Y) | bit(DISPCONV_BUFFER_SUB_U) | bit(DISPCONV_BUFFER_SUB_V),
                   FRAME = bit(DISPCONV_BUFFER_FRAME_Y) | bit(DISPCONV_BUFFER_FRAME_U) | bit(DISPCONV_BUFFER_FRAME_V),
                   MIX = FRAME | O | SUB | I, YV12 = MIX | bit(DISPCONV_BUFFER_IMAGE_U) | bit(DISPCONV_BUFFER_IMAGE_V);

using S = Shape;
constexpr unsigned L = layout, E = even_src, W = src_is_width, PS = positive_src, PD = positive_dst, ED = even_dst;

// In the order of dispconv_kernel.
constexpr KernelFacts table[DISPCONV_KERNEL_COUNT] = {
    // name, shape, block, least width, src/dst/image half bytes, min height, parity, rules, buffers, plain twin
    {"LoadYUY2_YUY2", S::frame, 8, 8, 2, 4, 0, 1, 1, zero_height, Y | D, DISPCONV_KERNEL_COUNT},
    {"LoadYUY2_YUY2_adjust", S::frame, 8, 8, 2, 4, 0, 1, 1, zero_height, Y | D, DISPCONV_KERNEL_LoadYUY2_YUY2},
    {"LoadYUY2_RGB32", S::frame, 16, 16, 2, 8, 0, 1, 1, zero_height, Y | D, DISPCONV_KERNEL_COUNT},
    {"LoadYUY2_RGB32_adjust", S::frame, 16, 16, 2, 8, 0, 1, 1, zero_height, Y | D, DISPCONV_KERNEL_LoadYUY2_RGB32},
    {"LoadYUY2_RGB24", S::frame, 16, 16, 2, 6, 0, 1, 1, zero_height, Y | D, DISPCONV_KERNEL_COUNT},
    {"LoadYUY2_RGB24_adjust", S::frame, 16, 16, 2, 6, 0, 1, 1, zero_height, Y | D, DISPCONV_KERNEL_LoadYUY2_RGB24},
    {"LoadYUY2_RGB16", S::frame, 16, 16, 2, 4, 0, 1, 1, L | zero_height, Y | D, DISPCONV_KERNEL_COUNT},
    {"LoadYUY2_RGB16_adjust", S::frame, 16, 16, 2, 4, 0, 1, 1, L | zero_height, Y | D, DISPCONV_KERNEL_LoadYUY2_RGB16},
    {"loadimage_yuy2", S::frame, 16, 16, 2, 4, 0, 1, 1, E | zero_height, YUV | D, DISPCONV_KERNEL_COUNT},
    {"loadimage_yuy2_ajust", S::frame, 16, 16, 2, 4, 0, 10, 2, E | zero_height | refuses_low, YUV | D, DISPCONV_KERNEL_COUNT},
    {"loadimage_yuy2_mono_ajust", S::frame, 16, 16, 2, 4, 0, 1, 1, zero_height, Y | D, DISPCONV_KERNEL_COUNT},
    {"loadimage_half_yuy2_ajust", S::frame, 16, 16, 2, 2, 0, 1, 1, E | zero_height, YUV | D, DISPCONV_KERNEL_COUNT},
    {"loadimage_yv12", S::frame, 16, 16, 2, 2, 0, 2, 2, W | PD | ED | zero_height, YUV | D, DISPCONV_KERNEL_COUNT},
    {"loadimage_yv12_ajust", S::frame, 16, 16, 2, 2, 0, 2, 2, W | PD | ED | placement | zero_height, YUV | D, DISPCONV_KERNEL_COUNT},
    {"loadimage_half_yv12_ajust", S::frame, 16, 32, 2, 1, 0, 2, 2, E | PD | ED | zero_height, YUV | D, DISPCONV_KERNEL_COUNT},
    {"loadimage_rgb32", S::frame, 16, 16, 2, 8, 0, 1, 1, E | zero_height, YUV | D, DISPCONV_KERNEL_COUNT},
    {"loadimage_rgb32_ajust", S::frame, 16, 16, 2, 8, 0, 1, 1, E | zero_height, YUV | D, DISPCONV_KERNEL_loadimage_rgb32},
    {"loadimage_rgb24", S::frame, 16, 16, 2, 6, 0, 1, 1, E | zero_height, YUV | D, DISPCONV_KERNEL_COUNT},
    {"loadimage_rgb24_ajust", S::frame, 16, 16, 2, 6, 0, 1, 1, E | zero_height, YUV | D, DISPCONV_KERNEL_loadimage_rgb24},
    {"loadimage_rgb16", S::frame, 16, 16, 2, 4, 0, 1, 1, E | L | zero_height, YUV | D, DISPCONV_KERNEL_COUNT},
    {"loadimage_rgb16_ajust", S::frame, 16, 16, 2, 4, 0, 1, 1, E | L | zero_height, YUV | D, DISPCONV_KERNEL_loadimage_rgb16},
    // stretch: the planar frames write two destination rows per source row
    {"strech_picture_1X2_yuy2", S::frame, 16, 16, 2, 4, 0, 8, 1, E | PS | refuses_low, YUV | D, DISPCONV_KERNEL_COUNT},
    {"strech_picture_1X2_yuy2_ajust", S::frame, 16, 16, 2, 4, 0, 8, 1, E | PS | refuses_low, YUV | D, DISPCONV_KERNEL_COUNT},
    {"strech_picture_1X2_yuy2_ajust_rgb32", S::frame, 16, 16, 2, 8, 0, 12, 1, E | PS | refuses_low, YUV | D, DISPCONV_KERNEL_COUNT},
    {"strech_picture_1X2_yuy2_ajust_rgb24", S::frame, 16, 16, 2, 6, 0, 12, 1, E | PS | block_walk | refuses_low, YUV | D, DISPCONV_KERNEL_COUNT},
    {"strech_picture_1X2_yuy2_ajust_rgb16", S::frame, 16, 16, 2, 4, 0, 12, 1, E | PS | L | block_walk | refuses_low, YUV | D, DISPCONV_KERNEL_COUNT},
    {"strech_picture_2X2_yuy2", S::frame, 16, 32, 2, 8, 0, 8, 1, E | PS | refuses_low, YUV | D, DISPCONV_KERNEL_COUNT},
    {"strech_picture_2X2_yuy2_ajust", S::frame, 16, 32, 2, 8, 0, 8, 1, E | PS | refuses_low, YUV | D, DISPCONV_KERNEL_strech_picture_2X2_yuy2},
    {"yuy2_strech_picture_2X2_yuy2", S::packed_2x2, 32, 64, 0, 4, 0, 16, 1, block_walk | refuses_low, Y | D, DISPCONV_KERNEL_COUNT},
    {"yuy2_strech_picture_2X2_yuy2_ajust", S::packed_2x2, 32, 64, 0, 4, 0, 16, 1, block_walk | refuses_low, Y | D, DISPCONV_KERNEL_yuy2_strech_picture_2X2_yuy2},
    {"strech_pic_2X2", S::plane, 8, 16, 2, 4, 0, 1, 1, unguarded, Y | D, DISPCONV_KERNEL_COUNT},
    {"strech_pic_2X2_adjust", S::plane, 16, 16, 2, 4, 0, 2, 1, W | PD | plane_choice | unguarded, Y | D, DISPCONV_KERNEL_COUNT},
    {"strech_pic_1X2_adjust", S::plane, 1, 16, 2, 2, 0, 2, 1, PD | plane_choice | unguarded, Y | D, DISPCONV_KERNEL_COUNT},
    {"strech_picture_2X2_yv12_ajust", S::frame, 32, 32, 2, 4, 0, 4, 2, W | PD | ED | unguarded, YUV | D, DISPCONV_KERNEL_COUNT},
    {"strech_picture_1X2_yv12_ajust", S::frame, 2, 32, 2, 2, 0, 4, 2, E | PD | ED | unguarded, YUV | D, DISPCONV_KERNEL_COUNT},
    {"strech_opt_yuy2_ajust", S::edge_directed, 16, 48, 0, 4, 0, 8, 1, refuses_low, YUV | D, DISPCONV_KERNEL_COUNT},
    // sub-picture preparation: frame_stride, sub_stride and image rows
    {"Convert_RGB32_To_AYUY2", S::record, 8, 8, 0, 2, 8, 1, 1, PD, I | SUB, DISPCONV_KERNEL_COUNT},
    {"Convert_RGB24_To_AYUY2", S::record, 8, 8, 0, 2, 6, 1, 1, PD, I | SUB, DISPCONV_KERNEL_COUNT},
    {"Convert_RGB16_565_To_AYUY2", S::record, 8, 8, 0, 2, 4, 1, 1, PD, I | SUB, DISPCONV_KERNEL_COUNT},
    {"Restore_RGB32_To_Alpha", S::record, 8, 8, 2, 0, 8, 1, 1, PS | positive_image, I | O, DISPCONV_KERNEL_COUNT},
    {"Restore_RGB24_To_Alpha", S::record, 8, 8, 2, 0, 6, 1, 1, PS | positive_image, I | O, DISPCONV_KERNEL_COUNT},
    {"Restore_RGB16_565_To_Alpha", S::record, 16, 16, 2, 0, 4, 1, 1, PS | positive_image, I | O, DISPCONV_KERNEL_COUNT},
    {"load_subpicture_alpha_rgb32", S::record, 16, 16, 2, 0, 8, 1, 1, PS | positive_image, I | O, DISPCONV_KERNEL_COUNT},
    {"load_subpicture_alpha_rgb24", S::record, 16, 16, 2, 0, 6, 1, 1, PS | positive_image, I | O, DISPCONV_KERNEL_COUNT},
    {"load_subpicture_alpha_rgb16_565", S::record, 16, 16, 2, 0, 4, 1, 1, PS | positive_image, I | O, DISPCONV_KERNEL_COUNT},
    {"load_subpicture_yuy2_rgb32", S::record, 16, 16, 2, 0, 8, 1, 1, stride_is_width | zero_height, I | O | SUB, DISPCONV_KERNEL_COUNT},
    {"load_subpicture_yuy2_rgb32_ajust", S::record, 16, 16, 2, 0, 8, 1, 1, stride_is_width | zero_height, I | O | SUB, DISPCONV_KERNEL_load_subpicture_yuy2_rgb32},
    {"load_subpicture_yuy2_rgb24", S::record, 16, 16, 2, 0, 6, 1, 1, stride_is_width | zero_height, I | O | SUB, DISPCONV_KERNEL_COUNT},
    {"load_subpicture_yuy2_rgb24_ajust", S::record, 16, 16, 2, 0, 6, 1, 1, stride_is_width | zero_height, I | O | SUB, DISPCONV_KERNEL_load_subpicture_yuy2_rgb24},
    {"load_subpicture_yuy2_rgb16", S::record, 16, 16, 2, 0, 4, 1, 1, stride_is_width | L | zero_height, I | O | SUB, DISPCONV_KERNEL_COUNT},
    {"load_subpicture_yuy2_rgb16_ajust", S::record, 16, 16, 2, 0, 4, 1, 1, stride_is_width | L | zero_height, I | O | SUB, DISPCONV_KERNEL_load_subpicture_yuy2_rgb16},
    {"LoadColorKeyRgb32", S::fill, 16, 16, 0, 8, 0, 1, 1, zero_height, D, DISPCONV_KERNEL_COUNT},
    {"LoadColorKeyRgb24", S::fill, 16, 16, 0, 6, 0, 1, 1, zero_height, D, DISPCONV_KERNEL_COUNT},
    {"LoadColorKeyRgb16", S::fill, 16, 16, 0, 4, 0, 1, 1, zero_height, D, DISPCONV_KERNEL_COUNT},
    {"RelaceMaskWithColorKey", S::mask, 16, 16, 0, 2, 0, 1, 1, zero_height, D | M, DISPCONV_KERNEL_COUNT},
    // mixers: frame, sub-picture and output rows
    {"mix_ayuy2_yuy2_p_ajust", S::record, 16, 16, 2, 2, 4, 1, 1, even_frame | even_sub | zero_height, MIX, DISPCONV_KERNEL_COUNT},
    {"mix_ayuy2_half_yuy2_p_ajust", S::record, 16, 16, 2, 2, 2, 1, 1, even_sub | zero_height, MIX, DISPCONV_KERNEL_COUNT},
    {"mix_ayuy2_rgb32_p_ajust", S::record, 16, 16, 2, 2, 8, 1, 1, even_frame | even_sub | zero_height, MIX, DISPCONV_KERNEL_COUNT},
    {"mix_ayuy2_rgb24_p_ajust", S::record, 16, 16, 2, 2, 6, 1, 1, even_frame | even_sub | zero_height, MIX, DISPCONV_KERNEL_COUNT},
    {"mix_ayuy2_rgb16_p_ajust", S::record, 16, 16, 2, 2, 4, 1, 1, even_frame | even_sub | L | zero_height, MIX, DISPCONV_KERNEL_COUNT},
    {"mix_ayuy2_yuy2_i_ajust", S::record, 16, 16, 2, 2, 4, 4, 4, zero_height | refuses_low, MIX, DISPCONV_KERNEL_COUNT},
    {"mix_ayuy2_rgb32_i_ajust", S::record, 16, 16, 2, 2, 8, 4, 4, field_groups | zero_height, MIX, DISPCONV_KERNEL_COUNT},
    {"mix_ayuy2_rgb24_i_ajust", S::record, 16, 16, 2, 2, 6, 4, 4, field_groups | zero_height, MIX, DISPCONV_KERNEL_COUNT},
    {"mix_ayuy2_rgb16_i_ajust", S::record, 16, 16, 2, 2, 4, 4, 4, field_groups | L | zero_height, MIX, DISPCONV_KERNEL_COUNT},
    {"mix_ayv12_yv12_p", S::record, 16, 16, 2, 2, 2, 2, 2, even_sub | zero_height, YV12, DISPCONV_KERNEL_COUNT},
    {"mix_ayv12_yv12_p_ajust", S::record, 16, 16, 2, 2, 2, 2, 2, even_sub | zero_height, YV12, DISPCONV_KERNEL_mix_ayv12_yv12_p},
    {"mix_ayv12_yv12_i", S::record, 16, 16, 2, 2, 2, 4, 4, even_sub | zero_height, YV12, DISPCONV_KERNEL_COUNT},
};
static_assert(table[DISPCONV_KERNEL_yuy2_strech_picture_2X2_yuy2].shape == S::packed_2x2);
static_assert(table[DISPCONV_KERNEL_strech_opt_yuy2_ajust].shape == S::edge_directed);
static_assert(table[DISPCONV_KERNEL_LoadColorKeyRgb32].shape == S::fill);
static_assert(table[DISPCONV_KERNEL_RelaceMaskWithColorKey].shape == S::mask);
static_assert(table[DISPCONV_KERNEL_COUNT - 1].image_x2 == 2 && table[DISPCONV_KERNEL_COUNT - 1].parity == 4);

}  // namespace

const KernelFacts& facts(dispconv_kernel k) { return table[k]; }

}  // namespace dispconv::test
