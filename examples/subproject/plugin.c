/* A plugin with the dispconv kernels linked into it: it exports plugin_white_level() and
 * nothing of dispconv's. */
#include <dispconv.h>
#include <string.h>

/* Video-range white (Y 235, U and V 128) through LoadYUY2_RGB32_adjust: each channel's level. */
__attribute__((visibility("default"))) int plugin_white_level(const char **version) {
    uint8_t frame[2 * 16 * 2], surface[2 * 16 * 4];
    ajust_contrast_info settings;
    int i;
    for (i = 0; i < (int)sizeof frame; i += 2) {
        frame[i] = 235;
        frame[i + 1] = 128;
    }
    memset(&settings, 0, sizeof settings);
    settings.luma_gain = 64;
    settings.chroma_gain = 64;
    get_contrast_data(&settings);
    LoadYUY2_RGB32_adjust(frame, NULL, NULL, surface, 16, 2, 16, 16 * 4, &settings);
    *version = dispconv_version();
    return surface[0];
}
