#include "bench/Table.h"

#include <cstdio>

namespace {

/// A goal that lies between the lower quartile and the median is not missed: the rounds cannot tell.
void Print(const std::string& what, const std::string& against, const std::string& value, const Ratio& number,
           double goal) {
    std::printf("| %s | %s | %s ", what.c_str(), against.c_str(), value.c_str());
    if (goal == kNoGoal) {
        std::printf("| | |\n");
    } else {
        const char* const missed = number.low <= goal ? "within noise" : "NO";
        std::printf("| %.2f | %s |\n", goal, number.median <= goal ? "yes" : missed);
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
    Print(what, yardstickName, value, ratio, goal);
}

void PrintNumber(const std::string& what, const std::string& unit, double number, double goal) {
    char value[80];
    std::snprintf(value, sizeof value, "%.2f |", number);
    Print(what, unit, value, {number, number, number}, goal);
}
