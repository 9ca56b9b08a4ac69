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
// inputs.

namespace {

using Input = std::vector<uint8_t>;

void run(const Input &input) { LLVMFuzzerTestOneInput(input.data(), input.size()); }

bool read(const std::filesystem::path &file, Input &input)
{
    std::ifstream in(file, std::ios::binary);
    input.assign(std::istreambuf_iterator<char>(in), {});
    return in.is_open() && !in.bad();
}

/// Makes inputs: half of them at random, half from given ones with some bytes changed.
class Source
{
public:
    Source(std::vector<Input> given, unsigned seed) : m_given(std::move(given)), m_engine(seed) {}

    Input make()
    {
        if (below(2) == 0) {
            Input input(below(400));
            std::generate(input.begin(), input.end(), [this] { return byte(); });
            return input;
        }
        Input input = m_given[below(m_given.size())];
        for (size_t changes = input.empty() ? 0 : below(8); changes > 0; --changes) {
            input[below(input.size())] = byte();
        }
        return input;
    }

private:
    size_t below(size_t end) { return m_engine() % end; }
    // Small ones are what programs choose their steps with.
    uint8_t byte() { return uint8_t(below(below(3) == 0 ? 256 : 16)); }

    const std::vector<Input> m_given;
    std::mt19937 m_engine;
};

/// An input that fails stays behind in a file, so that it can be kept.
void runRandom(Source source, unsigned long count, const std::string &file)
{
    for (; count > 0; --count) {
        const Input input = source.make();
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char *>(input.data()), std::streamsize(input.size()));
        run(input);
    }
    std::remove(file.c_str());
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc < 2 || argc > 4) {
        std::fprintf(stderr, "usage: %s FOLDER [COUNT [SEED]]\n", argc > 0 ? argv[0] : "replay");
        return 2;
    }
    std::error_code error;
    const std::filesystem::directory_iterator folder(argv[1], error);
    std::vector<std::filesystem::path> files(begin(folder), end(folder));
    std::sort(files.begin(), files.end());
    std::vector<Input> inputs(files.size());
    run({});
    for (size_t i = 0; i < files.size(); ++i) {
        if (!read(files[i], inputs[i])) {
            std::fprintf(stderr, "cannot read %s\n", files[i].c_str());
            return 1;
        }
        std::printf("%s\n", files[i].filename().c_str());
        std::fflush(stdout);  // the last one printed is the one that fails
        run(inputs[i]);
    }
    if (inputs.empty()) {
        std::fprintf(stderr, "no files in %s\n", argv[1]);
        return 1;
    }
    const unsigned long count = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 0;
    const unsigned seed = argc > 3 ? unsigned(std::strtoul(argv[3], nullptr, 10)) : 0;
    const std::string file = std::string(argv[0]) + ".input";
    std::printf(
        "%lu random inputs with the seed %u; %s is what fails\n", count, seed, file.c_str());
    std::fflush(stdout);
    runRandom(Source(inputs, seed), count, file);
    return 0;
}
