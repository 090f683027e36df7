#include "dbus_ovik/OVIKDBusRecords.h"

#include <QByteArray>

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace
{
template <class Field>
void transfer(QDBusArgument& argument, const Field& field)
{
    if constexpr (std::is_array_v<Field>)
        argument << QByteArray(reinterpret_cast<const char*>(field), int{sizeof(field)});
    else
        argument << field;
}

template <class Field>
void transfer(const QDBusArgument& argument, Field& field)
{
    if constexpr (std::is_array_v<Field>) {
        QByteArray received;
        argument >> received;
        memset(field, 0, sizeof(field));
        memcpy(field, received.constData(), std::min(sizeof(field), size_t(received.size())));
    } else {
        argument >> field;
    }
}

/// Writes or reads @p fields: QDBusArgument is const when it is read.
template <class Argument, class... Fields>
Argument& transferAll(Argument& argument, Fields&... fields)
{
    argument.beginStructure();
    (transfer(argument, fields), ...);
    argument.endStructure();
    return argument;
}
} // namespace

/// Both directions of a record. The arguments are its fields, in their order on the wire.
#define OVIK_DBUS_RECORD(Record, ...)                                                              \
    QDBusArgument& operator<<(QDBusArgument& argument, const Record& record)                       \
    {                                                                                              \
        return transferAll(argument, __VA_ARGS__);                                                 \
    }                                                                                              \
    const QDBusArgument& operator>>(const QDBusArgument& argument, Record& record)                 \
    {                                                                                              \
        return transferAll(argument, __VA_ARGS__);                                                 \
    }

OVIK_DBUS_RECORD(systemInfo, record.day, record.month, record.year, record.serialNo,
                 record.moduleName, record.hwCode, record.hwSubCode, record.manufactureCode,
                 record.hwDispID)

OVIK_DBUS_RECORD(bootldrInfo, record.type, record.day, record.month, record.year, record.version)

OVIK_DBUS_RECORD(ovikStorageInfo, record.mountPoint, record.deviceType, record.totalSpace,
                 record.freeSpace, record.accessFlag)

OVIK_DBUS_RECORD(timeZoneInfo, record.stdMonth, record.stdWeek, record.stdDay, record.stdHour,
                 record.stdMinute, record.stdOffset, record.dlsMonth, record.dlsWeek, record.dlsDay,
                 record.dlsHour, record.dlsMinute, record.dlsOffset, record.mode)

OVIK_DBUS_RECORD(accelerometerAxisData, record.accel_x, record.accel_y, record.accel_z)

OVIK_DBUS_RECORD(accelerometerAngleData, record.angle_xy, record.angle_xz, record.angle_yz)
