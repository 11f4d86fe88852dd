// The shared library exports exactly the functions the public header declares.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "support/test_support.hpp"

namespace {

// Names of the functions the header declares: the last word before the parameters on each line
// that starts with DISPCONV_API.
std::set<std::string> declared_functions() {
    std::ifstream header(DISPCONV_HEADER_PATH);
    std::set<std::string> names;
    std::string line;
    while (std::getline(header, line)) {
        if (line.rfind("DISPCONV_API ", 0) != 0) continue;
        std::string head = line.substr(0, std::min(line.find('('), line.find(" DISPCONV_FRAME_SIGNATURE")));
        head = head.substr(0, head.find_last_not_of(' ') + 1);
        names.insert(head.substr(head.find_last_of(" *") + 1));
    }
    return names;
}

std::set<std::string> exported_functions() {
    std::set<std::string> names;
    const std::string command = std::string("nm -D --defined-only ") + DISPCONV_LIBRARY_PATH;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return names;
    char line[512];
    while (std::fgets(line, sizeof line, pipe)) {
        char address[64], type[8], name[256];
        if (std::sscanf(line, "%63s %7s %255s", address, type, name) != 3) continue;
        const std::string t = type;
        if (t == "T" || t == "W" || t == "D" || t == "B" || t == "R" || t == "V" || t == "i")
            names.insert(name);
    }
    pclose(pipe);
    return names;
}

TEST(Exports, SharedLibraryExportsExactlyTheHeader) {
    if (!DISPCONV_SHARED_LIBRARY) GTEST_SKIP() << "static build: no dynamic symbol table";
    if (DISPCONV_INSTRUMENTED) GTEST_SKIP() << "instrumented build: the sanitizers add exports";
    const std::set<std::string> declared = declared_functions();
    const std::set<std::string> exported = exported_functions();
    ASSERT_EQ(declared.size(), 72u)
        << "the 68 kernels, dispconv_get_footprint, the two instruction-set calls and dispconv_version";
    ASSERT_FALSE(exported.empty()) << "could not read " << DISPCONV_LIBRARY_PATH;
    for (const std::string& name : declared) EXPECT_TRUE(exported.count(name)) << name << " is not exported";
    for (const std::string& name : exported) EXPECT_TRUE(declared.count(name)) << name << " is exported but not declared";
}

}  // namespace
