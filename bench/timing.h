#pragma once

#include <functional>
#include <vector>

/// One figure per round.
using Samples = std::vector<double>;

/// The value below which @p share of @p samples lie: 0.5 for the median. Throws without samples.
double quantile(Samples samples, double share);
inline double median(const Samples& samples) { return quantile(samples, 0.5); }

/// Divides round by round, since a slow phase of the machine affects both sides of a round.
Samples quotients(const Samples& numerators, const Samples& denominators);

/// Does some work. @return the ns per operation
using Contender = std::function<double()>;

/// A contender; each call of @p work does @p operations operations.
Contender timed(int operations, const std::function<void()>& work);
Contender repeated(int times, const std::function<void()>& operation);

/// Runs each contender once per round; a different one starts each round. There is no warm-up
/// round, since one cold round of many hardly changes the median.
std::vector<Samples> alternate(int rounds, const std::vector<Contender>& contenders);

/// The monotonic clock in ns.
double nanoseconds();
