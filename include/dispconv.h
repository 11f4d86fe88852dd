/*
 * dispconv: display-path pixel kernels for video players.
 *
 * A host decodes a frame (planar YV12 or packed YUY2), locks a display surface and calls one
 * kernel, which writes the picture into the surface in the surface's pixel format, optionally
 * stretched, colour-adjusted and mixed with a sub-picture. Every result is defined to the bit.
 *
 * Conventions shared by every kernel:
 *  - Kernels return nothing, allocate nothing and check almost nothing: the caller guarantees
 *    sizes, strides and the row padding stated in each kernel's comment. Widths and heights that
 *    are not a whole number of blocks are rounded up: the last block of a row reads and writes up
 *    to one block less one pixel beyond `width`, and an odd `height` processes one more row.
 *    Zero counts still process one block / row pair (loops test their counters at the bottom).
 *  - Source strides of the common frame signature count pixels (luma samples); destination
 *    strides count bytes. Strides are signed: a negative `dst_stride` with `dst` at the last row
 *    writes a bottom-up surface.
 *  - Kernels whose names end in `_ajust` / `_adjust` take the picture adjustment from the
 *    process-wide adjust constants loaded by get_contrast_data(); all five are zero until the
 *    first call, which turns every adjusted sample to 0.
 *  - The 16-bit RGB kernels read `rgb16_layout` (0: 5-6-5, 1: 5-5-5 with bit 0 clear, 2: 6-6-4,
 *    3: 6-5-5) and return without writing for any other value (compared unsigned).
 *  - Kernels are reentrant and may run on several threads at once on different buffers.
 *
 * The records below are laid out in 32-bit words on 32-bit targets exactly as the interface
 * defines them (MIX_INFO is 76 bytes, tagVideoFrame 136). On 64-bit targets the pointer fields
 * widen to 8 bytes and the compiler's natural alignment applies; the offsets are checked below
 * for both cases.
 */
#ifndef DISPCONV_H
#define DISPCONV_H

#include <stddef.h>
#include <stdint.h>

#if defined(DISPCONV_STATIC)
#define DISPCONV_API
#elif defined(_WIN32)
#if defined(DISPCONV_BUILDING)
#define DISPCONV_API __declspec(dllexport)
#else
#define DISPCONV_API __declspec(dllimport)
#endif
#else
#define DISPCONV_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------ */
/* Records                                                                                     */
/* ------------------------------------------------------------------------------------------ */

/* The host's picture settings. get_contrast_data() reads fields 1 to 8 (their low 16 bits);
 * the 16-bit RGB kernels read rgb16_layout; loadimage_yv12_ajust reads the last two. */
typedef struct ajust_contrast_info {
    int32_t luma_gain;         /* luma multiplier in 1/64 (64 = unchanged); keep within 0..257 */
    int32_t chroma_gain;       /* chroma multiplier in 1/64, about zero (not about 128) */
    int32_t luma_offset;       /* added to luma after scaling, with luma_offset_extra */
    int32_t u_offset;          /* added to U after scaling, with u_offset_extra */
    int32_t v_offset;          /* added to V after scaling, with v_offset_extra */
    int32_t luma_offset_extra;
    int32_t u_offset_extra;
    int32_t v_offset_extra;
    int32_t rgb16_layout;      /* 16-bit RGB layout selector 0..3 */
    int32_t reserved;          /* read by no kernel */
    int32_t dst_plane_height;  /* loadimage_yv12_ajust: places the destination chroma planes */
    int32_t dst_luma_height;   /* loadimage_yv12_ajust: places the destination chroma planes */
} ajust_contrast_info;

/* One sub-picture job. The sub-picture is four byte planes: opacity (0..16), Y, and 4:2:2 V
 * and U (one byte per horizontal pixel pair, one row per pixel row, row distance
 * sub_stride / 2). Several kernels advance the pointer fields and count `height` down in the
 * record itself: refill it before every call. */
typedef struct MIX_INFO {
    int32_t frame_stride;   /* main frame Y row distance in bytes; its U and V use half */
    int32_t sub_stride;     /* sub-picture opacity and Y row distance; its U and V use half */
    int32_t image_stride;   /* row distance of `image` in bytes */
    int32_t width;          /* pixels per row of the area */
    int32_t height;         /* rows of the area */
    uint8_t *frame_y;       /* main frame planes (YV12; note V before U) */
    uint8_t *frame_v;
    uint8_t *frame_u;
    uint8_t *sub_opacity;   /* sub-picture planes (note V before U) */
    uint8_t *sub_y;
    uint8_t *sub_v;
    uint8_t *sub_u;
    uint8_t *image;         /* surface written by the mixers, RGB bitmap read by preparation */
    uint8_t *image_u;       /* YV12 output chroma planes (note U before V) */
    uint8_t *image_v;
    uint32_t color_key;     /* transparent colour of an RGB sub-picture */
    int32_t reserved1;      /* read by no kernel */
    int32_t reserved2;      /* read by no kernel */
    ajust_contrast_info *surface_format; /* only rgb16_layout is read, by the RGB16 kernels */
} MIX_INFO;

/* The decoder's frame descriptor; strech_opt_yuy2_ajust reads five fields and nothing else. */
typedef struct tagVideoFrame {
    int32_t reserved_words_1_11[11];
    int32_t frame_structure;   /* 1: two interlaced fields, stretch one; else progressive */
    int32_t reserved_words_13_24[12];
    uint8_t *plane_y;          /* luma plane, rows frame_width bytes apart (no padding) */
    uint8_t *plane_u;          /* chroma planes, rows frame_width / 2 bytes apart */
    uint8_t *plane_v;
    int32_t reserved_words_28_33[6];
    int32_t frame_width;       /* width in pixels, and the luma row distance in bytes */
} tagVideoFrame;

