// dispconv benchmark: each kernel on every instruction set this CPU has (or those --isa=LIST
// names), beside the closest operation of libyuv and swscale and memcpy of the same output
// bytes, single thread, at 720x480 and 1920x1080 (or the sizes --size=WxH,... names). Ends with
// a table of ratios (the fastest of the repetitions).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

#include "bench.hpp"
#include "core/kernel_table.hpp"
#include "dispconv.hpp"

namespace bench {

Frame::Frame(int w, int h)
    // The YV12 copy steps its source luma three rows per two written: y holds twice the picture.
    : width(w), height(h), y(size_t(w + 64) * (2 * h + 8)), u(size_t(w + 64) * (h + 8) / 2), v(size_t(w + 64) * (h + 8) / 2),
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

void check_fits(dispconv_kernel id, const char* name, const Frame& f, bool packed_source, int w, int h, int dst_stride,
                const ajust_contrast_info* adjust) {
    dispconv_call call{};
    call.kernel = id, call.width = w, call.height = h, call.src_stride = w, call.dst_stride = dst_stride;
    call.adjust = adjust;
    dispconv_footprint fp;
    if (dispconv_get_footprint(&call, &fp) != DISPCONV_OK) {
        std::fprintf(stderr, "dispconv_bench: %s at %dx%d runs outside its contract (%s); its reach is not checked\n",
                     name, w, h, fp.problem);
        return;
    }
    const Memory* sources[] = {packed_source ? &f.yuy2 : &f.y, &f.u, &f.v};
    auto inside = [](dispconv_range r, const Memory& m) { return r.begin >= 0 && r.end <= int64_t(m.size); };
    bool fits = inside(fp.read[DISPCONV_BUFFER_DST], f.dst) && inside(fp.write[DISPCONV_BUFFER_DST], f.dst);
    for (int b = DISPCONV_BUFFER_SRC_Y; b <= DISPCONV_BUFFER_SRC_V; ++b) fits = fits && inside(fp.read[b], *sources[b]);
    if (!fits) {
        std::fprintf(stderr, "dispconv_bench: the %dx%d frame is too small for %s\n", w, h, name);
        std::exit(1);
    }
}

std::vector<Entry>& entries() {
    static std::vector<Entry> all;
    return all;
}
void add(Entry e) { entries().push_back(std::move(e)); }

namespace {

}  // namespace

ajust_contrast_info settings{70, 60, -4, 3, -3, 0, 0, 0, 0, 0, 0, 0};

// The instruction sets measured: those this CPU runs, narrowed by --isa=LIST.
std::vector<uint32_t> measured_sets;

void add_ours(const std::string& group, const std::string& name, int w, int h, double bytes,
              const std::function<std::function<void()>(const dispconv::KernelTable&)>& call) {
    for (uint32_t bit : measured_sets) {
        const auto isa = dispconv::Isa(bit ? __builtin_ctz(bit) + 1 : 0);
        if (const dispconv::KernelTable* t = dispconv::kernel_table(isa))
            add({group, name + " [" + dispconv::isa_name(bit) + "]", Kind::ours, w, h, bytes, call(*t)});
    }
}

void add_copy(const std::string& group, int w, int h, double out_bytes) {
    Frame& f = frame(w, h);
    const size_t n = size_t(out_bytes);
    add({group, "memcpy", Kind::copy, w, h, 2 * out_bytes, [&f, n] { std::memcpy(f.dst.data(), f.dst2.data(), n); }});
}

#if defined(__x86_64__) || defined(__i386__)
namespace {
__attribute__((target("avx2"))) void stream(const uint8_t* in, size_t in_row, uint8_t* out, size_t out_row, int rows) {
    __m256i acc = _mm256_setzero_si256();
    for (int r = 0; r < rows; ++r, in += in_row, out += out_row) {  // a row read, then a row written
        for (size_t i = 0; i + 32 <= in_row; i += 32)
            acc = _mm256_xor_si256(acc, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i)));
        for (size_t o = 0; o + 32 <= out_row; o += 32) _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + o), acc);
    }
}
}  // namespace

void add_traffic(const std::string& group, int w, int h, double in_bytes, double out_bytes) {
    if (!__builtin_cpu_supports("avx2")) return;
    Frame& f = frame(w, h);
    const size_t in = size_t(in_bytes) / h, out = size_t(out_bytes) / h;
    add({group, "bare traffic", Kind::traffic, w, h, in_bytes + out_bytes, [&f, in, out, h] { stream(f.dst2.data(), in, f.dst.data(), out, h); }});
}
#else
void add_traffic(const std::string&, int, int, double, double) {}
#endif

namespace {

// Collects the fastest repetition of every entry for the summary, in CPU time of the one
// thread: on a shared machine other load only ever adds time, so the minimum of the thread's
// own time is the steadiest estimate for every side.
class SummaryReporter : public benchmark::ConsoleReporter {
  public:
    std::map<std::string, double> fastest_ns;
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Aggregate && r.aggregate_name == "min")
                fastest_ns[r.run_name.function_name] = r.GetAdjustedCPUTime() * 1e3;  // microseconds
    }
};

std::string key(const Entry& e) {
    return e.group + " " + std::to_string(e.width) + "x" + std::to_string(e.height) + " | " + e.label;
}

