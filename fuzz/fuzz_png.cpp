// The program's PNG input (sub-picture art). Bad input must end in a ToolError; any crash,
// leak (of memory or of an open file) or stray access is a bug.
//
// libpng comes from the system, without coverage instrumentation, and refuses chunks whose CRC
// is wrong. So that mutations get past the CRC, the mutator rewrites every chunk's CRC; so that
// the corpus grows with the kinds of picture and of refusal libpng reaches, each outcome (the
// refusal's reason, or the picture's format and size class) lights an extra coverage counter.
#include <png.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "fuzz_input.hpp"
#include "png_io.hpp"
#include "y4m.hpp"

using namespace dispconv::tool;

namespace {

__attribute__((section("__libfuzzer_extra_counters"))) uint8_t outcome_counters[4096];

void count(std::string_view outcome) {
    uint32_t h = 2166136261u;
    for (char c : outcome) h = (h ^ uint8_t(c)) * 16777619u;
    outcome_counters[h % sizeof outcome_counters] = 1;
}

uint32_t be32(const uint8_t* p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]; }

// The picture size the header announces, or 0 without a readable header.
uint64_t announced_area(const uint8_t* data, size_t size) {
    if (size < 24 || std::memcmp(data + 12, "IHDR", 4) != 0) return 0;
    return uint64_t(be32(data + 16)) * be32(data + 20);
}

// The chunk CRC (CRC-32, reflected, polynomial 0xEDB88320).
uint32_t chunk_crc(const uint8_t* p, size_t n) {
    static const auto table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t i = 0; i < 256; ++i) {
            uint32_t c = i;
            for (int k = 0; k < 8; ++k) c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[i] = c;
        }
        return t;
    }();
    uint32_t c = 0xFFFFFFFFu;
    for (size_t i = 0; i < n; ++i) c = table[(c ^ p[i]) & 0xFF] ^ (c >> 8);
    return c ^ 0xFFFFFFFFu;
}

int log2_class(uint32_t v) { return v ? 32 - __builtin_clz(v) : 0; }

}  // namespace

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t max_size);

// libFuzzer's mutation, then every complete chunk after the signature gets its correct CRC
// (unless the mutation left the signature itself broken).
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t max_size, unsigned int seed) {
    size = LLVMFuzzerMutate(data, size, max_size);
    if (seed % 8 == 0) return size;  // now and then a CRC stays wrong
    for (size_t at = 8; at + 12 <= size;) {
        const uint64_t length = be32(data + at);
        if (length > size - at - 12) break;
        const uint32_t crc = chunk_crc(data + at + 4, size_t(length) + 4);
        uint8_t* c = data + at + 8 + length;
        c[0] = uint8_t(crc >> 24), c[1] = uint8_t(crc >> 16), c[2] = uint8_t(crc >> 8), c[3] = uint8_t(crc);
        at += 12 + length;
    }
    return size;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The reader allocates the whole picture before decoding it: a header announcing a huge
    // picture only costs time (up to a second for 16384x16384), so those stay out of the runs.
    if (announced_area(data, size) > (uint64_t(1) << 22)) return 0;
    const dispconv::fuzz::NoFileLeft no_file_left;
    dispconv::fuzz::InputFile file(data, size);
    try {
        const RgbaPicture p = read_png(file.path());
        if (p.width <= 0 || p.height <= 0 || p.width > max_picture_side || p.height > max_picture_side ||
            p.rgba.size() != size_t(p.width) * p.height * 4)
            std::abort();
        png_image image;
        std::memset(&image, 0, sizeof image);
        image.version = PNG_IMAGE_VERSION;
        if (png_image_begin_read_from_memory(&image, data, size)) {
            count("format " + std::to_string(image.format) + " colormap " + std::to_string(image.colormap_entries > 0) +
                  " size " + std::to_string(log2_class(image.width)) + "x" + std::to_string(log2_class(image.height)));
            png_image_free(&image);
        }
    } catch (const ToolError& e) {
        const std::string_view why = e.what();
        if (why.empty()) std::abort();  // every refusal says why
        const size_t colon = why.rfind(": ");
        count(colon == std::string_view::npos ? why : why.substr(colon));  // the reason, not the path
    }
    return 0;
}
