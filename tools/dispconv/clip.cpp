#include "clip.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace dispconv::tool {
namespace {

struct Rgb {
    int r, g, b;
};

Rgb hue(double h) {  // h in [0, 1): fully saturated colour wheel at 75% level
    const double x = h * 6.0;
    const int sector = static_cast<int>(x) % 6;
    const double f = x - std::floor(x);
    const int up = static_cast<int>(191 * f), down = static_cast<int>(191 * (1 - f));
    switch (sector) {
        case 0: return {191, up, 0};
        case 1: return {down, 191, 0};
        case 2: return {0, 191, up};
        case 3: return {0, down, 191};
        case 4: return {up, 0, 191};
        default: return {191, 0, down};
    }
}

Rgb clip_pixel(int x, int y, int w, int h, int index) {
    static const Rgb bars[8] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191}, {0, 191, 0},
                                {191, 0, 191},   {191, 0, 0},   {0, 0, 191},   {0, 0, 0}};
    const int bars_end = h * 3 / 10, middle_end = h * 62 / 100;
    if (y < bars_end) return bars[std::min(7, x * 8 / w)];
    if (y < middle_end) {
        const int band = middle_end - bars_end;
        if (x < w / 2) {
            if (y - bars_end < band / 2) {
                const int level = x * 255 / std::max(1, w / 2 - 1);
                return {level, level, level};
            }
            return hue(static_cast<double>(x) / (w / 2));
        }
        // Zone plate: the phase grows with the squared distance from the corner, so the
        // frequency climbs to about one cycle per two pixels at the far corner.
        const double dx = x - w / 2, dy = y - bars_end;
        const double reach = static_cast<double>(w / 2) * (w / 2) + static_cast<double>(band) * band;
        const double phase = 3.14159265358979 / 2 * (dx * dx + dy * dy) / std::sqrt(reach);
        const int level = static_cast<int>(128 + 110 * std::cos(phase));
        return {level, level, level};
    }
    // Two edges moving right one pixel per frame: a shallow one (4 pixels across per row)
    // and a steeper one (2 per row); dark slate behind, warm orange and pale cyan in front.
    const int row = y - middle_end;
    const int shallow = w / 8 + index + 4 * row - (h - middle_end) * 2;
    const int steep = w / 2 + index + 2 * row;
    if (x < shallow) return {60, 70, 90};
    if (x < steep) return {230, 140, 40};
    return {170, 220, 230};
}

// 5x7 capitals for the subtitle text, one string per row, '#' for ink.
struct Glyph {
    char c;
    const char* rows[7];
};
const Glyph font[] = {
    {'B', {"####.", "#...#", "#...#", "####.", "#...#", "#...#", "####."}},
    {'C', {".####", "#....", "#....", "#....", "#....", "#....", ".####"}},
    {'D', {"####.", "#...#", "#...#", "#...#", "#...#", "#...#", "####."}},
    {'E', {"#####", "#....", "#....", "####.", "#....", "#....", "#####"}},
    {'I', {"#####", "..#..", "..#..", "..#..", "..#..", "..#..", "#####"}},
    {'L', {"#....", "#....", "#....", "#....", "#....", "#....", "#####"}},
    {'N', {"#...#", "##..#", "#.#.#", "#..##", "#...#", "#...#", "#...#"}},
    {'O', {".###.", "#...#", "#...#", "#...#", "#...#", "#...#", ".###."}},
    {'P', {"####.", "#...#", "#...#", "####.", "#....", "#....", "#...."}},
    {'S', {".####", "#....", "#....", ".###.", "....#", "....#", "####."}},
    {'T', {"#####", "..#..", "..#..", "..#..", "..#..", "..#..", "..#.."}},
    {'U', {"#...#", "#...#", "#...#", "#...#", "#...#", "#...#", ".###."}},
    {'V', {"#...#", "#...#", "#...#", "#...#", "#...#", ".#.#.", "..#.."}},
};

const Glyph* glyph(char c) {
    for (const Glyph& g : font)
        if (g.c == c) return &g;
    return nullptr;  // a space
}

}  // namespace

void rgb_to_yuv(int r, int g, int b, uint8_t& y, uint8_t& u, uint8_t& v) {
    auto clamp = [](double x) { return static_cast<uint8_t>(std::clamp(std::lround(x), 0L, 255L)); };
    y = clamp(16 + 0.257 * r + 0.504 * g + 0.098 * b);
    u = clamp(128 - 0.148 * r - 0.291 * g + 0.439 * b);
    v = clamp(128 + 0.439 * r - 0.368 * g - 0.071 * b);
}

PlanarPicture make_clip_frame(int width, int height, int index) {
    PlanarPicture picture;
    picture.allocate(width, height, Chroma::c420);
    const int cw = picture.chroma_width();
    std::vector<int> usum(picture.u.size(), 0), vsum(picture.u.size(), 0), count(picture.u.size(), 0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Rgb p = clip_pixel(x, y, width, height, index);
            uint8_t Y, U, V;
            rgb_to_yuv(p.r, p.g, p.b, Y, U, V);
            picture.y[static_cast<size_t>(y) * width + x] = Y;
            const size_t c = static_cast<size_t>(y / 2) * cw + x / 2;
            usum[c] += U;
            vsum[c] += V;
            ++count[c];
        }
    }
    for (size_t c = 0; c < picture.u.size(); ++c) {
        picture.u[c] = static_cast<uint8_t>((usum[c] + count[c] / 2) / count[c]);
        picture.v[c] = static_cast<uint8_t>((vsum[c] + count[c] / 2) / count[c]);
    }
    return picture;
}

RgbaPicture make_subtitle(int frame_width, int frame_height) {
    static const char text[] = "DISPCONV SUBTITLE";
    const int length = static_cast<int>(std::strlen(text));
    int scale = std::max(1, frame_height / 120);
    while (scale > 1 && (6 * length + 5) * scale > frame_width) --scale;
    const int pad = 3 * scale;
    const int bar_w = std::min(frame_width, (6 * length - 1) * scale + 2 * pad);
    const int bar_h = std::min(frame_height, 7 * scale + 2 * pad);
    const int left = (frame_width - bar_w) / 2 & ~1, top = std::max(0, frame_height - bar_h - frame_height / 16);
    RgbaPicture art;
    art.width = frame_width;
    art.height = frame_height;
    art.rgba.assign(static_cast<size_t>(art.width) * art.height * 4, 0);
    auto at = [&](int x, int y) { return &art.rgba[(static_cast<size_t>(top + y) * art.width + left + x) * 4]; };
    for (int y = 0; y < bar_h; ++y)
        for (int x = 0; x < bar_w; ++x) at(x, y)[3] = 150;  // dark, half transparent
    for (int i = 0; i < length; ++i) {
        const Glyph* g = glyph(text[i]);
        if (!g) continue;
        for (int gy = 0; gy < 7 * scale; ++gy)
            for (int gx = 0; gx < 5 * scale; ++gx) {
                if (g->rows[gy / scale][gx / scale] != '#') continue;
                const int x = pad + i * 6 * scale + gx, y = pad + gy;
                if (x >= bar_w || y >= bar_h) continue;
                uint8_t* p = at(x, y);
                p[0] = p[1] = p[2] = p[3] = 255;
            }
    }
    return art;
}

}  // namespace dispconv::tool
