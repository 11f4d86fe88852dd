// The fuzz input as a file the readers can open by name, held in memory (no disk writes), and
// a count of the open files: a reader that refuses its input must not keep one open (a FILE
// stays reachable through the C library's list, so the leak checker does not see it).
#pragma once

#include <dirent.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace dispconv::fuzz {

class InputFile {
public:
    InputFile(const uint8_t* data, size_t size) {
        fd_ = memfd_create("fuzz-input", MFD_CLOEXEC);
        if (fd_ < 0) std::abort();
        for (size_t done = 0; done < size;) {
            const ssize_t n = ::write(fd_, data + done, size - done);
            if (n <= 0) std::abort();
            done += size_t(n);
        }
        path_ = "/proc/self/fd/" + std::to_string(fd_);
    }
    ~InputFile() { ::close(fd_); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    const std::string& path() const { return path_; }

private:
    int fd_ = -1;
    std::string path_;
};

inline int open_files() {
    DIR* d = opendir("/proc/self/fd");
    if (!d) std::abort();
    int n = 0;
    while (readdir(d)) ++n;
    closedir(d);
    return n;
}

// Aborts when the files open at the end of a scope differ from those at its start.
class NoFileLeft {
public:
    NoFileLeft() : before_(open_files()) {}
    ~NoFileLeft() {
        if (const int after = open_files(); after != before_) {
            std::fprintf(stderr, "the reader left %d file(s) open\n", after - before_);
            std::abort();
        }
    }

private:
    int before_;
};

}  // namespace dispconv::fuzz
