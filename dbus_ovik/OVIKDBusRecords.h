#pragma once

#include "IProxy/OVIKPlatformRecords.h"

#include <QDBusArgument>

// The platform's records on D-Bus: a structure of the fields, in their order.
//
// A fixed byte field is sent at its declared length and not cut at a zero byte. Reading a shorter
// value clears the rest of the field; excess bytes are dropped.

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
