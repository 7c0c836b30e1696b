#include "bench/Table.h"

#include <cstdio>

namespace {

void Print(const std::string& what, const std::string& against, const std::string& value, double number,
           double goal) {
    std::printf("| %s | %s | %s ", what.c_str(), against.c_str(), value.c_str());
    if (goal == kNoGoal) {
        std::printf("| | |\n");
    } else {
        std::printf("| %.2f | %s |\n", goal, number <= goal ? "yes" : "NO");
    }
    std::fflush(stdout);
}

} // namespace

void PrintTableHead() {
    std::printf("| case | against | ratio (quartiles) | ms | goal | met |\n"
                "|:-----|:--------|------------------:|---:|-----:|:----|\n");
}

void PrintRow(const std::string& what, const std::string& yardstickName, const Rounds& rounds,
              size_t yardstick, double goal) {
    const Ratio ratio = rounds.To(yardstick);
    char value[80];
    std::snprintf(value, sizeof value, "%.2f (%.2f-%.2f) | %.3g", ratio.median, ratio.low, ratio.high,
                  rounds.Milliseconds(0));
    Print(what, yardstickName, value, ratio.median, goal);
}

void PrintNumber(const std::string& what, const std::string& unit, double number, double goal) {
    char value[80];
    std::snprintf(value, sizeof value, "%.2f |", number);
    Print(what, unit, value, number, goal);
}
