#ifndef BENCH_H
#define BENCH_H

#include <functional>
#include <initializer_list>
#include <utility>
#include <vector>

// What is measured, with its data. What is prepared before each run does not count.
struct Measured
{
    std::function<void()> run;
    std::function<void()> prepare;  // null for nothing

    template<typename Run>
    Measured(Run measured) : run(std::move(measured))
    {
    }
    Measured(std::function<void()> measured, std::function<void()> before)
        : run(std::move(measured)), prepare(std::move(before))
    {
    }
};

// One figure: what the library does, over what it costs to do that by hand. Names and limits are
// explained in figures.py.
struct Figure
{
    enum Unit { Instructions, Bytes };  // Bytes: what one run leaves allocated

    // Makes the data once.
    using Make = std::function<Measured()>;

    const char *name;
    Make value;
    Make floor;  // null for 1
    double floorFactor = 1;  // how many floors the value is compared with
    Unit unit = Instructions;
    double apart = 0;  // bytes of the value that do not count
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