#if defined(__cplusplus)
#define DISPCONV_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define DISPCONV_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#else
#define DISPCONV_ASSERT_JOIN2(a, b) a##b
#define DISPCONV_ASSERT_JOIN(a, b) DISPCONV_ASSERT_JOIN2(a, b)
#define DISPCONV_STATIC_ASSERT(cond, msg) \
    typedef char DISPCONV_ASSERT_JOIN(dispconv_layout_check_, __LINE__)[(cond) ? 1 : -1]
#endif

/* Every field at its defined place: on 32-bit targets field n is 32-bit word n (byte 4n - 4);
 * on 64-bit targets the pointers widen to 8 bytes with natural alignment. The first number of
 * each line is the 32-bit offset, the second the 64-bit one. */
#if UINTPTR_MAX == 0xFFFFFFFFu
#define DISPCONV_LAYOUT_AT(at32, at64) (at32)
#elif UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
#define DISPCONV_LAYOUT_AT(at32, at64) (at64)
#endif
#ifdef DISPCONV_LAYOUT_AT
#define DISPCONV_SIZE(type, at32, at64) \
    DISPCONV_STATIC_ASSERT(sizeof(type) == DISPCONV_LAYOUT_AT(at32, at64), #type " size")
#define DISPCONV_FIELD(type, field, at32, at64) \
    DISPCONV_STATIC_ASSERT(offsetof(type, field) == DISPCONV_LAYOUT_AT(at32, at64), #type "." #field)
DISPCONV_SIZE(ajust_contrast_info, 48, 48);
DISPCONV_FIELD(ajust_contrast_info, luma_gain, 0, 0);
DISPCONV_FIELD(ajust_contrast_info, chroma_gain, 4, 4);
DISPCONV_FIELD(ajust_contrast_info, luma_offset, 8, 8);
DISPCONV_FIELD(ajust_contrast_info, u_offset, 12, 12);
DISPCONV_FIELD(ajust_contrast_info, v_offset, 16, 16);
DISPCONV_FIELD(ajust_contrast_info, luma_offset_extra, 20, 20);
DISPCONV_FIELD(ajust_contrast_info, u_offset_extra, 24, 24);
DISPCONV_FIELD(ajust_contrast_info, v_offset_extra, 28, 28);
DISPCONV_FIELD(ajust_contrast_info, rgb16_layout, 32, 32);
DISPCONV_FIELD(ajust_contrast_info, reserved, 36, 36);
DISPCONV_FIELD(ajust_contrast_info, dst_plane_height, 40, 40);
DISPCONV_FIELD(ajust_contrast_info, dst_luma_height, 44, 44);
DISPCONV_SIZE(MIX_INFO, 76, 128);
DISPCONV_FIELD(MIX_INFO, frame_stride, 0, 0);
DISPCONV_FIELD(MIX_INFO, sub_stride, 4, 4);
DISPCONV_FIELD(MIX_INFO, image_stride, 8, 8);
DISPCONV_FIELD(MIX_INFO, width, 12, 12);
DISPCONV_FIELD(MIX_INFO, height, 16, 16);
DISPCONV_FIELD(MIX_INFO, frame_y, 20, 24);
DISPCONV_FIELD(MIX_INFO, frame_v, 24, 32);
DISPCONV_FIELD(MIX_INFO, frame_u, 28, 40);
DISPCONV_FIELD(MIX_INFO, sub_opacity, 32, 48);
DISPCONV_FIELD(MIX_INFO, sub_y, 36, 56);
DISPCONV_FIELD(MIX_INFO, sub_v, 40, 64);
DISPCONV_FIELD(MIX_INFO, sub_u, 44, 72);
DISPCONV_FIELD(MIX_INFO, image, 48, 80);
DISPCONV_FIELD(MIX_INFO, image_u, 52, 88);
DISPCONV_FIELD(MIX_INFO, image_v, 56, 96);
DISPCONV_FIELD(MIX_INFO, color_key, 60, 104);
DISPCONV_FIELD(MIX_INFO, reserved1, 64, 108);
DISPCONV_FIELD(MIX_INFO, reserved2, 68, 112);
DISPCONV_FIELD(MIX_INFO, surface_format, 72, 120);
DISPCONV_SIZE(tagVideoFrame, 136, 152);
DISPCONV_FIELD(tagVideoFrame, reserved_words_1_11, 0, 0);
DISPCONV_FIELD(tagVideoFrame, frame_structure, 44, 44);
DISPCONV_FIELD(tagVideoFrame, reserved_words_13_24, 48, 48);
DISPCONV_FIELD(tagVideoFrame, plane_y, 96, 96);
DISPCONV_FIELD(tagVideoFrame, plane_u, 100, 104);
DISPCONV_FIELD(tagVideoFrame, plane_v, 104, 112);
DISPCONV_FIELD(tagVideoFrame, reserved_words_28_33, 108, 120);
DISPCONV_FIELD(tagVideoFrame, frame_width, 132, 144);
#undef DISPCONV_FIELD
#undef DISPCONV_SIZE
#undef DISPCONV_LAYOUT_AT
#endif

/* ------------------------------------------------------------------------------------------ */
/* Picture adjustment                                                                          */
/* ------------------------------------------------------------------------------------------ */

/* Loads the five adjust constants from an ajust_contrast_info (fields 1 to 8, low 16 bits,
 * offset sums wrapping in 16 bits). Per sample the adjusting kernels then compute
 * clamp255(sat16(((x * gain) mod 65536) >> 6 + offset)); for chroma gain g an offset of
 * 128 - 128 * g / 64 keeps grey at 128. */
DISPCONV_API void get_contrast_data(void *settings);

/* ------------------------------------------------------------------------------------------ */
/* Frame loading: the common signature                                                         */
/*   (src_y, src_u, src_v, dst, width, height, src_stride, dst_stride, adjust)                 */
/* src_stride counts pixels (a packed YUY2 source row is 2 * src_stride bytes, planar chroma   */
/* rows are src_stride / 2 bytes); dst_stride counts bytes. Rows go in pairs, so an odd height */
/* writes height + 1 rows and height 0 writes two. `adjust` may be null except where stated.   */
/* ------------------------------------------------------------------------------------------ */

#define DISPCONV_FRAME_SIGNATURE                                                        \
    (void *src_y, void *src_u, void *src_v, void *dst, int32_t width, int32_t height,  \
     int32_t src_stride, int32_t dst_stride, ajust_contrast_info *adjust)

/* Packed YUY2 to YUY2, 8-pixel blocks. Each odd row takes the chroma of the row above it.
 * Padding: up to 7 pixels (14 bytes) beyond width on every source and destination row; the
 * next row pair still starts exactly two pitches on. */
DISPCONV_API void LoadYUY2_YUY2 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void LoadYUY2_YUY2_adjust DISPCONV_FRAME_SIGNATURE;

/* Packed YUY2 to RGB32 (B, G, R, 0), RGB24 (B, G, R) or 16-bit RGB, 16-pixel blocks, BT.601
 * video range, odd rows with the chroma of the row above. Padding: up to 15 pixels beyond width
 * on every source and destination row. The RGB16 kernels read adjust->rgb16_layout (adjust
 * must not be null). */
DISPCONV_API void LoadYUY2_RGB32 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void LoadYUY2_RGB32_adjust DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void LoadYUY2_RGB24 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void LoadYUY2_RGB24_adjust DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void LoadYUY2_RGB16 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void LoadYUY2_RGB16_adjust DISPCONV_FRAME_SIGNATURE;

/* Planar YV12 to YUY2. width must be a multiple of 16 (other widths drift right row by row).
 * loadimage_yuy2 leaves the first 8 bytes of every 32-byte block of each odd destination row
 *   unwritten.
 * loadimage_yuy2_ajust writes nothing unless height is even and greater than 8.
 * loadimage_yuy2_mono_ajust adjusts luma only and writes every chroma byte as 128; src_u and
 *   src_v are never read and may be null.
 * loadimage_half_yuy2_ajust writes width / 2 pixels per row (rounded averages of neighbouring
 *   pairs), every source row giving one output row. */
DISPCONV_API void loadimage_yuy2 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void loadimage_yuy2_ajust DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void loadimage_yuy2_mono_ajust DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void loadimage_half_yuy2_ajust DISPCONV_FRAME_SIGNATURE;

/* Planar YV12 to one YV12 surface at dst (Y plane, then V, then U).
 * loadimage_yv12: the source luma pitch is taken as width, the destination chroma planes start
 *   one byte before the end of the luma area (V at dst + height * dst_stride - 1, U a quarter
 *   of the luma area after it), and the chroma copy handles height chroma rows per plane, so a
 *   contiguous source whose V plane is followed by its U plane copies correctly.
 * loadimage_yv12_ajust reads adjust->dst_plane_height and adjust->dst_luma_height to place the
 *   chroma planes (adjust must not be null); the V plane takes the U offset and the U plane
 *   the V offset. Source planes are read back to back (pitch = width rounded up to 8).
 * loadimage_half_yv12_ajust keeps the odd samples of each row (width / 2 per row), planes back
 *   to back from dst. */
DISPCONV_API void loadimage_yv12 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void loadimage_yv12_ajust DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void loadimage_half_yv12_ajust DISPCONV_FRAME_SIGNATURE;

/* Planar YV12 to RGB32, RGB24 or 16-bit RGB, 16-pixel blocks; width must be a multiple of 16.
 * The RGB16 kernels read adjust->rgb16_layout (adjust must not be null). */
DISPCONV_API void loadimage_rgb32 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void loadimage_rgb32_ajust DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void loadimage_rgb24 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void loadimage_rgb24_ajust DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void loadimage_rgb16 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void loadimage_rgb16_ajust DISPCONV_FRAME_SIGNATURE;

/* ------------------------------------------------------------------------------------------ */
/* Stretching                                                                                  */
/* ------------------------------------------------------------------------------------------ */

/* Double height, planar YV12 to YUY2 (width x 2 * height). width must be a multiple of 16
 * (rows are walked in 16-pixel blocks; other widths overrun each row and drift right row by
 * row); chroma rows are src_stride / 2 apart. Nothing is written when height < 8. An odd height
 * is processed as height + 1. The bottom destination row always repeats the row above it.
 * strech_picture_1X2_yuy2 interpolates with rounded two-row averages.
 * strech_picture_1X2_yuy2_ajust uses the four-row filter (-1, 5, 5, -1) / 8 in the interior
 *   and two-row averages at the top and bottom, and adjusts every sample after interpolating. */
DISPCONV_API void strech_picture_1X2_yuy2 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void strech_picture_1X2_yuy2_ajust DISPCONV_FRAME_SIGNATURE;

/* Double height, planar YV12 to RGB32 / RGB24 / 16-bit RGB, adjusted before the rounded
 * two-row interpolation (same row schedule as strech_picture_1X2_yuy2, bottom row repeated).
 * Walked in 16-pixel vertical strips. Nothing is written when height < 12.
 * rgb32: width is rounded up to a multiple of 16 (up to 15 pixels of padding per row).
 * rgb24, rgb16: width must be a positive multiple of 16; any other width never ends the strip
 *   walk and runs past the surface.
 * rgb16 reads adjust->rgb16_layout (adjust must not be null) and writes nothing for a value
 *   outside 0..3. */
DISPCONV_API void strech_picture_1X2_yuy2_ajust_rgb32 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void strech_picture_1X2_yuy2_ajust_rgb24 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void strech_picture_1X2_yuy2_ajust_rgb16 DISPCONV_FRAME_SIGNATURE;

/* Double width and height, planar YV12 to YUY2 (destination rows hold 4 * width bytes). Each
 * source row is doubled horizontally (inserted rounded averages, right edge repeated), then
 * doubled rows are averaged on the strech_picture_1X2_yuy2 schedule. width must be a multiple
 * of 16 and at least 32 (width 16 runs a second block beyond the row). Nothing is written when
 * height < 8. The _ajust kernel adjusts source samples before interpolating. */
DISPCONV_API void strech_picture_2X2_yuy2 DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void strech_picture_2X2_yuy2_ajust DISPCONV_FRAME_SIGNATURE;

/* Double width and height of a packed YUY2 frame. `width` is the source row length in bytes
 * and also the source row distance (no row padding); it must be a multiple of 32 and at least
 * 64, or the strip walk runs past the picture. The middle pointers are not read. Destination
 * rows receive 2 * width bytes. Nothing is written when height < 16. The bottom destination row
 * repeats the row above it. The _ajust kernel adjusts source samples before interpolating. */
DISPCONV_API void yuy2_strech_picture_2X2_yuy2(void *src, void *unused_u, void *unused_v,
                                               void *dst, int32_t width, int32_t height,
                                               int32_t dst_stride);
DISPCONV_API void yuy2_strech_picture_2X2_yuy2_ajust(void *src, void *unused_u, void *unused_v,
                                                     void *dst, int32_t width, int32_t height,
                                                     int32_t dst_stride,
                                                     ajust_contrast_info *adjust);

/* One 8-bit plane to twice its width and height, in 8-column strips. width should be a
 * multiple of 8 and at least 16; height at least 1. Deliberate: every strip but the last
 * writes a copy of its bottom row to row 2 * height (one row below the picture, which must be
 * writable) and leaves row 2 * height - 1 unwritten in its 16 columns. */
DISPCONV_API void strech_pic_2X2(uint8_t *src, uint8_t *dst, int32_t width, int32_t height,
                                 int32_t src_stride, int32_t dst_stride);

/* One 8-bit plane stretched and adjusted with adjust_luma_gain for every plane and the offset
 * chosen by `plane` (1 luma, 2 U, 3 V; other values are unsupported). `adjust` is not read.
 * height must be at least 2; width a multiple of 16 (strech_pic_1X2_adjust: any width from 16).
 * strech_pic_2X2_adjust: twice the width and height. Row 0 is repeated on row 1, the output
 *   sits one row lower than strech_pic_2X2's, the last sample of each row is averaged with the
 *   byte after the row, and source rows are taken width bytes apart (pass src_stride = width).
 *   The bottom row is built from source row height - 2 and also written 2 * width bytes after
 *   row 2 * height - 2 (which is row 2 * height - 1 only when dst_stride = 2 * width).
 * strech_pic_1X2_adjust: twice the height, rows src_stride apart. Rows: 0 and 1 copy source
 *   row 0, then averages and copies; row 2 * height - 2 and the width bytes right after it
 *   repeat source row height - 2, so the last source row is never shown. */
DISPCONV_API void strech_pic_2X2_adjust(uint8_t *src, uint8_t *dst, int32_t width,
                                        int32_t height, int32_t src_stride, int32_t dst_stride,
                                        ajust_contrast_info *adjust, int32_t plane);
DISPCONV_API void strech_pic_1X2_adjust(uint8_t *src, uint8_t *dst, int32_t width,
                                        int32_t height, int32_t src_stride, int32_t dst_stride,
                                        ajust_contrast_info *adjust, int32_t plane);

/* A YV12 frame to one YV12 buffer at dst of twice the size (2X2) or height (1X2): three calls
 * of the plane kernel above, Y (plane 1) at dst, the plane from src_v at dst + P and the plane
 * from src_u at dst + P + P / 4 (P = 2 * height * dst_stride), chroma with halved width,
 * height and strides. Deliberate: the plane from src_v takes the U offset (plane 2) and the
 * plane from src_u the V offset (plane 3). The plane kernels' contracts apply to each plane. */
DISPCONV_API void strech_picture_2X2_yv12_ajust DISPCONV_FRAME_SIGNATURE;
DISPCONV_API void strech_picture_1X2_yv12_ajust DISPCONV_FRAME_SIGNATURE;

/* Double height with edge-directed interpolation, planar frame described by `frame` to YUY2,
 * every sample adjusted. Reads frame_structure, plane_y, plane_u, plane_v and frame_width
 * (the luma row distance; chroma rows are frame_width / 2 apart) and nothing else. With
 * frame_structure 1 one field (every second row) is stretched from row start_line; otherwise
 * the luma start is (frame_width * start_line) / 2 bytes in. Deliberate: the chroma starts are
 * a quarter of the luma offset in, even inside a chroma row. frame_width should be a multiple
 * of 16 above 32. Nothing is written when height < 8; an odd height drops its last row. The
 * bottom destination row repeats the row above it. */
DISPCONV_API void strech_opt_yuy2_ajust(tagVideoFrame *frame, int32_t start_line, int32_t height,
                                        uint8_t *dst, int32_t dst_stride,
                                        ajust_contrast_info *adjust);

/* ------------------------------------------------------------------------------------------ */
/* Sub-picture preparation and colour key                                                      */
/* ------------------------------------------------------------------------------------------ */

/* RGB sub-picture bitmap at `image` (rows image_stride bytes apart) to the Y, U and V planes of
 * an AYUY2 sub-picture, 8-pixel blocks, BT.601 studio range, U and V from the even pixel of each
 * pair. Reads sub_stride, image_stride, width, height, image, color_key. A block whose 8 pixels
 * all equal the key is skipped and its plane bytes left untouched; any other block is written
 * whole. Advances sub_y, sub_u, sub_v (by height rows) and sub_opacity (by height times
 * sub_stride - width only; nothing is written through it) in the record.
 * width must be at least 8 and height at least 1 (smaller values run on past the buffers); the
 * last width % 8 pixels of a row are not converted and each following row starts that many
 * pixels early. RGB32: the fourth byte is ORed into the constant term (keep it 0), the key is
 * compared on all 32 bits. RGB24: reads one byte past each row; the key is compared with the
 * pixel's three bytes, so a key with a non-zero top byte never matches. RGB16: 5-6-5 widened
 * without bit replication, key compared on its low 16 bits. */
DISPCONV_API void Convert_RGB32_To_AYUY2(MIX_INFO *info);
DISPCONV_API void Convert_RGB24_To_AYUY2(MIX_INFO *info);
DISPCONV_API void Convert_RGB16_565_To_AYUY2(MIX_INFO *info);

/* Opacity plane (sub_opacity) to and from an RGB bitmap (image) whose blue component carries
 * the level. Reads frame_stride, image_stride, width, height, image, sub_opacity; the pointer
 * fields are left unchanged. The opacity rows are (frame_stride - width) >> 1 bytes apart beyond
 * the pixels handled (deliberately frame_stride, not sub_stride: pass frame_stride = width for a
 * packed plane). height must be at least 1 (0 runs on past the buffers); an image_stride below
 * width times the pixel size handles the first row only. Blocks of 8 pixels for
 * Restore_RGB32_To_Alpha and Restore_RGB24_To_Alpha, 16 for the others: each row handles
 * width rounded up to the block (at least one block), the padding needed on both planes.
 * The two RGB24 kernels count height down to 0 in the record.
 *  - load_subpicture_alpha_rgb32 / _rgb24 / _rgb16_565 write level a as the pixel a,0,0,0 /
 *    a,0,0 / the 16-bit value a (levels above 31 spill into the green field).
 *  - Restore_RGB32_To_Alpha takes the first (blue) byte of each pixel; Restore_RGB16_565_To_Alpha
 *    the blue field (value & 0x1F); Restore_RGB24_To_Alpha deliberately takes the first byte of
 *    the next pixel, so levels come back one pixel to the left and each row reads one byte past
 *    its rounded-up end. */
DISPCONV_API void Restore_RGB32_To_Alpha(MIX_INFO *info);
DISPCONV_API void Restore_RGB24_To_Alpha(MIX_INFO *info);
DISPCONV_API void Restore_RGB16_565_To_Alpha(MIX_INFO *info);
DISPCONV_API void load_subpicture_alpha_rgb32(MIX_INFO *info);
DISPCONV_API void load_subpicture_alpha_rgb24(MIX_INFO *info);
DISPCONV_API void load_subpicture_alpha_rgb16_565(MIX_INFO *info);

/* AYUY2 sub-picture planes to a colour-keyed RGB32 (B, G, R, 0), RGB24 or 5-6-5 bitmap at
 * image, 16-pixel blocks. Reads frame_stride (pixels per row), image_stride, height, sub_y,
 * sub_u, sub_v, sub_opacity, image, color_key; the record is left unchanged. The planes are read
 * back to back: each row consumes frame_stride rounded up to 16 bytes of sub_y and sub_opacity
 * and half that of sub_u and sub_v; the bitmap needs room for as many pixels per row. height 0
 * converts one row. Per pixel, opacity 0 writes the key, 1..127 the converted colour, 128..255
 * zero. RGB32/RGB24 key: deliberately the low byte of color_key is red and the third blue. The
 * RGB16 kernels write the low 16 bits of color_key as the key, read
 * surface_format->rgb16_layout, return without writing for a value above 3 and deliberately
 * write 5-6-5 for 0..3 alike. */
DISPCONV_API void load_subpicture_yuy2_rgb32(MIX_INFO *info);
DISPCONV_API void load_subpicture_yuy2_rgb32_ajust(MIX_INFO *info);
DISPCONV_API void load_subpicture_yuy2_rgb24(MIX_INFO *info);
DISPCONV_API void load_subpicture_yuy2_rgb24_ajust(MIX_INFO *info);
DISPCONV_API void load_subpicture_yuy2_rgb16(MIX_INFO *info);
DISPCONV_API void load_subpicture_yuy2_rgb16_ajust(MIX_INFO *info);

/* Fills a rectangle of an RGB surface with color_key (RGB32: all 32 bits; RGB16: the low 16
 * bits; RGB24: the low 24). `reserved` is not read; stride counts bytes. height 0 returns
 * without writing; otherwise rows go in pairs (an odd height fills one extra row) and every row
 * gets width rounded up to 16 pixels (at least 16). The step to the next row pair uses the
 * nominal width, so a width off the block drifts right by the overshoot every pair: pass
 * multiples of 16. LoadColorKeyRgb24 deliberately stores its three fill words out of order,
 * giving a uniform rectangle only for keys whose three low bytes are equal. */
DISPCONV_API void LoadColorKeyRgb32(uint32_t color_key, void *surface, int32_t width,
                                    int32_t height, int32_t reserved, int32_t stride);
DISPCONV_API void LoadColorKeyRgb24(uint32_t color_key, void *surface, int32_t width,
                                    int32_t height, int32_t reserved, int32_t stride);
DISPCONV_API void LoadColorKeyRgb16(uint32_t color_key, void *surface, int32_t width,
                                    int32_t height, int32_t reserved, int32_t stride);

/* Where mask holds the low byte of mask_value, dst takes the low byte of key_value; every other
 * dst byte is left unchanged. Both planes share stride. Each row handles width rounded up to 16
 * bytes (at least 16), with the same drift as the fills for a width off the block; height 0
 * still processes one row. */
DISPCONV_API void RelaceMaskWithColorKey(uint8_t *dst, uint8_t *mask, uint32_t mask_value,
                                         uint32_t key_value, int32_t width, int32_t stride,
                                         int32_t height);

/* ------------------------------------------------------------------------------------------ */
/* Sub-picture mixing                                                                          */
/* ------------------------------------------------------------------------------------------ */

/* Every mixer takes one MIX_INFO, filled afresh before each call, with every pointer at the
 * first pixel of the area. The blend of a frame sample F and a sub-picture sample S with weight
 * a (0..16) is (F * (16 - a) + S * a) >> 4, truncated (alpha 8 over 255 and 0 gives 127).
 * Luma takes its own pixel's alpha; chroma takes the alpha of the right-hand pixel of its pair
 * (except where stated). The _ajust mixers apply the adjust constants to the mixed samples.
 * Frame row distances: frame_stride for Y, frame_stride >> 1 for U and V. Sub-picture: alpha
 * and Y rows sub_stride apart, one U and V row per pixel row, sub_stride >> 1 apart. */

/* Progressive mixers over a YV12 frame, 16-pixel blocks, two rows per pass sharing the frame's
 * chroma row (each row keeps its own sub-picture chroma row and alphas). Reads fields 1 to 13;
 * the RGB16 mixer also surface_format->rgb16_layout, and for a selector above 3 (unsigned)
 * returns without writing or touching the record.
 * The record is working state: frame_u, frame_v, sub_opacity, sub_y, sub_u and sub_v end one
 * area further on and height at 0 (even) or -1 (odd: one extra row is mixed); a second call
 * with the same record mixes one row pair below the first area. width must be a multiple of
 * 16: otherwise whole blocks are mixed (up to 15 pixels beyond the area) and every later row
 * pair drifts right by the excess. height 0 still mixes one row pair.
 * mix_ayuy2_yuy2_p_ajust writes 2 * width bytes of YUY2 per row. The second row of a pair is
 *   read frame_stride rounded down to even below the first (sub-picture: sub_stride likewise).
 * mix_ayuy2_half_yuy2_p_ajust writes width / 2 YUY2 pixels per row, made of the right-hand
 *   pixel of every pair and the odd chroma sample of every two. Deliberately, it reads the
 *   frame's second row and steps the frame's chroma rows by sub_stride, not frame_stride
 *   (the frame's Y rows still step by frame_stride).
 * mix_ayuy2_rgb32/rgb24/rgb16_p_ajust convert the mixed, adjusted samples to B, G, R, 0 / B, G,
 *   R / a 16-bit word as the frame loaders do. */
DISPCONV_API void mix_ayuy2_yuy2_p_ajust(MIX_INFO *info);
DISPCONV_API void mix_ayuy2_half_yuy2_p_ajust(MIX_INFO *info);
DISPCONV_API void mix_ayuy2_rgb32_p_ajust(MIX_INFO *info);
DISPCONV_API void mix_ayuy2_rgb24_p_ajust(MIX_INFO *info);
DISPCONV_API void mix_ayuy2_rgb16_p_ajust(MIX_INFO *info);

/* Interlaced mixers: the frame is one field of height / 2 Y rows (frame_stride apart) and
 * height / 4 chroma rows; height counts output and sub-picture rows and should be a multiple
 * of 4, width a multiple of 16. Output rows come in groups of four: field row k, the rounded
 * average (a + b + 1) >> 1 of rows k and k + 1, row k + 1, the average of rows k + 1 and k + 2;
 * chroma row j for the first two, the average of chroma rows j and j + 1 for the last two. The
 * final group reads nothing beyond the field: its fourth row repeats row k + 1 and all four
 * keep chroma row j. Reads fields 1 to 13 (RGB16: also rgb16_layout, refused above 3).
 * mix_ayuy2_yuy2_i_ajust writes nothing when height is below 4, one group when it is 4 to 7,
 *   and otherwise whole groups plus the final group (a height that is not a multiple of 4 is
 *   rounded up to one). It moves frame_u, frame_v, sub_opacity, sub_y, sub_u and sub_v in the
 *   record and leaves height at 0.
 * mix_ayuy2_rgb32/rgb24/rgb16_i_ajust change nothing in the record and weight chroma by the
 *   rounded average of the pair's two alphas. They work in 16-pixel strips, each walked down
 *   by the same groups (a height below 8 gives one final-scheme group of four rows, even below
 *   4) and then stepped back up by height times each plane's share of a row (frame_stride >> 1
 *   for field Y, frame_stride >> 3 for field chroma, sub_stride, sub_stride >> 1,
 *   image_stride). Unless height is a multiple of 4 (at least 4) and frame_stride a multiple
 *   of 8, later strips therefore start above or below the first. */
DISPCONV_API void mix_ayuy2_yuy2_i_ajust(MIX_INFO *info);
DISPCONV_API void mix_ayuy2_rgb32_i_ajust(MIX_INFO *info);
DISPCONV_API void mix_ayuy2_rgb24_i_ajust(MIX_INFO *info);
DISPCONV_API void mix_ayuy2_rgb16_i_ajust(MIX_INFO *info);

/* YV12 mixers: write Y at image (rows image_stride apart), then V at image_v, then U at
 * image_u (rows image_stride >> 1 apart), 8 samples per block; width must be a multiple of 16
 * and height even. Chroma row r mixes with the sub-picture's chroma row 2r and the right-hand
 * alphas of pixel row 2r (the lower row's alphas do not affect chroma). Reads fields 1 to 15;
 * moves no pointer, but halves height in the record (logical shift), so a second call with
 * the same record mixes half as many rows.
 * mix_ayv12_yv12_p_ajust adjusts every mixed sample.
 * mix_ayv12_yv12_i takes a field of height / 2 Y rows and height / 4 chroma rows (height a
 *   multiple of 4) and interpolates every odd output row as the rounded average of its field
 *   row and the next; the last interpolated row of each plane reads the row after the field,
 *   which must be readable. It halves width in the record as well. */
DISPCONV_API void mix_ayv12_yv12_p(MIX_INFO *info);
DISPCONV_API void mix_ayv12_yv12_p_ajust(MIX_INFO *info);
DISPCONV_API void mix_ayv12_yv12_i(MIX_INFO *info);

/* ------------------------------------------------------------------------------------------ */
/* Instruction sets                                                                            */
/* ------------------------------------------------------------------------------------------ */

/* Every kernel exists once per instruction set built into the library; all give the same bytes.
 * By default each call uses the fastest set this CPU runs, chosen on first use. */
#define DISPCONV_ISA_SSE2 1u   /* x86: SSE2 */
#define DISPCONV_ISA_AVX2 2u   /* x86: AVX2 */
#define DISPCONV_ISA_AVX512 4u /* x86: AVX-512BW with VL */
#define DISPCONV_ISA_NEON 8u   /* aarch64: Advanced SIMD */

/* The sets built into this library that this CPU runs, as DISPCONV_ISA_ bits (0 when only the
 * portable kernels are available). */
DISPCONV_API uint32_t dispconv_isa_available(void);

/* From the next kernel call on, kernels use the best available set among the bits of mask (0:
 * the portable kernels; unknown bits are ignored, and a mask naming only unavailable sets
 * selects the portable kernels). Returns the bit of the set now in use, 0 for portable. Safe
 * while kernels run on other threads: a call already running finishes on the set it started
 * with. Mainly for testing and measuring; the default, every set, is the fastest. */
DISPCONV_API uint32_t dispconv_set_isa_mask(uint32_t mask);

/* ------------------------------------------------------------------------------------------ */
/* Footprints                                                                                  */
/* ------------------------------------------------------------------------------------------ */

/* dispconv_get_footprint() tells, for one prospective call, which bytes the kernel will read and
 * write through each of its pointers, so that a caller can size and pad its buffers (the C++
 * interface in dispconv.hpp uses it to refuse calls that would leave their buffers). It accepts
 * only calls inside the kernel's contract: widths that are whole blocks, heights at or above the
 * kernel's minimum and of the parity it needs, strides whose rows do not overlap, a 16-bit
 * layout in 0..3 where one is read. Anything else is refused with the reason. */

typedef enum dispconv_kernel {
    /* load */
    DISPCONV_KERNEL_LoadYUY2_YUY2,
    DISPCONV_KERNEL_LoadYUY2_YUY2_adjust,
    DISPCONV_KERNEL_LoadYUY2_RGB32,
    DISPCONV_KERNEL_LoadYUY2_RGB32_adjust,
    DISPCONV_KERNEL_LoadYUY2_RGB24,
    DISPCONV_KERNEL_LoadYUY2_RGB24_adjust,
    DISPCONV_KERNEL_LoadYUY2_RGB16,
    DISPCONV_KERNEL_LoadYUY2_RGB16_adjust,
    DISPCONV_KERNEL_loadimage_yuy2,
    DISPCONV_KERNEL_loadimage_yuy2_ajust,
    DISPCONV_KERNEL_loadimage_yuy2_mono_ajust,
    DISPCONV_KERNEL_loadimage_half_yuy2_ajust,
    DISPCONV_KERNEL_loadimage_yv12,
    DISPCONV_KERNEL_loadimage_yv12_ajust,
    DISPCONV_KERNEL_loadimage_half_yv12_ajust,
    DISPCONV_KERNEL_loadimage_rgb32,
    DISPCONV_KERNEL_loadimage_rgb32_ajust,
    DISPCONV_KERNEL_loadimage_rgb24,
    DISPCONV_KERNEL_loadimage_rgb24_ajust,
    DISPCONV_KERNEL_loadimage_rgb16,
    DISPCONV_KERNEL_loadimage_rgb16_ajust,
    /* stretch */
    DISPCONV_KERNEL_strech_picture_1X2_yuy2,
    DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust,
    DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb32,
    DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb24,
    DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb16,
    DISPCONV_KERNEL_strech_picture_2X2_yuy2,
    DISPCONV_KERNEL_strech_picture_2X2_yuy2_ajust,
    DISPCONV_KERNEL_yuy2_strech_picture_2X2_yuy2,
    DISPCONV_KERNEL_yuy2_strech_picture_2X2_yuy2_ajust,
    DISPCONV_KERNEL_strech_pic_2X2,
    DISPCONV_KERNEL_strech_pic_2X2_adjust,
    DISPCONV_KERNEL_strech_pic_1X2_adjust,
    DISPCONV_KERNEL_strech_picture_2X2_yv12_ajust,
    DISPCONV_KERNEL_strech_picture_1X2_yv12_ajust,
    DISPCONV_KERNEL_strech_opt_yuy2_ajust,
    /* subpicture */
    DISPCONV_KERNEL_Convert_RGB32_To_AYUY2,
    DISPCONV_KERNEL_Convert_RGB24_To_AYUY2,
    DISPCONV_KERNEL_Convert_RGB16_565_To_AYUY2,
    DISPCONV_KERNEL_Restore_RGB32_To_Alpha,
    DISPCONV_KERNEL_Restore_RGB24_To_Alpha,
    DISPCONV_KERNEL_Restore_RGB16_565_To_Alpha,
    DISPCONV_KERNEL_load_subpicture_alpha_rgb32,
    DISPCONV_KERNEL_load_subpicture_alpha_rgb24,
    DISPCONV_KERNEL_load_subpicture_alpha_rgb16_565,
    DISPCONV_KERNEL_load_subpicture_yuy2_rgb32,
    DISPCONV_KERNEL_load_subpicture_yuy2_rgb32_ajust,
    DISPCONV_KERNEL_load_subpicture_yuy2_rgb24,
    DISPCONV_KERNEL_load_subpicture_yuy2_rgb24_ajust,
    DISPCONV_KERNEL_load_subpicture_yuy2_rgb16,
    DISPCONV_KERNEL_load_subpicture_yuy2_rgb16_ajust,
    DISPCONV_KERNEL_LoadColorKeyRgb32,
    DISPCONV_KERNEL_LoadColorKeyRgb24,
    DISPCONV_KERNEL_LoadColorKeyRgb16,
    DISPCONV_KERNEL_RelaceMaskWithColorKey,
    /* mix */
    DISPCONV_KERNEL_mix_ayuy2_yuy2_p_ajust,
    DISPCONV_KERNEL_mix_ayuy2_half_yuy2_p_ajust,
    DISPCONV_KERNEL_mix_ayuy2_rgb32_p_ajust,
    DISPCONV_KERNEL_mix_ayuy2_rgb24_p_ajust,
    DISPCONV_KERNEL_mix_ayuy2_rgb16_p_ajust,
    DISPCONV_KERNEL_mix_ayuy2_yuy2_i_ajust,
    DISPCONV_KERNEL_mix_ayuy2_rgb32_i_ajust,
    DISPCONV_KERNEL_mix_ayuy2_rgb24_i_ajust,
    DISPCONV_KERNEL_mix_ayuy2_rgb16_i_ajust,
    DISPCONV_KERNEL_mix_ayv12_yv12_p,
    DISPCONV_KERNEL_mix_ayv12_yv12_p_ajust,
    DISPCONV_KERNEL_mix_ayv12_yv12_i,
    DISPCONV_KERNEL_COUNT
} dispconv_kernel;

/* The pointers a kernel can be given, by argument or record field. */
typedef enum dispconv_buffer {
    DISPCONV_BUFFER_SRC_Y,       /* src_y; `src` of the plane and YUY2 stretchers; frame->plane_y */
    DISPCONV_BUFFER_SRC_U,       /* src_u; frame->plane_u */
    DISPCONV_BUFFER_SRC_V,       /* src_v; frame->plane_v */
    DISPCONV_BUFFER_DST,         /* dst; `surface` of the colour-key fills */
    DISPCONV_BUFFER_MASK,        /* mask of RelaceMaskWithColorKey */
    DISPCONV_BUFFER_FRAME_Y,     /* MIX_INFO fields */
    DISPCONV_BUFFER_FRAME_V,
    DISPCONV_BUFFER_FRAME_U,
    DISPCONV_BUFFER_SUB_OPACITY,
    DISPCONV_BUFFER_SUB_Y,
    DISPCONV_BUFFER_SUB_V,
    DISPCONV_BUFFER_SUB_U,
    DISPCONV_BUFFER_IMAGE,
    DISPCONV_BUFFER_IMAGE_U,
    DISPCONV_BUFFER_IMAGE_V,
    DISPCONV_BUFFER_COUNT
} dispconv_buffer;

/* A prospective call: the kernel and the arguments its footprint depends on. Fields a kernel
 * does not take are ignored.
 *  - frame-signature kernels: width, height, src_stride, dst_stride, adjust;
 *  - yuy2_strech_picture_2X2_yuy2(_ajust): width, height, dst_stride;
 *  - strech_pic_2X2 / _adjust, strech_pic_1X2_adjust: width, height, src_stride, dst_stride, plane;
 *  - strech_opt_yuy2_ajust: frame (frame_structure, frame_width), start_line, height, dst_stride;
 *  - colour-key fills: width, height and their `stride` as dst_stride;
 *  - RelaceMaskWithColorKey: width, height and its `stride` as dst_stride;
 *  - record kernels: info (its size, stride and surface_format fields; pointers are not read). */
typedef struct dispconv_call {
    dispconv_kernel kernel;
    int32_t width;
    int32_t height;
    int32_t src_stride;
    int32_t dst_stride;
    int32_t plane;
    int32_t start_line;
    const ajust_contrast_info *adjust;
    const MIX_INFO *info;
    const tagVideoFrame *frame;
} dispconv_call;

/* Bytes [begin, end) relative to the pointer passed; empty when begin == end. */
typedef struct dispconv_range {
    int64_t begin;
    int64_t end;
} dispconv_range;

typedef struct dispconv_footprint {
    dispconv_range read[DISPCONV_BUFFER_COUNT];
    dispconv_range write[DISPCONV_BUFFER_COUNT];
    const char *problem; /* for a refused call: what the contract requires; otherwise NULL */
} dispconv_footprint;

typedef enum dispconv_status {
    DISPCONV_OK = 0,
    DISPCONV_BAD_WIDTH,     /* width not positive or off the kernel's block */
    DISPCONV_BAD_HEIGHT,    /* height below the kernel's minimum or of the wrong parity */
    DISPCONV_BAD_STRIDE,    /* rows that overlap, or a stride the kernel cannot use */
    DISPCONV_BAD_LAYOUT,    /* a 16-bit layout outside 0..3 */
    DISPCONV_BAD_ARGUMENT   /* any other argument: a missing record, an unknown kernel or plane */
} dispconv_status;

/* Fills *footprint for *call and returns DISPCONV_OK, or returns why the call is outside the
 * kernel's contract (footprint->problem says it in words; the ranges are then empty). */
DISPCONV_API dispconv_status dispconv_get_footprint(const dispconv_call *call,
                                                    dispconv_footprint *footprint);

/* ------------------------------------------------------------------------------------------ */
/* Version                                                                                     */
/* ------------------------------------------------------------------------------------------ */

/* The version of this header; the build reads the number from here. */
#define DISPCONV_VERSION_MAJOR 0
#define DISPCONV_VERSION_MINOR 1
#define DISPCONV_VERSION_PATCH 0

/* The version of the library actually loaded, as "MAJOR.MINOR.PATCH". */
DISPCONV_API const char *dispconv_version(void);

#ifdef __cplusplus
}
#endif

#endif /* DISPCONV_H */
