#pragma once

#include <random>
#include <vector>

/// Every decision of a run, repeatable by its seed.
class Random
{
public:
    explicit Random(unsigned int seed) : m_engine(seed) {}

    /// 0 to below @p end.
    size_t below(size_t end) { return m_engine() % end; }
    int between(int first, int last)
    {
        return first + static_cast<int>(below(static_cast<size_t>(last - first) + 1));
    }
    bool chance(int percent) { return between(1, 100) <= percent; }

    template <class Container>
    const auto& pick(const Container& choices)
    {
        return *(std::begin(choices) + static_cast<std::ptrdiff_t>(below(std::size(choices))));
    }

    template <class Value>
    void shuffle(std::vector<Value>& values)
    {
        for (size_t left = values.size(); left > 1; --left)
            std::swap(values[left - 1], values[below(left)]);
    }

private:
    std::mt19937 m_engine;
};
