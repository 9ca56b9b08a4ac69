#include "bench.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <string>

std::vector<Figure> &figures()
{
    static std::vector<Figure> list;
    return list;
}

namespace {

constexpr int ROUNDS = 41;  // of which the best counts
constexpr int WARM_UPS = 10;  // after fewer, malloc() still sorts what earlier runs have freed

void prepare(const Measured &measured)
{
    if (measured.prepare) {
        measured.prepare();
    }
}

// Caches fill, and memory is taken from the system.
void warmUp(const Measured &measured)
{
    prepare(measured);
    measured.run();
}

// Counts the instructions of one run after the warm-ups, and leaves a dump of that name.
void count(const std::string &name, const Figure::Make &make)
{
    const Measured measured = make();
    for (int i = 0; i < WARM_UPS; ++i) {
        warmUp(measured);
    }
    prepare(measured);
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    measured.run();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

// Bytes that one run leaves allocated.
double heapOf(const Figure::Make &make)
{
    const Measured measured = make();
    warmUp(measured);
    prepare(measured);
    const size_t before = mallinfo2().uordblks;
    measured.run();
    return double(mallinfo2().uordblks - before);
}

void printHeap(const Figure &figure)
{
    std::fprintf(stderr, "%s %.0f %.0f\n", figure.name, heapOf(figure.value) - figure.apart,
        figure.floor ? heapOf(figure.floor) : 1);
}

// Nanoseconds of this thread.
double timeOf(const Measured &measured)
{
    prepare(measured);
    timespec before = {};
    timespec after = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
    measured.run();
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
    return double(after.tv_sec - before.tv_sec) * 1e9 + double(after.tv_nsec - before.tv_nsec);
}

// Prints the best times of value and floor, which take turns: what else the machine does hits
// both.
void printBestTimes(const Figure &figure)
{
    const Measured value = figure.value();
    const Measured floor = figure.floor();
    double bestValue = std::numeric_limits<double>::max();
    double bestFloor = bestValue;
    for (int i = 0; i < ROUNDS; ++i) {
        bestValue = std::min(bestValue, timeOf(value));
        bestFloor = std::min(bestFloor, timeOf(floor));
    }
    std::fprintf(stderr, "%s %.0f %.0f\n", figure.name, bestValue, bestFloor);
}

void registerTimes(const std::string &name, const Figure::Make &make)
{
    benchmark::RegisterBenchmark(name.c_str(), [make](benchmark::State &state) {
        const Measured measured = make();
        for (auto _ : state) {
            if (measured.prepare) {
                state.PauseTiming();
                measured.prepare();
                state.ResumeTiming();
            }
            measured.run();
        }
    });
}

// The Qt line, and of each figure name, factor and unit.
void printFigures()
{
    std::printf("qt %d\n", QT_VERSION_MAJOR);
    for (const Figure &f : figures()) {
        const char *unit = f.unit == Figure::Bytes ? "bytes" : "instructions";
        std::printf("%s %g %s\n", f.name, f.floorFactor, unit);
    }
}

void measure(const Figure &figure, const char *mode)
{
    const std::string name(figure.name);
    if (figure.unit == Figure::Bytes) {
        printHeap(figure);
    } else if (std::strcmp(mode, "--count") == 0) {
        count(name + "/value", figure.value);
        count(name + "/floor", figure.floor);
    } else {
        printBestTimes(figure);
    }
}

void runBenchmarks(int &argc, char *argv[])
{
    for (const Figure &figure : figures()) {
        const std::string name(figure.name);
        if (figure.unit == Figure::Instructions) {
            registerTimes(name + "/value", figure.value);
            registerTimes(name + "/floor", figure.floor);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}

}  // namespace

// usage: --figures | --count NAME | --best NAME | options of Google Benchmark
int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const char *mode = argc > 1 ? argv[1] : "";
    if (std::strcmp(mode, "--figures") == 0) {
        printFigures();
    } else if (std::strcmp(mode, "--count") == 0 || std::strcmp(mode, "--best") == 0) {
        for (const Figure &figure : figures()) {
            if (argc > 2 && std::strcmp(argv[2], figure.name) == 0) {
                measure(figure, mode);
            }
        }
    } else {
        runBenchmarks(argc, argv);
    }
    return 0;
}
