// The records' layout as the interface defines it, checked at run time on whatever target this
// is built for: on 32-bit targets every field is one 32-bit word (or a run of them) at its
// defined word number; on 64-bit targets the pointers widen to 8 bytes with natural alignment.
// The kernels are then called with records assembled byte by byte at those offsets, as a
// caller built by another compiler would lay them out, so the library is checked too.
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "support/test_support.hpp"

namespace dispconv::test {
namespace {

constexpr bool ilp32 = sizeof(void*) == 4;

struct Field {
    const char* name;
    int word;   // defined word number (1-based) on 32-bit targets
    int words;  // 32-bit words on 32-bit targets
    bool pointer;
    size_t offset, size;  // as compiled here
};
#define DISPCONV_FIELD(Record, member, word, words, pointer) \
    Field{#member, word, words, pointer, offsetof(Record, member), sizeof(Record::member)}

const std::vector<Field> adjust_fields = {
    DISPCONV_FIELD(ajust_contrast_info, luma_gain, 1, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, chroma_gain, 2, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, luma_offset, 3, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, u_offset, 4, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, v_offset, 5, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, luma_offset_extra, 6, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, u_offset_extra, 7, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, v_offset_extra, 8, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, rgb16_layout, 9, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, reserved, 10, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, dst_plane_height, 11, 1, false),
    DISPCONV_FIELD(ajust_contrast_info, dst_luma_height, 12, 1, false),
};
const std::vector<Field> mix_fields = {
    DISPCONV_FIELD(MIX_INFO, frame_stride, 1, 1, false),
    DISPCONV_FIELD(MIX_INFO, sub_stride, 2, 1, false),
    DISPCONV_FIELD(MIX_INFO, image_stride, 3, 1, false),
    DISPCONV_FIELD(MIX_INFO, width, 4, 1, false),
    DISPCONV_FIELD(MIX_INFO, height, 5, 1, false),
    DISPCONV_FIELD(MIX_INFO, frame_y, 6, 1, true),
    DISPCONV_FIELD(MIX_INFO, frame_v, 7, 1, true),
    DISPCONV_FIELD(MIX_INFO, frame_u, 8, 1, true),
    DISPCONV_FIELD(MIX_INFO, sub_opacity, 9, 1, true),
    DISPCONV_FIELD(MIX_INFO, sub_y, 10, 1, true),
    DISPCONV_FIELD(MIX_INFO, sub_v, 11, 1, true),
    DISPCONV_FIELD(MIX_INFO, sub_u, 12, 1, true),
    DISPCONV_FIELD(MIX_INFO, image, 13, 1, true),
    DISPCONV_FIELD(MIX_INFO, image_u, 14, 1, true),
    DISPCONV_FIELD(MIX_INFO, image_v, 15, 1, true),
    DISPCONV_FIELD(MIX_INFO, color_key, 16, 1, false),
    DISPCONV_FIELD(MIX_INFO, reserved1, 17, 1, false),
    DISPCONV_FIELD(MIX_INFO, reserved2, 18, 1, false),
    DISPCONV_FIELD(MIX_INFO, surface_format, 19, 1, true),
};
const std::vector<Field> frame_fields = {
    DISPCONV_FIELD(tagVideoFrame, reserved_words_1_11, 1, 11, false),
    DISPCONV_FIELD(tagVideoFrame, frame_structure, 12, 1, false),
    DISPCONV_FIELD(tagVideoFrame, reserved_words_13_24, 13, 12, false),
    DISPCONV_FIELD(tagVideoFrame, plane_y, 25, 1, true),
    DISPCONV_FIELD(tagVideoFrame, plane_u, 26, 1, true),
    DISPCONV_FIELD(tagVideoFrame, plane_v, 27, 1, true),
    DISPCONV_FIELD(tagVideoFrame, reserved_words_28_33, 28, 6, false),
    DISPCONV_FIELD(tagVideoFrame, frame_width, 34, 1, false),
};
#undef DISPCONV_FIELD

size_t align_up(size_t n, size_t a) { return (n + a - 1) / a * a; }

// Where the interface puts each field on this target: 32-bit words in order, or on 64-bit
// targets the same order with 8-byte, 8-aligned pointers.
struct Layout {
    std::vector<size_t> offsets;
    size_t size;
};
Layout promised_layout(const std::vector<Field>& fields) {
    Layout l{{}, 0};
    size_t align = 4;
    for (const Field& f : fields) {
        const size_t field_align = f.pointer ? sizeof(void*) : 4;
        l.size = align_up(l.size, field_align);
        l.offsets.push_back(l.size);
        l.size += f.pointer ? sizeof(void*) : 4 * size_t(f.words);
        align = std::max(align, field_align);
    }
    l.size = align_up(l.size, align);
    return l;
}

struct RecordCase {
    const char* record;
    const std::vector<Field>* fields;
    size_t compiled_size;
    int words;                  // record length in 32-bit words on 32-bit targets
    size_t size_32, size_64;    // the sizes the header promises
};

TEST(RecordLayout, FieldsSitWhereTheInterfacePutsThem) {
    const RecordCase cases[] = {
        {"ajust_contrast_info", &adjust_fields, sizeof(ajust_contrast_info), 12, 48, 48},
        {"MIX_INFO", &mix_fields, sizeof(MIX_INFO), 19, 76, 128},
        {"tagVideoFrame", &frame_fields, sizeof(tagVideoFrame), 34, 136, 152},
    };
    static_assert(sizeof(void*) == 4 || sizeof(void*) == 8, "a 32-bit or 64-bit target");
    for (const RecordCase& c : cases) {
        SCOPED_TRACE(c.record);
        const Layout promised = promised_layout(*c.fields);
        EXPECT_EQ(c.compiled_size, ilp32 ? c.size_32 : c.size_64);
        EXPECT_EQ(c.compiled_size, promised.size);
        int next_word = 1;
        for (size_t i = 0; i < c.fields->size(); ++i) {
            const Field& f = (*c.fields)[i];
            SCOPED_TRACE(f.name);
            // The fields are declared in the defined order without gaps or overlaps.
            EXPECT_EQ(f.word, next_word);
            next_word += f.words;
            EXPECT_EQ(f.offset, promised.offsets[i]);
            EXPECT_EQ(f.size, f.pointer ? sizeof(void*) : 4 * size_t(f.words));
            if (ilp32) {
                EXPECT_EQ(f.offset, 4 * size_t(f.word - 1));
            }
        }
        EXPECT_EQ(next_word - 1, c.words);
    }
}

// A record assembled in raw bytes at the promised offsets.
class RawRecord {
public:
    explicit RawRecord(const std::vector<Field>& fields, uint8_t fill)
        : fields_(fields), layout_(promised_layout(fields)), bytes_(layout_.size, fill) {}
    void set(const char* name, int32_t v) { std::memcpy(at(name, 4), &v, 4); }
    void set(const char* name, const void* p) { std::memcpy(at(name, sizeof p), &p, sizeof p); }
    int32_t get(const char* name) {
        int32_t v;
        std::memcpy(&v, at(name, 4), 4);
        return v;
    }
    void* data() { return bytes_.data(); }
    const std::vector<uint8_t>& bytes() const { return bytes_; }

private:
    uint8_t* at(const char* name, size_t size) {
        for (size_t i = 0; i < fields_.size(); ++i)
            if (name == std::string(fields_[i].name)) {
                EXPECT_EQ(size, fields_[i].pointer ? sizeof(void*) : size_t(4)) << name;
                return bytes_.data() + layout_.offsets[i];
            }
        ADD_FAILURE() << "no field " << name;
        return bytes_.data();
    }
    const std::vector<Field>& fields_;
    Layout layout_;
    std::vector<uint8_t> bytes_;
};

TEST(RecordLayout, KernelsReadAndWriteMixInfoAtThePromisedOffsets) {
    // load_subpicture_alpha_rgb24 reads words 1, 3, 4, 5, 9 and 13 and counts height (word 5)
    // down to 0; every other byte of the record must stay as it was.
    uint8_t opacity[32];
    for (int i = 0; i < 32; ++i) opacity[i] = static_cast<uint8_t>(i + 1);
    Buffer image(2 * 48);
    RawRecord r(mix_fields, 0x5A);
    r.set("frame_stride", 16);
    r.set("image_stride", 48);
    r.set("width", 16);
    r.set("height", 2);
    r.set("sub_opacity", opacity);
    r.set("image", image.data());
    std::vector<uint8_t> want_record = r.bytes();
    load_subpicture_alpha_rgb24(static_cast<MIX_INFO*>(r.data()));
    Buffer want(2 * 48);
    for (int i = 0; i < 32; ++i) want[3 * i] = opacity[i], want[3 * i + 1] = 0, want[3 * i + 2] = 0;
    EXPECT_TRUE(same_bytes(want, image));
    EXPECT_EQ(r.get("height"), 0);
    r.set("height", 2);
    EXPECT_EQ(r.bytes(), want_record);

    // load_subpicture_yuy2_rgb16 with every opacity 0 writes the key (word 16) and reads the
    // layout through word 19; a refused layout writes nothing.
    uint8_t zeros[64] = {};
    for (const int32_t layout : {0, 4}) {
        SCOPED_TRACE(layout);
        ajust_contrast_info surface = settings();
        surface.rgb16_layout = layout;
        Buffer out(2 * 32);
        RawRecord k(mix_fields, 0xC3);
        k.set("frame_stride", 16);
        k.set("image_stride", 32);
        k.set("height", 2);
        for (const char* plane : {"sub_opacity", "sub_y", "sub_u", "sub_v"}) k.set(plane, zeros);
        k.set("image", out.data());
        k.set("color_key", int32_t(0x1234ABCD));
        k.set("surface_format", &surface);
        want_record = k.bytes();
        load_subpicture_yuy2_rgb16(static_cast<MIX_INFO*>(k.data()));
        Buffer expected(2 * 32);
        if (layout == 0)
            for (int i = 0; i < 64; i += 2) expected[i] = 0xCD, expected[i + 1] = 0xAB;
        EXPECT_TRUE(same_bytes(expected, out));
        EXPECT_EQ(k.bytes(), want_record);
    }
}

TEST(RecordLayout, EdgeDirectedStretchReadsTheFrameAtThePromisedOffsets) {
    // Rows that differ, so that a field (every second row) and the whole frame stretch apart.
    constexpr int width = 48, rows = 40;
    std::vector<uint8_t> y(width * rows), u(width / 2 * rows), v(width / 2 * rows);
    for (size_t i = 0; i < y.size(); ++i) y[i] = static_cast<uint8_t>(16 + (i / width) * 5 + (i % 7));
    for (size_t i = 0; i < u.size(); ++i) u[i] = static_cast<uint8_t>(40 + (i * 3) % 150);
    for (size_t i = 0; i < v.size(); ++i) v[i] = static_cast<uint8_t>(200 - (i * 5) % 150);
    set_adjust();
    const int height = 8, dst_stride = 2 * width;
    std::vector<Buffer> outputs;
    for (const int32_t structure : {0, 1}) {
        SCOPED_TRACE(structure);
        tagVideoFrame frame;
        std::memset(&frame, 0x77, sizeof frame);
        frame.frame_structure = structure;
        frame.plane_y = y.data(), frame.plane_u = u.data(), frame.plane_v = v.data();
        frame.frame_width = width;
        Buffer want(2 * height * dst_stride);
        strech_opt_yuy2_ajust(&frame, 2, height, want.data(), dst_stride, nullptr);

        RawRecord r(frame_fields, 0x77);
        r.set("frame_structure", structure);
        r.set("plane_y", y.data());
        r.set("plane_u", u.data());
        r.set("plane_v", v.data());
        r.set("frame_width", width);
        const std::vector<uint8_t> before = r.bytes();
        Buffer got(2 * height * dst_stride);
        strech_opt_yuy2_ajust(static_cast<tagVideoFrame*>(r.data()), 2, height, got.data(), dst_stride, nullptr);
        EXPECT_TRUE(same_bytes(want, got));
        EXPECT_EQ(r.bytes(), before) << "the frame record is read only";
        outputs.push_back(got);
    }
    // Otherwise a misread frame_structure would go unnoticed.
    EXPECT_FALSE(same_bytes(outputs[0], outputs[1]));
}

}  // namespace
}  // namespace dispconv::test
