#include "bench/timing.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>

double quantile(Samples samples, double share)
{
    if (samples.empty())
        throw std::runtime_error("nothing was measured");
    std::sort(samples.begin(), samples.end());
    const double place = std::round(share * static_cast<double>(samples.size() - 1));
    return samples[static_cast<size_t>(place)];
}

Samples quotients(const Samples& numerators, const Samples& denominators)
{
    Samples result;
    for (size_t i = 0; i < numerators.size(); ++i)
        result.push_back(numerators[i] / denominators.at(i));
    return result;
}

Contender timed(int operations, const std::function<void()>& work)
{
    return [=] {
        const double start = nanoseconds();
        work();
        return (nanoseconds() - start) / operations;
    };
}

Contender repeated(int times, const std::function<void()>& operation)
{
    return timed(times, [=] {
        for (int i = 0; i < times; ++i)
            operation();
    });
}

std::vector<Samples> alternate(int rounds, const std::vector<Contender>& contenders)
{
    std::vector<Samples> results(contenders.size());
    for (size_t round = 0; round < static_cast<size_t>(rounds); ++round) {
        for (size_t i = 0; i < contenders.size(); ++i) {
            const size_t turn = (round + i) % contenders.size();
            results[turn].push_back(contenders[turn]());
        }
    }
    return results;
}

double nanoseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::nano>(now).count();
}
