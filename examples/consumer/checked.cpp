// The same conversion as main.c through the checked C++ interface: a surface one row short is
// refused with nothing written, the right one gives video-range white as 254 in every channel.
#include <dispconv.hpp>

#include <cstdio>
#include <vector>

int main() {
    constexpr int width = 16, height = 2;
    std::vector<std::uint8_t> frame(2 * width * height);
    for (std::size_t i = 0; i < frame.size(); i += 2) frame[i] = 235, frame[i + 1] = 128;
    ajust_contrast_info settings{};
    settings.luma_gain = 64;
    settings.chroma_gain = 64;
    get_contrast_data(&settings);

    std::vector<std::uint8_t> short_surface(4 * width * (height - 1), 0xAA);
    const std::vector<std::uint8_t>& source = frame;  // const bytes: read only
    dispconv::Result r = dispconv::LoadYUY2_RGB32_adjust({source, {}, {}, width, height, width},
                                                         {short_surface, 4 * width}, &settings);
    if (r.status != dispconv::Status::short_buffer || r.buffer != DISPCONV_BUFFER_DST) {
        std::printf("consumer_checked: a short surface was not refused (%s)\n", dispconv::describe(r).c_str());
        return 1;
    }
    std::printf("consumer_checked: refused as expected: %s\n", dispconv::describe(r).c_str());
    for (std::uint8_t b : short_surface)
        if (b != 0xAA) return std::printf("consumer_checked: a refused call wrote\n"), 1;

    std::vector<std::uint8_t> surface(4 * width * height, 0xAA);
    r = dispconv::LoadYUY2_RGB32_adjust({source, {}, {}, width, height, width}, {surface, 4 * width}, &settings);
    if (!r) return std::printf("consumer_checked: %s\n", dispconv::describe(r).c_str()), 1;
    for (std::size_t i = 0; i < surface.size(); i += 4)
        if (surface[i] != 254 || surface[i + 1] != 254 || surface[i + 2] != 254 || surface[i + 3] != 0)
            return std::printf("consumer_checked: pixel %zu is wrong\n", i / 4), 1;
    std::printf("consumer_checked: checked interface works\n");
    return 0;
}
