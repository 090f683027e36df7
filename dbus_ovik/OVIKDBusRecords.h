#pragma once

#include "IProxy/OVIKPlatformRecords.h"

#include <QDBusArgument>

// How the platform's records travel over D-Bus: a structure of the fields in their order.
//
// A fixed byte field is sent whole, at its declared length and not cut at a zero byte. Reading
// takes what arrived, at most the field, and clears the rest of it.

QDBusArgument& operator<<(QDBusArgument& argument, const systemInfo& record);
const QDBusArgument& operator>>(const QDBusArgument& argument, systemInfo& record);

QDBusArgument& operator<<(QDBusArgument& argument, const bootldrInfo& record);
const QDBusArgument& operator>>(const QDBusArgument& argument, bootldrInfo& record);

QDBusArgument& operator<<(QDBusArgument& argument, const ovikStorageInfo& record);
const QDBusArgument& operator>>(const QDBusArgument& argument, ovikStorageInfo& record);

QDBusArgument& operator<<(QDBusArgument& argument, const timeZoneInfo& record);
const QDBusArgument& operator>>(const QDBusArgument& argument, timeZoneInfo& record);

QDBusArgument& operator<<(QDBusArgument& argument, const accelerometerAxisData& record);
const QDBusArgument& operator>>(const QDBusArgument& argument, accelerometerAxisData& record);

QDBusArgument& operator<<(QDBusArgument& argument, const accelerometerAngleData& record);
const QDBusArgument& operator>>(const QDBusArgument& argument, accelerometerAngleData& record);
