// dispconv benchmark: each kernel on every instruction set this CPU has, beside the closest
// operation of libyuv and swscale and memcpy of the same output bytes, single thread, at
// 720x480 and 1920x1080. Ends with a table of ratios (medians of the repetitions).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>

#include "bench.hpp"
#include "core/kernel_table.hpp"

namespace bench {

Frame::Frame(int w, int h)
    : width(w), height(h), y(size_t(w + 64) * (h + 8)), u(size_t(w + 64) * (h + 8) / 2), v(size_t(w + 64) * (h + 8) / 2),
      yuy2(size_t(2 * w + 64) * (h + 8)), dst(size_t(8 * w + 256) * (2 * h + 8)), dst2(size_t(8 * w + 256) * (2 * h + 8)),
      sub_a(size_t(w + 64) * (h + 8)), sub_y(size_t(w + 64) * (h + 8)), sub_u(size_t(w + 64) * (h + 8)),
      sub_v(size_t(w + 64) * (h + 8)) {
    // A gradient picture with some texture, the kind of content a player shows.
    for (int r = 0; r < h + 8; ++r)
        for (int x = 0; x < w + 64; ++x) y.data()[size_t(r) * w + x] = uint8_t(16 + (x * 3 + r * 5 + ((x ^ r) & 15)) % 220);
    for (size_t i = 0; i < u.size; ++i) u.data()[i] = uint8_t(64 + i % 128), v.data()[i] = uint8_t(200 - i % 128);
    for (size_t i = 0; i < yuy2.size; ++i) yuy2.data()[i] = uint8_t(i & 1 ? 100 + i % 60 : 16 + i % 220);
    for (size_t i = 0; i < sub_a.size; ++i) {
        sub_a.data()[i] = uint8_t((i / 7) % 17);
        sub_y.data()[i] = uint8_t(235 - i % 200), sub_u.data()[i] = 128, sub_v.data()[i] = uint8_t(100 + i % 50);
    }
    std::memset(dst.data(), 0, dst.size);
    std::memset(dst2.data(), 1, dst2.size);
}

Frame& frame(int width, int height) {
    static std::map<std::pair<int, int>, std::unique_ptr<Frame>> frames;
    auto& f = frames[{width, height}];
    if (!f) f = std::make_unique<Frame>(width, height);
    return *f;
}

std::vector<Entry>& entries() {
    static std::vector<Entry> all;
    return all;
}
void add(Entry e) { entries().push_back(std::move(e)); }

namespace {

using dispconv::Isa;
using dispconv::KernelTable;
using FrameKernel = void (*)(void*, void*, void*, void*, int32_t, int32_t, int32_t, int32_t, ajust_contrast_info*);

ajust_contrast_info settings{70, 60, -4, 3, -3, 0, 0, 0, 0, 0, 0, 0};

// Our frame-signature kernel on one instruction set.
void add_frame_kernel(const std::string& group, const char* name, FrameKernel dispconv::LoadKernels::*member,
                      bool packed_source, int out_bytes_per_pixel_x2, int w, int h, double bytes) {
    Frame& f = frame(w, h);
    for (int i = 0; i < dispconv::isa_count; ++i) {
        const KernelTable* t = dispconv::kernel_table(Isa(i));
        if (!t) continue;
        FrameKernel k = t->load->*member;
        const int dst_stride = w * out_bytes_per_pixel_x2 / 2;
        add({group, std::string(name) + " [" + dispconv::isa_name(Isa(i)) + "]", Kind::ours, w, h, bytes,
             [k, &f, w, h, packed_source, dst_stride] {
                 k(packed_source ? f.yuy2.data() : f.y.data(), f.u.data(), f.v.data(), f.dst.data(), w, h, w,
                   dst_stride, &settings);
             }});
    }
}

void add_copy(const std::string& group, int w, int h, double out_bytes) {
    Frame& f = frame(w, h);
    const size_t n = size_t(out_bytes);
    add({group, "memcpy", Kind::copy, w, h, 2 * out_bytes, [&f, n] { std::memcpy(f.dst.data(), f.dst2.data(), n); }});
}

void register_loads(int w, int h) {
    const double px = double(w) * h, yv12 = 1.5 * px, yuy2 = 2 * px;
    struct Job {
        const char* group;
        const char* name;
        FrameKernel dispconv::LoadKernels::*member;
        bool packed;
        int out_x2;  // output bytes per pixel, times two
        double in;
    };
    using L = dispconv::LoadKernels;
    const Job jobs[] = {
        {"YV12 to RGB32", "loadimage_rgb32", &L::loadimage_rgb32, false, 8, yv12},
        {"YV12 to RGB32", "loadimage_rgb32_ajust", &L::loadimage_rgb32_ajust, false, 8, yv12},
        {"YV12 to RGB24", "loadimage_rgb24", &L::loadimage_rgb24, false, 6, yv12},
        {"YV12 to RGB24", "loadimage_rgb24_ajust", &L::loadimage_rgb24_ajust, false, 6, yv12},
        {"YV12 to RGB565", "loadimage_rgb16", &L::loadimage_rgb16, false, 4, yv12},
        {"YV12 to RGB565", "loadimage_rgb16_ajust", &L::loadimage_rgb16_ajust, false, 4, yv12},
        {"YV12 to YUY2", "loadimage_yuy2", &L::loadimage_yuy2, false, 4, yv12},
        {"YV12 to YUY2", "loadimage_yuy2_ajust", &L::loadimage_yuy2_ajust, false, 4, yv12},
        {"YV12 to YUY2 grey", "loadimage_yuy2_mono_ajust", &L::loadimage_yuy2_mono_ajust, false, 4, px},
        {"YV12 to half YUY2", "loadimage_half_yuy2_ajust", &L::loadimage_half_yuy2_ajust, false, 2, yv12},
        {"YV12 to YV12", "loadimage_yv12", &L::loadimage_yv12, false, 3, yv12},
        {"YV12 to YV12", "loadimage_yv12_ajust", &L::loadimage_yv12_ajust, false, 3, yv12},
        {"YV12 to half YV12", "loadimage_half_yv12_ajust", &L::loadimage_half_yv12_ajust, false, 2, yv12},
        {"YUY2 to RGB32", "LoadYUY2_RGB32", &L::LoadYUY2_RGB32, true, 8, yuy2},
        {"YUY2 to RGB32", "LoadYUY2_RGB32_adjust", &L::LoadYUY2_RGB32_adjust, true, 8, yuy2},
        {"YUY2 to RGB24", "LoadYUY2_RGB24", &L::LoadYUY2_RGB24, true, 6, yuy2},
        {"YUY2 to RGB24", "LoadYUY2_RGB24_adjust", &L::LoadYUY2_RGB24_adjust, true, 6, yuy2},
        {"YUY2 to RGB565", "LoadYUY2_RGB16", &L::LoadYUY2_RGB16, true, 4, yuy2},
        {"YUY2 to RGB565", "LoadYUY2_RGB16_adjust", &L::LoadYUY2_RGB16_adjust, true, 4, yuy2},
        {"YUY2 to YUY2", "LoadYUY2_YUY2", &L::LoadYUY2_YUY2, true, 4, yuy2},
        {"YUY2 to YUY2", "LoadYUY2_YUY2_adjust", &L::LoadYUY2_YUY2_adjust, true, 4, yuy2},
    };
    std::string last;
    for (const Job& j : jobs) {
        const double out = px * j.out_x2 / 2;
        if (j.group != last) {
            add_peers(j.group, w, h, j.in + out);
            add_copy(j.group, w, h, out);
            last = j.group;
        }
        add_frame_kernel(j.group, j.name, j.member, j.packed, j.out_x2, w, h, j.in + out);
    }
}

// Collects the median time of every entry for the summary.
class SummaryReporter : public benchmark::ConsoleReporter {
  public:
    std::map<std::string, double> median_ns;
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Aggregate && r.aggregate_name == "median")
                median_ns[r.run_name.function_name] = r.GetAdjustedRealTime() * 1e3;  // microseconds
    }
};

