# 64-bit ARM on an x86-64 Debian host: Clang targeting aarch64-linux-gnu against Debian's arm64
# multiarch packages (libc6-dev:arm64, libstdc++-12-dev:arm64, ...), linked by lld, and run under
# qemu-user, so that ctest runs the suite under emulation. scripts/test-aarch64 installs all of it.
# Clang rather than g++-aarch64-linux-gnu: on Debian 12 that package and g++-multilib (the i386
# build) remove each other.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
# The host's GNU ld knows only x86; lld links every target.
set(CMAKE_EXE_LINKER_FLAGS_INIT -fuse-ld=lld)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -fuse-ld=lld)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -fuse-ld=lld)

# Multiarch: the arm64 libraries and headers live beside the host's under /, so the sysroot is /
# and only the library directories differ. -L / keeps qemu from preferring a cross sysroot that
# some other package may have registered as its default prefix.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /)

# pkg-config must describe the arm64 libraries, not the host's.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
