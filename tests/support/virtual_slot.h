#pragma once

#include <gtest/gtest.h>

#include <QObject>

#include <cstddef>
#include <cstring>

/// Place of a virtual operation in its table, read out of the member pointer's own encoding.
template <typename MemberFunction>
std::size_t virtualSlot(MemberFunction member)
{
    struct {
        std::size_t pointer;
        std::size_t adjustment;
    } parts;
    static_assert(sizeof(parts) == sizeof(member), "member pointers have two words");
    std::memcpy(&parts, &member, sizeof(parts));
#if defined(__arm__) || defined(__aarch64__)
    EXPECT_EQ(parts.adjustment & 1U, 1U) << "not virtual";
    return parts.pointer / sizeof(void*);
#else
    EXPECT_EQ(parts.pointer & 1U, 1U) << "not virtual";
    return (parts.pointer - 1U) / sizeof(void*);
#endif
}

/// Knows the place behind QObject's own operations.
struct ObjectBase : QObject {
    static std::size_t slotAfter() { return virtualSlot(&ObjectBase::disconnectNotify) + 1; }
};
