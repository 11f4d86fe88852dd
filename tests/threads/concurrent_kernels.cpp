// Kernels of every family, from the catalogue, running on several threads at once through the
// table the exported entry points use, each thread on buffers of its own, while another thread
// keeps loading one of two adjust settings records in turn and moving the kernels from one
// instruction set to the next. Built with -fsanitize=thread this proves the absence of data
// races; in any build it checks that every output equals a single-threaded run under one
// combination of old and new constants (each of the five constants from either record): a
// kernel takes one snapshot per call, no call mixes two, and every set gives the same bytes.
// The first kernel calls of the process are made by all threads at once, so that the choice of
// kernel table happens under contention; the outputs are checked after the run. The argument
// is the number of rounds (40).
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "checked/checked_support.hpp"

using namespace dispconv;
using namespace dispconv::test;

namespace {

constexpr int threads = 4;

// One call and its buffers, sized by its footprint, and the output of a run on a copy of them
// (every buffer, then the record's height and pointer moves).
struct Job {
    CheckedCall call;
    Buffers pristine;

    std::vector<uint8_t> run() const {
        Buffers b = pristine;
        std::array<uint8_t*, DISPCONV_BUFFER_COUNT> p = b.pointers();
        MIX_INFO after;
        run_raw(active_kernels(), call, p.data(), &after);
        std::vector<uint8_t> out;
        for (const auto& bytes : b.bytes) out.insert(out.end(), bytes.begin(), bytes.end());
        const int64_t record[] = {after.height, after.sub_y - p[DISPCONV_BUFFER_SUB_Y], after.frame_u - p[DISPCONV_BUFFER_FRAME_U]};
        out.insert(out.end(), reinterpret_cast<const uint8_t*>(record), reinterpret_cast<const uint8_t*>(record + 3));
        return out;
    }
};

// Every fourth kernel of the catalogue (each family has several), at a modest size.
std::vector<Job> jobs() {
    std::vector<Job> all;
    for (int k = 0; k < DISPCONV_KERNEL_COUNT; k += 4) {
        const KernelFacts& f = facts(dispconv_kernel(k));
        Job j{make_call(dispconv_kernel(k), f.least_width + std::max(f.block, 16), f.min_height + 4, 8, 1, 1), {}};
        dispconv_footprint fp;
        if (footprint_of(j.call, fp) != DISPCONV_OK) std::printf("%s: %s\n", describe(j.call).c_str(), fp.problem), std::abort();
        j.pristine = footprint_buffers(fp, {}, [](int b, std::vector<uint8_t>& bytes) {
            fill_random(bytes.data(), bytes.size(), 2024 + b);
            if (b == DISPCONV_BUFFER_SUB_OPACITY)
                for (uint8_t& o : bytes) o %= 17;
        });
        all.push_back(std::move(j));
    }
    return all;
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 40;
    const std::vector<Job> all = jobs();
    const size_t n = all.size();
    std::vector<uint32_t> sets{0};
    for (uint32_t bit = 1; bit; bit <<= 1)
        if (dispconv_isa_available() & bit) sets.push_back(bit);
    const ajust_contrast_info old_settings = settings(), new_settings = settings(100, 30, 20, 60, -40);

    // Each thread's distinct outputs per job, and the calls whose output differed from the call
    // before them (the settings changed under the kernels).
    std::vector<std::vector<std::vector<std::vector<uint8_t>>>> met(threads, std::vector<std::vector<std::vector<uint8_t>>>(n));
    std::atomic<int> changes{0};
    // On a busy machine the setter may not run beside the workers for a while: go on past
    // `rounds` until enough changes have been met (for at most some seconds).
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    // The workers start together; the setter runs until they are done.
    std::atomic<int> ready{0};
    std::atomic<bool> done{false};
    std::thread setter([&] {
        for (size_t next = 0; !done.load(std::memory_order_acquire); ++next) {
            ajust_contrast_info s = next % 2 ? new_settings : old_settings;
            get_contrast_data(&s);
            dispconv_set_isa_mask(sets[next % sets.size()]);
        }
    });
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t)
        workers.emplace_back([&, t] {
            ready.fetch_add(1);
            while (ready.load() < threads) std::this_thread::yield();
            std::vector<size_t> last(n, 0);
            for (int r = 0; r < rounds || (changes.load() < 200 && std::chrono::steady_clock::now() < deadline); ++r)
                for (size_t j = 0; j < n; ++j) {
                    std::vector<uint8_t> out = all[j].run();
                    auto& m = met[t][j];
                    const size_t k = size_t(std::find(m.begin(), m.end(), out) - m.begin());
                    if (k == m.size()) m.push_back(std::move(out));
                    if (r > 0 && k != last[j]) changes.fetch_add(1);
                    last[j] = k;
                }
        });
    for (std::thread& w : workers) w.join();
    done.store(true, std::memory_order_release);
    setter.join();
    dispconv_set_isa_mask(~0u);

    // What a single-threaded run gives under each combination (bit i set: constant i from the
    // new record).
    std::vector<std::vector<std::vector<uint8_t>>> possible(n);
    for (int mask = 0; mask < 32; ++mask) {
        auto pick = [&](int bit, int32_t ajust_contrast_info::*f) { return (mask >> bit & 1 ? new_settings : old_settings).*f; };
        ajust_contrast_info s = settings(pick(0, &ajust_contrast_info::luma_gain), pick(1, &ajust_contrast_info::chroma_gain),
                                         pick(2, &ajust_contrast_info::luma_offset), pick(3, &ajust_contrast_info::u_offset),
                                         pick(4, &ajust_contrast_info::v_offset));
        get_contrast_data(&s);
        for (size_t j = 0; j < n; ++j) possible[j].push_back(all[j].run());
    }
    int failures = 0, outputs_met = 0;  // distinct outputs beyond the first, summed over kernels
    for (size_t j = 0; j < n; ++j) {
        std::vector<std::vector<uint8_t>> distinct;
        int bad = 0;
        for (int t = 0; t < threads; ++t)
            for (const auto& out : met[t][j]) {
                if (std::find(possible[j].begin(), possible[j].end(), out) == possible[j].end()) ++bad;
                else if (std::find(distinct.begin(), distinct.end(), out) == distinct.end()) distinct.push_back(out);
            }
        if (bad) {
            std::printf("FAIL %s: %d outputs that no combination of old and new constants gives\n",
                        describe(all[j].call).c_str(), bad);
            ++failures;
        }
        outputs_met += int(distinct.size()) - 1;
    }
    std::printf("%d threads, %zu kernels, %d rounds, %zu instruction sets; %d calls met a change of settings\n",
                threads, n, rounds, sets.size(), changes.load());
    // Otherwise the run proved nothing: the settings never changed under the kernels.
    if (outputs_met <= 0) {
        std::printf("FAIL: no kernel saw the settings change during the run\n");
        ++failures;
    }
    if (failures) return 1;
    std::printf("all outputs as expected\n");
    return 0;
}
