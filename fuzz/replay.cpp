#include "fuzz.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

// Runs a fuzz target, as any compiler builds it, for each file of a folder and then for random
// inputs. The last line that is printed says which one fails: a file, or the seed of an input.

namespace {

using Input = std::vector<uint8_t>;

Input read(const std::filesystem::path &file)
{
    std::ifstream in(file, std::ios::binary);
    require(in.is_open(), "the file can be read");
    return { std::istreambuf_iterator<char>(in), {} };
}

// Random bytes, or a given input with some bytes changed.
Input makeInput(const std::vector<Input> &given, unsigned seed)
{
    std::mt19937 engine(seed);
    const auto below = [&engine](size_t end) { return engine() % end; };
    // Small ones are what targets choose their steps with.
    const auto byte = [&below] { return uint8_t(below(below(3) == 0 ? 256 : 16)); };
    if (below(2) == 0) {
        Input input(below(400));
        std::generate(input.begin(), input.end(), byte);
        return input;
    }
    Input input = given[below(given.size())];
    for (size_t changes = input.empty() ? 0 : below(8); changes > 0; --changes) {
        input[below(input.size())] = byte();
    }
    return input;
}

void announce(const std::string &input)
{
    std::printf("%s\n", input.c_str());
    std::fflush(stdout);
}

void run(const Input &input) { LLVMFuzzerTestOneInput(input.data(), input.size()); }

}  // namespace

int main(int argc, char **argv)
{
    if (argc < 2 || argc > 4) {
        std::fprintf(stderr, "usage: replay_NAME FOLDER [COUNT [SEED]]\n");
        return 2;
    }
    std::error_code error;
    const std::filesystem::directory_iterator folder(argv[1], error);
    std::vector<std::filesystem::path> files(begin(folder), end(folder));
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        std::fprintf(stderr, "no files in %s\n", argv[1]);
        return 1;
    }
    std::vector<Input> inputs(1);  // the empty one, too
    run(inputs.back());
    for (const auto &file : files) {
        announce(file.filename());
        run(inputs.emplace_back(read(file)));
    }
    const unsigned long count = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 0;
    const unsigned seed = argc > 3 ? unsigned(std::strtoul(argv[3], nullptr, 10)) : 0;
    for (unsigned i = 0; i < count; ++i) {
        announce(std::to_string(seed + i));
        run(makeInput(inputs, seed + i));
    }
    return 0;
}
