#pragma once

#include "bench/Rounds.h"

#include <string>

// One table of figures, row by row. docs/performance.md explains the columns.

inline constexpr double kNoGoal = 0;

void PrintTableHead();

/// The first job of `rounds` against job `yardstick`; the ratio's median should be at most `goal`.
void PrintRow(const std::string& what, const std::string& yardstickName, const Rounds& rounds,
              size_t yardstick, double goal);

/// A number that was found otherwise.
void PrintNumber(const std::string& what, const std::string& unit, double number, double goal);
