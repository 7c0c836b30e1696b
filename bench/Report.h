#pragma once

#include "bench/Rounds.h"

/// Prints one table of ratios, row by row, and counts the goals that were missed.
class Report {
public:
    static constexpr double kNoGoal = 0;

    Report();

    /// The first job of `rounds` against job `yardstick`; the ratio's median has to be at most `goal`.
    void Row(const char* what, const char* yardstickName, const Rounds& rounds, size_t yardstick,
             double goal = kNoGoal);

    /// A number that was found otherwise.
    void Number(const char* what, const char* yardstickName, double value, double goal);

    int Missed() const noexcept { return m_missed; }

private:
    void Print(const char* what, const char* yardstickName, const char* value, double median, double goal);

    int m_missed = 0;
};
