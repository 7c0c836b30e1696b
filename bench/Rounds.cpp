#include "bench/Rounds.h"

#include <windows.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace {

double Milliseconds() {
    LARGE_INTEGER now, perSecond;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&perSecond);
    return 1000.0 * static_cast<double>(now.QuadPart) / static_cast<double>(perSecond.QuadPart);
}

/// The value that `share` of the values do not exceed.
double Quantile(std::vector<double> values, double share) {
    const auto at = values.begin() + static_cast<ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

} // namespace

Rounds::Rounds(const std::vector<Job>& jobs, double seconds) : m_times(jobs.size()) {
    for (const Job& job : jobs) {
        job();
    }
    constexpr size_t kMinRounds = 5;
    std::vector<size_t> order(jobs.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::mt19937 random; // the same orders in every run
    const double end = ::Milliseconds() + 1000 * seconds;
    while (m_times[0].size() < kMinRounds || ::Milliseconds() < end) {
        std::shuffle(order.begin(), order.end(), random);
        for (const size_t job : order) {
            const double begin = ::Milliseconds();
            jobs[job]();
            m_times[job].push_back(::Milliseconds() - begin);
        }
    }
}

Ratio Rounds::To(size_t yardstick) const {
    std::vector<double> ratios(m_times[0].size());
    std::transform(m_times[0].begin(), m_times[0].end(), m_times[yardstick].begin(), ratios.begin(),
                   std::divides<>());
    return {Quantile(ratios, 0.5), Quantile(ratios, 0.25), Quantile(ratios, 0.75)};
}

double Rounds::Milliseconds(size_t job) const {
    return Quantile(m_times[job], 0.5);
}

double Rounds::Fastest(size_t job) const {
    return *std::min_element(m_times[job].begin(), m_times[job].end());
}
