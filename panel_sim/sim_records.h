#pragma once

#include "IProxy/OVIKPlatformRecords.h"

#include <QDBusArgument>

// The D-Bus form of the records that only the panel sends; like dbus_ovik/OVIKDBusRecords.h.

QDBusArgument& operator<<(QDBusArgument& argument, const splashImageInfo& record);
const QDBusArgument& operator>>(const QDBusArgument& argument, splashImageInfo& record);

QDBusArgument& operator<<(QDBusArgument& argument, const sSEEModule& record);
const QDBusArgument& operator>>(const QDBusArgument& argument, sSEEModule& record);
