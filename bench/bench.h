#ifndef BENCH_H
#define BENCH_H

#include <functional>
#include <vector>

// One figure: what the library does, over a floor that nothing built on QtXml can go below.
struct Figure
{
    // Prepares its data once and returns what is to be measured.
    using Make = std::function<std::function<void()>()>;

    const char *name;
    double limit;  // of the ratio of instructions
    double timeLimit;  // of the ratio of times; 0 for the same
    Make value;
    Make floor;
    double floorFactor = 1;  // how many floors the value is compared with
    bool isHeap = false;  // bytes that one call leaves allocated, in place of time
};

// What the files of this folder have registered.
std::vector<Figure> &figures();

// Registers figures before main().
struct Register
{
    Register(std::initializer_list<Figure> list)
    {
        figures().insert(figures().end(), list.begin(), list.end());
    }
};

// Keeps the compiler from dropping what is only computed.
template<typename T>
void keep(const T &value)
{
    asm volatile("" : : "r,m"(value) : "memory");
}

#endif
