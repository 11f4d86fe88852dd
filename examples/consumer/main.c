/* A tiny program that links dispconv the way a player would and checks one known result:
 * video-range white (Y 235, U and V 128) becomes 254 in every channel of an RGB32 surface. */
#include <dispconv.h>
#include <stdio.h>
#include <string.h>

int main(void) {
    /* 16 pixels by 2 rows of packed YUY2: one block of the kernel on each row. */
    uint8_t frame[2 * 16 * 2];
    uint8_t surface[2 * 16 * 4];
    ajust_contrast_info settings;
    int i;

    for (i = 0; i < (int)sizeof frame; i += 4) {
        frame[i] = 235;
        frame[i + 1] = 128;
        frame[i + 2] = 235;
        frame[i + 3] = 128;
    }
    memset(&settings, 0, sizeof settings);
    settings.luma_gain = 64;
    settings.chroma_gain = 64;
    get_contrast_data(&settings);
    memset(surface, 0xAA, sizeof surface);
    LoadYUY2_RGB32_adjust(frame, NULL, NULL, surface, 16, 2, 16, 16 * 4, &settings);

    for (i = 0; i < (int)sizeof surface; i += 4) {
        if (surface[i] != 254 || surface[i + 1] != 254 || surface[i + 2] != 254 || surface[i + 3] != 0) {
            printf("consumer: pixel %d is %d %d %d %d, expected 254 254 254 0\n", i / 4, surface[i],
                   surface[i + 1], surface[i + 2], surface[i + 3]);
            return 1;
        }
    }
#ifdef DISPCONV_STATIC
    printf("consumer: static dispconv works\n");
#else
    printf("consumer: shared dispconv works\n");
#endif
    return 0;
}
