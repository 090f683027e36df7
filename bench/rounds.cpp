#include "bench/rounds.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>

double quantile(Rounds values, double share)
{
    if (values.empty())
        throw std::runtime_error("nothing was measured");
    std::sort(values.begin(), values.end());
    const double place = share * static_cast<double>(values.size() - 1);
    const double below = std::floor(place);
    const double left = values[static_cast<size_t>(below)];
    const double right = values[static_cast<size_t>(std::ceil(place))];
    return left + (right - left) * (place - below);
}

Rounds quotients(const Rounds& numerators, const Rounds& denominators)
{
    Rounds result;
    for (size_t i = 0; i < numerators.size(); ++i)
        result.push_back(numerators[i] / denominators.at(i));
    return result;
}

std::vector<Rounds> interleave(int rounds, const std::vector<Contender>& contenders)
{
    std::vector<Rounds> results(contenders.size());
    for (size_t round = 0; round < static_cast<size_t>(rounds); ++round) {
        for (size_t i = 0; i < contenders.size(); ++i) {
            const size_t turn = (round + i) % contenders.size();
            results[turn].push_back(contenders[turn]());
        }
    }
    return results;
}

Contender repeated(int times, const std::function<void()>& operation)
{
    return [=] {
        const double start = nanoseconds();
        for (int i = 0; i < times; ++i)
            operation();
        return (nanoseconds() - start) / times;
    };
}

double nanoseconds()
{
    using namespace std::chrono;
    return static_cast<double>(
        duration_cast<std::chrono::nanoseconds>(steady_clock::now().time_since_epoch()).count());
}
