#include "dbus_ovik/OVIKDBusRecords.h"

#include <QByteArray>

#include <algorithm>
#include <cstring>

namespace
{
template <class Byte, int length>
QByteArray bytes(const Byte (&field)[length])
{
    return QByteArray(reinterpret_cast<const char*>(field), length);
}

/// A fixed byte field as the target of a read.
template <class Byte, size_t length>
struct Field {
    Byte (&bytes)[length];
};

template <class Byte, size_t length>
Field<Byte, length> into(Byte (&bytes)[length])
{
    return {bytes};
}

template <class Byte, size_t length>
const QDBusArgument& operator>>(const QDBusArgument& argument, Field<Byte, length> field)
{
    QByteArray received;
    argument >> received;
    memset(field.bytes, 0, length);
    memcpy(field.bytes, received.constData(), std::min(length, size_t(received.size())));
    return argument;
}
} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const systemInfo& record)
{
    argument.beginStructure();
    argument << record.day << record.month << record.year << bytes(record.serialNo)
             << bytes(record.moduleName) << record.hwCode << record.hwSubCode
             << bytes(record.manufactureCode) << record.hwDispID;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, systemInfo& record)
{
    argument.beginStructure();
    argument >> record.day >> record.month >> record.year >> into(record.serialNo) >>
        into(record.moduleName) >> record.hwCode >> record.hwSubCode >>
        into(record.manufactureCode) >> record.hwDispID;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const bootldrInfo& record)
{
    argument.beginStructure();
    argument << record.type << record.day << record.month << record.year << bytes(record.version);
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, bootldrInfo& record)
{
    argument.beginStructure();
    argument >> record.type >> record.day >> record.month >> record.year >> into(record.version);
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const ovikStorageInfo& record)
{
    argument.beginStructure();
    argument << bytes(record.mountPoint) << record.deviceType << record.totalSpace
             << record.freeSpace << record.accessFlag;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ovikStorageInfo& record)
{
    argument.beginStructure();
    argument >> into(record.mountPoint) >> record.deviceType >> record.totalSpace >>
        record.freeSpace >> record.accessFlag;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const timeZoneInfo& record)
{
    argument.beginStructure();
    argument << record.stdMonth << record.stdWeek << record.stdDay << record.stdHour
             << record.stdMinute << record.stdOffset << record.dlsMonth << record.dlsWeek
             << record.dlsDay << record.dlsHour << record.dlsMinute << record.dlsOffset
             << record.mode;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, timeZoneInfo& record)
{
    argument.beginStructure();
    argument >> record.stdMonth >> record.stdWeek >> record.stdDay >> record.stdHour >>
        record.stdMinute >> record.stdOffset >> record.dlsMonth >> record.dlsWeek >>
        record.dlsDay >> record.dlsHour >> record.dlsMinute >> record.dlsOffset >> record.mode;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const accelerometerAxisData& record)
{
    argument.beginStructure();
    argument << record.accel_x << record.accel_y << record.accel_z;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, accelerometerAxisData& record)
{
    argument.beginStructure();
    argument >> record.accel_x >> record.accel_y >> record.accel_z;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const accelerometerAngleData& record)
{
    argument.beginStructure();
    argument << record.angle_xy << record.angle_xz << record.angle_yz;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, accelerometerAngleData& record)
{
    argument.beginStructure();
    argument >> record.angle_xy >> record.angle_xz >> record.angle_yz;
    argument.endStructure();
    return argument;
}