void print_summary(const SummaryReporter& rep) {
    std::printf("\n%-20s %-10s %-34s %10s %8s %9s %9s %9s\n", "job", "size", "implementation", "us/frame", "GB/s",
                "vs peer", "vs memcpy", "vs traffic");
    std::string last_group;
    for (const Entry& e : entries()) {
        if (e.kind != Kind::ours) continue;
        auto it = rep.fastest_ns.find(key(e));
        if (it == rep.fastest_ns.end()) continue;
        const double t = it->second / 1e3;
        double best_peer = 0, copy = 0, traffic = 0;
        for (const Entry& o : entries()) {
            if (o.group != e.group || o.width != e.width || o.height != e.height) continue;
            auto ot = rep.fastest_ns.find(key(o));
            if (ot == rep.fastest_ns.end()) continue;
            const double ou = ot->second / 1e3;
            if (o.kind == Kind::peer && (best_peer == 0 || ou < best_peer)) best_peer = ou;
            if (o.kind == Kind::copy) copy = ou;
            if (o.kind == Kind::traffic) traffic = ou;
        }
        char peer[16] = "-", vs_copy[16] = "-", vs_traffic[16] = "-";
        if (best_peer > 0) std::snprintf(peer, sizeof peer, "%.2f", t / best_peer);
        if (copy > 0) std::snprintf(vs_copy, sizeof vs_copy, "%.2f", t / copy);
        if (traffic > 0) std::snprintf(vs_traffic, sizeof vs_traffic, "%.2f", t / traffic);
        char size[16];
        std::snprintf(size, sizeof size, "%dx%d", e.width, e.height);
        std::printf("%-20s %-10s %-34s %10.1f %8.2f %9s %9s %9s\n", e.group.c_str(), size, e.label.c_str(), t,
                    e.bytes / (t * 1e3), peer, vs_copy, vs_traffic);
    }
}

}  // namespace
}  // namespace bench

namespace {

// The value of --NAME=VALUE, taken out of argv so that the benchmark library does not see it.
std::optional<std::string> take_option(int& argc, char** argv, const char* name) {
    const std::string prefix = std::string("--") + name + "=";
    for (int i = 1; i < argc; ++i)
        if (std::strncmp(argv[i], prefix.c_str(), prefix.size()) == 0) {
            std::string value = argv[i] + prefix.size();
            std::copy(argv + i + 1, argv + argc + 1, argv + i);
            --argc;
            return value;
        }
    return std::nullopt;
}

// "720x480,1920x1080" as sizes; a malformed size stops the program, and so does one that some
// kernel's contract refuses (widths in sixteens, mixers on interlaced frames heights in fours,
// the edge-directed stretch at least 10 rows): called outside it, a kernel may write past the
// frame buffers. The one kernel that wants widths in 32s runs with a note, as at 720x480.
std::vector<std::pair<int, int>> parse_sizes(const std::string& list) {
    std::vector<std::pair<int, int>> sizes;
    size_t at = 0;
    while (at <= list.size()) {
        const size_t end = std::min(list.find(',', at), list.size());
        const std::string item = list.substr(at, end - at);
        int w = 0, h = 0;
        char rest = 0;
        if (std::sscanf(item.c_str(), "%dx%d%c", &w, &h, &rest) != 2 || w < 32 || w > 16384 || w % 16 != 0 || h < 12 ||
            h > 16384 || h % 4 != 0) {
            std::fprintf(stderr,
                         "dispconv_bench: --size wants WIDTHxHEIGHT[,...], the width a multiple of 16 from 32 to 16384 and "
                         "the height a multiple of 4 from 12 to 16384, not '%s'\n",
                         item.c_str());
            std::exit(2);
        }
        sizes.emplace_back(w, h);
        at = end + 1;
    }
    return sizes;
}

}  // namespace

int main(int argc, char** argv) {
    // --isa=portable,avx2 measures only those sets (default: every set this CPU runs).
    const std::optional<std::string> isa_list = take_option(argc, argv, "isa");
    const std::string wanted = isa_list ? "," + *isa_list + "," : "";
    // --size=1280x720,3840x2160 measures at those frame sizes instead of the two standard ones.
    const std::optional<std::string> size_list = take_option(argc, argv, "size");
    const auto sizes = size_list ? parse_sizes(*size_list) : std::vector<std::pair<int, int>>{{720, 480}, {1920, 1080}};
    for (const dispconv::IsaName& n : dispconv::isa_names) {
        const bool listed = wanted.empty() || wanted.find(std::string(",") + n.name + ",") != std::string::npos;
        if (listed && (n.bit == 0 || (dispconv_isa_available() & n.bit))) bench::measured_sets.push_back(n.bit);
        else if (listed && !wanted.empty()) std::fprintf(stderr, "--isa: %s is not available here\n", n.name);
    }
    get_contrast_data(&bench::settings);
    for (auto [w, h] : sizes) {
        bench::register_loads(w, h);
        bench::register_stretch(w, h);
        bench::register_subpicture(w, h);
        bench::register_mix(w, h);
    }
    for (bench::Entry& e : bench::entries()) {
        auto run = e.run;
        benchmark::RegisterBenchmark(bench::key(e).c_str(), [run](benchmark::State& s) {
            for (auto _ : s) run();
        })
            ->Unit(benchmark::kMicrosecond)
            ->Repetitions(5)
            ->ReportAggregatesOnly(true)
            ->MinTime(0.05)
            ->ComputeStatistics("min", [](const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); });
    }
    benchmark::Initialize(&argc, argv);
    bench::SummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    bench::print_summary(reporter);
    benchmark::Shutdown();
}
