#include "fuzz.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

// Runs a fuzz target once for each file of a folder, as any compiler builds it.

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argc > 0 ? argv[0] : "replay");
        return 2;
    }
    std::error_code error;
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(argv[1], error)) {
        files.push_back(entry.path());
    }
    if (files.empty()) {
        std::fprintf(stderr, "no files in %s\n", argv[1]);
        return 1;
    }
    std::sort(files.begin(), files.end());
    LLVMFuzzerTestOneInput(nullptr, 0);
    for (const auto &file : files) {
        std::ifstream in(file, std::ios::binary);
        const std::vector<char> bytes { std::istreambuf_iterator<char>(in), {} };
        if (!in.is_open() || in.bad()) {
            std::fprintf(stderr, "cannot read %s\n", file.c_str());
            return 1;
        }
        std::printf("%s\n", file.filename().c_str());
        std::fflush(stdout);  // the last one printed is the one that fails
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    }
    return 0;
}