std::string key(const Entry& e) {
    return e.group + " " + std::to_string(e.width) + "x" + std::to_string(e.height) + " | " + e.label;
}

void print_summary(const SummaryReporter& rep) {
    std::printf("\n%-20s %-10s %-34s %10s %8s %9s %9s\n", "job", "size", "implementation", "us/frame", "GB/s",
                "vs peer", "vs memcpy");
    std::string last_group;
    for (const Entry& e : entries()) {
        if (e.kind != Kind::ours) continue;
        auto it = rep.median_ns.find(key(e));
        if (it == rep.median_ns.end()) continue;
        const double t = it->second / 1e3;
        double best_peer = 0, copy = 0;
        for (const Entry& o : entries()) {
            if (o.group != e.group || o.width != e.width || o.height != e.height) continue;
            auto ot = rep.median_ns.find(key(o));
            if (ot == rep.median_ns.end()) continue;
            const double ou = ot->second / 1e3;
            if (o.kind == Kind::peer && (best_peer == 0 || ou < best_peer)) best_peer = ou;
            if (o.kind == Kind::copy) copy = ou;
        }
        char peer[16] = "-", vs_copy[16] = "-";
        if (best_peer > 0) std::snprintf(peer, sizeof peer, "%.2f", t / best_peer);
        if (copy > 0) std::snprintf(vs_copy, sizeof vs_copy, "%.2f", t / copy);
        char size[16];
        std::snprintf(size, sizeof size, "%dx%d", e.width, e.height);
        std::printf("%-20s %-10s %-34s %10.1f %8.2f %9s %9s\n", e.group.c_str(), size, e.label.c_str(), t,
                    e.bytes / (t * 1e3), peer, vs_copy);
    }
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    get_contrast_data(&bench::settings);
    for (auto [w, h] : {std::pair{720, 480}, std::pair{1920, 1080}}) bench::register_loads(w, h);
    for (bench::Entry& e : bench::entries()) {
        auto run = e.run;
        benchmark::RegisterBenchmark(bench::key(e).c_str(), [run](benchmark::State& s) {
            for (auto _ : s) run();
        })->Unit(benchmark::kMicrosecond)->Repetitions(5)->ReportAggregatesOnly(true)->MinTime(0.05);
    }
    benchmark::Initialize(&argc, argv);
    bench::SummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    bench::print_summary(reporter);
    benchmark::Shutdown();
}
