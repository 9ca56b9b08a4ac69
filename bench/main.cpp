#include "bench.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstring>
#include <string>

std::vector<Figure> &figures()
{
    static std::vector<Figure> list;
    return list;
}

namespace {

// Runs once to warm up and once with instructions counted, and writes a dump of that name.
void count(const std::string &name, const Figure::Make &make)
{
    const auto run = make();
    run();
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    run();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

// How many bytes one run leaves allocated.
size_t heapOf(const Figure::Make &make)
{
    const auto run = make();
    run();
    const size_t before = mallinfo2().uordblks;
    run();
    return mallinfo2().uordblks - before;
}

void printHeap(const Figure &figure)
{
    std::fprintf(
        stderr, "heap %s %zu %zu\n", figure.name, heapOf(figure.value), heapOf(figure.floor));
}

void timeIt(const std::string &name, const Figure::Make &make)
{
    benchmark::RegisterBenchmark(name.c_str(), [make](benchmark::State &state) {
        const auto run = make();
        for (auto _ : state) {
            run();
        }
    });
}

// Prints one line for each figure, which report.py reads: name, limits, factor.
void printFigures()
{
    for (const Figure &f : figures()) {
        std::printf("%s %g %g %g %d\n", f.name, f.limit, f.timeLimit, f.floorFactor, f.isHeap);
    }
}

}  // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_HASH_SEED", "0");
    QCoreApplication app(argc, argv);
    const char *mode = argc > 1 ? argv[1] : "";
    if (std::strcmp(mode, "--figures") == 0) {
        printFigures();
        return 0;
    }
    const bool counting = std::strcmp(mode, "--count") == 0;
    const std::string only = counting && argc > 2 ? argv[2] : "";
    for (const Figure &figure : figures()) {
        if (!only.empty() && only != figure.name) {
            continue;
        }
        const std::string name(figure.name);
        if (figure.isHeap) {
            printHeap(figure);
        } else if (counting) {
            count(name + "/value", figure.value);
            count(name + "/floor", figure.floor);
        } else {
            timeIt(name + "/value", figure.value);
            timeIt(name + "/floor", figure.floor);
        }
    }
    if (!counting) {
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
    }
    return 0;
}
