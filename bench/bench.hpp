// Shared pieces of the benchmark: frames, the registry of compared operations, peers.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/kernel_table.hpp"

extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

namespace bench {

// 64-byte aligned scratch memory with room for every kernel's overruns.
struct Memory {
    std::unique_ptr<uint8_t, decltype(&std::free)> bytes{nullptr, &std::free};
    size_t size = 0;
    explicit Memory(size_t n) : bytes(static_cast<uint8_t*>(std::aligned_alloc(64, (n + 63) / 64 * 64)), &std::free), size(n) {}
    uint8_t* data() const { return bytes.get(); }
};

// One picture in every source form the kernels take, plus surfaces to write.
struct Frame {
    int width, height;
    Memory y, u, v, yuy2, dst, dst2;
    // Sub-picture planes (opacity 0..16, Y, V, U with one chroma row per pixel row).
    Memory sub_a, sub_y, sub_u, sub_v;
    Frame(int w, int h);
};
Frame& frame(int width, int height);
// Stops the program unless the frame holds every byte a frame-signature call (source pitch
// `w`) reaches, as the library's footprint gives it: a kernel reading past the benchmark's
// buffers measures nothing and may crash (some kernels step their source past the picture).
// A call outside the kernel's contract is let through with a note (its reach is then unknown).
void check_fits(dispconv_kernel id, const char* name, const Frame& f, bool packed_source, int w, int h, int dst_stride,
                const ajust_contrast_info* adjust);

enum class Kind { ours, peer, copy, traffic };

// One measured operation: a named group (the job) and one way of doing it.
struct Entry {
    std::string group;   // e.g. "YV12 to RGB32"
    std::string label;   // e.g. "loadimage_rgb32 [avx2]", "libyuv I420ToARGB", "memcpy"
    Kind kind;
    int width, height;
    double bytes;        // bytes read plus written per frame
    std::function<void()> run;
};
void add(Entry e);

// Each kernel family registers its jobs for one frame size (bench/<family>.cpp).
void register_loads(int width, int height);
void register_stretch(int width, int height);
void register_subpicture(int width, int height);
void register_mix(int width, int height);

// Our kernel of one family table on every instruction set this CPU has, as entries of a group:
// `call(table)` returns the function that runs one frame with that table's kernel.
void add_ours(const std::string& group, const std::string& name, int width, int height, double bytes,
              const std::function<std::function<void()>(const dispconv::KernelTable&)>& call);
// memcpy of `out_bytes` (the job's output), as the bandwidth limit of the group.
void add_copy(const std::string& group, int width, int height, double out_bytes);

// The job's bare traffic: `in_bytes` read and `out_bytes` written a row at a time with plain
// 32-byte loads and stores and no arithmetic (x86 with AVX2 only). A kernel near it is bound
// by memory, not by its arithmetic.
void add_traffic(const std::string& group, int width, int height, double in_bytes, double out_bytes);

// Adjust settings every adjusting kernel of the benchmark runs with (not neutral).
extern ajust_contrast_info settings;

// Registers the peers of a group: libyuv and swscale operations by name (peers.cpp).
void add_peers(const std::string& group, int width, int height, double bytes);

// A swscale context for one conversion and size, made on first use and kept to the end, as a
// player keeps its own (peers.cpp).
SwsContext* sws_context(int from_width, int from_height, AVPixelFormat from, int width, int height, AVPixelFormat to,
                        int flags);

}  // namespace bench
