#pragma once

#include <iterator>
#include <random>

/// The source of all random decisions, repeatable by its seed.
class Random
{
public:
    explicit Random(unsigned int seed) : m_engine(seed) {}

    /// A number from 0 to @p end - 1.
    size_t below(size_t end) { return m_engine() % end; }
    int between(int first, int last)
    {
        return first + static_cast<int>(below(static_cast<size_t>(last - first) + 1));
    }
    bool chance(int percent) { return between(1, 100) <= percent; }

    template <class Container>
    const auto& pick(const Container& choices)
    {
        return *std::next(std::begin(choices),
                          static_cast<std::ptrdiff_t>(below(std::size(choices))));
    }

    std::mt19937& engine() { return m_engine; }

private:
    std::mt19937 m_engine;
};
