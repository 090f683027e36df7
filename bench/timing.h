#pragma once

#include <functional>
#include <vector>

/// One figure per round.
using Samples = std::vector<double>;

/// The value below which a share of @p samples lies: 0.5 for the median. Throws when there are
/// none.
double quantile(Samples samples, double share);
inline double median(const Samples& samples) { return quantile(samples, 0.5); }

/// Divides round by round, because both sides of a round were slowed down alike.
Samples quotients(const Samples& numerators, const Samples& denominators);

/// Does some work and returns the ns that one operation took.
using Contender = std::function<double()>;

/// A contender whose @p work does so many operations.
Contender timed(int operations, const std::function<void()>& work);
/// A contender that does @p operation so many times.
Contender repeated(int times, const std::function<void()>& operation);

/// Runs each of @p contenders once per round; each round begins with another one. The first round
/// is no warm-up: one cold round of many hardly changes the median.
std::vector<Samples> alternate(int rounds, const std::vector<Contender>& contenders);

/// The monotonic clock in ns.
double nanoseconds();
