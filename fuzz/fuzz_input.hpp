// The fuzz input as a file the readers can open by name, held in memory (no disk writes).
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
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

}  // namespace dispconv::fuzz
