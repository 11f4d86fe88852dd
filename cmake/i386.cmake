# 32-bit x86 on an x86-64 Linux host, with the compiler's 32-bit libraries (Debian:
# g++-12-multilib). The host runs the results natively, so this is not treated as cross-compiling.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CROSSCOMPILING OFF)
set(CMAKE_C_FLAGS_INIT -m32)
set(CMAKE_CXX_FLAGS_INIT -m32)
# Debian keeps the kernel's asm headers in the 64-bit multiarch directory; the gcc-multilib
# package links /usr/include/asm to them but cannot be installed beside a cross compiler.
# Without it, look there after every other directory.
if(NOT EXISTS /usr/include/asm AND EXISTS /usr/include/x86_64-linux-gnu/asm)
  string(APPEND CMAKE_C_FLAGS_INIT " -idirafter /usr/include/x86_64-linux-gnu")
  string(APPEND CMAKE_CXX_FLAGS_INIT " -idirafter /usr/include/x86_64-linux-gnu")
endif()
set(CMAKE_EXE_LINKER_FLAGS_INIT -m32)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -m32)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -m32)
