#pragma once

#include <functional>
#include <string>
#include <vector>

/// One figure per round.
using Rounds = std::vector<double>;

/// The value that a share of @p values is below: 0.5 for the median. Throws when there are none.
double quantile(Rounds values, double share);
inline double median(const Rounds& values) { return quantile(values, 0.5); }

/// By round, so that what slows the machine down for a while counts for both.
Rounds quotients(const Rounds& numerators, const Rounds& denominators);

/// Does so much work and tells the ns that one operation took.
using Contender = std::function<double()>;

/// Runs each of @p contenders once a round, each round beginning with another; one Rounds for each.
/// No round is dropped as a warm-up: a cold first one of many hardly moves the medians.
std::vector<Rounds> interleave(int rounds, const std::vector<Contender>& contenders);

/// A contender that does @p operation so many times.
Contender repeated(int times, const std::function<void()>& operation);

/// ns of the monotonic clock.
double nanoseconds();
