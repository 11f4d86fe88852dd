// Footprints: the bytes one kernel call reads and writes through each pointer, and the caller
// contract that decides whether a call is accepted. Each family computes its kernels' footprints
// beside its walks, from the same block sizes and row schedules.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/rgb16.hpp"
#include "dispconv.h"

namespace dispconv {

// Builds a dispconv_footprint; ranges grow to the hull of everything added to them.
class FootprintBuilder {
public:
    explicit FootprintBuilder(dispconv_footprint& out) : out_(out) {
        out_ = dispconv_footprint{};
    }

    void read(dispconv_buffer b, int64_t begin, int64_t end) { add(out_.read[b], begin, end); }
    void write(dispconv_buffer b, int64_t begin, int64_t end) { add(out_.write[b], begin, end); }

    // `rows` rows `distance` bytes apart (signed), the first starting at byte `first`, each
    // touching bytes [row_begin, row_end) of its row.
    void read_rows(dispconv_buffer b, int64_t first, int64_t rows, int64_t distance,
                   int64_t row_begin, int64_t row_end) {
        add_rows(out_.read[b], first, rows, distance, row_begin, row_end);
    }
    void write_rows(dispconv_buffer b, int64_t first, int64_t rows, int64_t distance,
                    int64_t row_begin, int64_t row_end) {
        add_rows(out_.write[b], first, rows, distance, row_begin, row_end);
    }

    // Refuses the call: every range is emptied and the reason kept.
    dispconv_status refuse(dispconv_status status, const char* problem) {
        out_ = dispconv_footprint{};
        out_.problem = problem;
        return status;
    }

private:
    static void add(dispconv_range& r, int64_t begin, int64_t end) {
        if (begin >= end) return;
        if (r.begin == r.end) {
            r = {begin, end};
            return;
        }
        r.begin = std::min(r.begin, begin);
        r.end = std::max(r.end, end);
    }
    static void add_rows(dispconv_range& r, int64_t first, int64_t rows, int64_t distance,
                         int64_t row_begin, int64_t row_end) {
        if (rows <= 0) return;
        const int64_t last = first + (rows - 1) * distance;
        add(r, std::min(first, last) + row_begin, std::max(first, last) + row_end);
    }

    dispconv_footprint& out_;
};

// Row distances whose magnitude is below the bytes a row touches make rows overlap.
inline bool rows_apart(int64_t distance, int64_t row_bytes) {
    return distance >= row_bytes || -distance >= row_bytes;
}

namespace {

// A 16-bit destination's layout, read from `record` as the kernels read it: the call is refused
// when the record is missing (`missing` says which) or holds no layout.
inline dispconv_status check_rgb16_layout(FootprintBuilder& f, const ajust_contrast_info* record,
                                          const char* missing) {
    if (!record) return f.refuse(DISPCONV_BAD_ARGUMENT, missing);
    Rgb16Layout layout;
    if (!select_rgb16_layout(record->rgb16_layout, layout))
        return f.refuse(DISPCONV_BAD_LAYOUT, "rgb16_layout must be 0 to 3");
    return DISPCONV_OK;
}

}  // namespace

// Each family's footprints; DISPCONV_BAD_ARGUMENT for a kernel of another family.
dispconv_status load_footprint(const dispconv_call& call, FootprintBuilder& f);
dispconv_status stretch_footprint(const dispconv_call& call, FootprintBuilder& f);
dispconv_status subpicture_footprint(const dispconv_call& call, FootprintBuilder& f);
dispconv_status mix_footprint(const dispconv_call& call, FootprintBuilder& f);

}  // namespace dispconv
