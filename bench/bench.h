#ifndef BENCH_H
#define BENCH_H

#include <functional>
#include <vector>

// One figure: the cost of an operation of the library, divided by that of its floor. The floor does
// what any program that uses QtXml must do at least.
struct Figure
{
    // Prepares its data and returns the function to measure.
    using Make = std::function<std::function<void()>()>;

    const char *name;
    double limit;  // of the ratio of instructions
    double timeLimit;  // of the ratio of times; 0 for the same
    Make value;
    Make floor;
    double floorFactor = 1;  // the value is divided by this many floors
    bool isHeap = false;  // counts bytes that one call leaves allocated, not time
};

// All registered figures.
std::vector<Figure> &figures();

// Registers figures before main().
struct Register
{
    Register(std::initializer_list<Figure> list)
    {
        figures().insert(figures().end(), list.begin(), list.end());
    }
};

// Keeps the compiler from removing an unused result.
template<typename T>
void keep(const T &value)
{
    asm volatile("" : : "r,m"(value) : "memory");
}

#endif
