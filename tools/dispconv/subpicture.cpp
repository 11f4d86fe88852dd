#include "subpicture.hpp"

#include <algorithm>
#include <cstring>

#include "dispconv.h"

namespace dispconv::tool {

Placement centre_art(int art_width, int art_height, int frame_width, int frame_height) {
    Placement p;
    p.x = std::max(0, (frame_width - art_width) / 2) & ~1;
    p.y = std::max(0, (frame_height - art_height) / 2);
    p.art_x = std::max(0, (art_width - frame_width) / 2);
    p.art_y = std::max(0, (art_height - frame_height) / 2);
    p.width = std::min(art_width, frame_width);
    p.height = std::min(art_height, frame_height);
    return p;
}

Placement place_art_at(int x, int y, int art_width, int art_height, int frame_width, int frame_height) {
    Placement p;
    p.x = x;
    p.y = y;
    p.width = std::max(0, std::min(art_width, frame_width - x));
    p.height = std::max(0, std::min(art_height, frame_height - y));
    return p;
}

SubPicture prepare_subpicture(const RgbaPicture& art, const Geometry& geometry) {
    return prepare_subpicture(art, geometry, centre_art(art.width, art.height, geometry.width, geometry.height));
}

SubPicture prepare_subpicture(const RgbaPicture& art, const Geometry& geometry, const Placement& at) {
    const int w = geometry.padded_width, h = geometry.padded_height;
    SubPicture sub;
    sub.width = w;
    sub.height = h;
    sub.stride = w;
    const size_t area = static_cast<size_t>(w) * h;
    sub.opacity = PaddedBuffer(area, w, 0);
    sub.y = PaddedBuffer(area, w, 16);
    sub.u = PaddedBuffer(area / 2, w / 2, 128);
    sub.v = PaddedBuffer(area / 2, w / 2, 128);

    // Colour bitmap: key everywhere the art is fully transparent. The fourth byte stays 0,
    // as the conversion adds it into every sample.
    const size_t row_bytes = static_cast<size_t>(w) * 4;
    PaddedBuffer colour(area * 4, row_bytes), levels(area * 4, row_bytes, 0);
    for (size_t i = 0; i < area; ++i) std::memcpy(colour.data() + 4 * i, &subpicture_color_key, 4);
    for (int y = 0; y < at.height; ++y)
        for (int x = 0; x < at.width; ++x) {
            const uint8_t* p = &art.rgba[(static_cast<size_t>(at.art_y + y) * art.width + at.art_x + x) * 4];
            const size_t o = (static_cast<size_t>(at.y + y) * w + at.x + x) * 4;
            const int level = opacity_level(p[3]);
            if (level == 0) continue;
            uint8_t* c = colour.data() + o;
            c[0] = p[2];
            c[1] = p[1];
            c[2] = p[0];
            c[3] = 0;
            uint32_t word;
            std::memcpy(&word, c, 4);
            if (word == subpicture_color_key) c[1] = 1;  // keep a visible pixel off the key
            levels.data()[o] = static_cast<uint8_t>(level);
        }

    // A pixel pair takes its chroma from its left pixel and mixes it with the right pixel's
    // opacity. Where the left pixel is transparent and the right one is not, give the left one
    // the right one's colour, or the key colour would show as a fringe.
    for (int y = 0; y < h; ++y)
        for (int x = 0; x + 1 < w; x += 2) {
            const size_t o = (static_cast<size_t>(y) * w + x) * 4;
            if (levels.data()[o] == 0 && levels.data()[o + 4] != 0) std::memcpy(colour.data() + o, colour.data() + o + 4, 4);
        }

    MIX_INFO info{};
    info.sub_stride = w;
    info.image_stride = w * 4;
    info.width = w;
    info.height = h;
    info.image = colour.data();
    info.color_key = subpicture_color_key;
    info.sub_opacity = sub.opacity.data();
    info.sub_y = sub.y.data();
    info.sub_u = sub.u.data();
    info.sub_v = sub.v.data();
    Convert_RGB32_To_AYUY2(&info);

    // The opacity rows step by (frame_stride - width) / 2 beyond each row: frame_stride equal
    // to the width gives a tightly packed plane.
    MIX_INFO alpha{};
    alpha.frame_stride = w;
    alpha.image_stride = w * 4;
    alpha.width = w;
    alpha.height = h;
    alpha.image = levels.data();
    alpha.sub_opacity = sub.opacity.data();
    Restore_RGB32_To_Alpha(&alpha);
    return sub;
}

}  // namespace dispconv::tool
