#include "bench/Report.h"

#include <cstdio>

Report::Report() {
    std::printf("| case | against | ratio (quartiles) | ms | goal | met |\n"
                "|:-----|:--------|------------------:|---:|-----:|:----|\n");
}

void Report::Row(const char* what, const char* yardstickName, const Rounds& rounds, size_t yardstick,
                 double goal) {
    const Ratio ratio = rounds.To(yardstick);
    char value[80];
    std::snprintf(value, sizeof value, "%.2f (%.2f-%.2f) | %.3g", ratio.median, ratio.low, ratio.high,
                  rounds.Milliseconds(0));
    Print(what, yardstickName, value, ratio.median, goal);
}

void Report::Number(const char* what, const char* yardstickName, double number, double goal) {
    char value[80];
    std::snprintf(value, sizeof value, "%.2f |", number);
    Print(what, yardstickName, value, number, goal);
}

void Report::Print(const char* what, const char* yardstickName, const char* value, double number,
                   double goal) {
    std::printf("| %s | %s | %s ", what, yardstickName, value);
    if (goal == kNoGoal) {
        std::printf("| | |\n");
    } else {
        const bool met = number <= goal;
        m_missed += met ? 0 : 1;
        std::printf("| %.2f | %s |\n", goal, met ? "yes" : "NO");
    }
    std::fflush(stdout);
}
