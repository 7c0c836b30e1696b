#pragma once

#include <functional>
#include <vector>

/// A ratio over all rounds: its median and its quartiles.
struct Ratio {
    double median;
    double low;
    double high;
};

/// Times several ways to do one job against each other. Every round runs each of them once, in an order drawn
/// anew, so that the state of the machine, of its caches and of its disk falls on all of them alike; what is
/// compared are the times of one round.
class Rounds {
public:
    using Job = std::function<void()>;

    /// Runs the jobs once untimed, then round by round until `seconds` are over, five of them at least.
    Rounds(const std::vector<Job>& jobs, double seconds);

    /// The first job's time divided by that of job `yardstick`.
    Ratio To(size_t yardstick) const;

    /// Median time of one job in milliseconds.
    double Milliseconds(size_t job) const;

    /// The shortest of its times in milliseconds, for comparisons with other rounds.
    double Fastest(size_t job) const;

private:
    std::vector<std::vector<double>> m_times; // per job, one per round
};
