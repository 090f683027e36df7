#include "panel_sim/sim_records.h"

#include <QByteArray>

#include <algorithm>
#include <cstring>

namespace
{
QByteArray bytes(const quint8 (&field)[16])
{
    return QByteArray(reinterpret_cast<const char*>(field), sizeof(field));
}

void assign(quint8 (&field)[16], const QByteArray& received)
{
    memset(field, 0, sizeof(field));
    memcpy(field, received.constData(), std::min(sizeof(field), size_t(received.size())));
}
} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const splashImageInfo& record)
{
    argument.beginStructure();
    argument << record.x << record.y;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, splashImageInfo& record)
{
    argument.beginStructure();
    argument >> record.x >> record.y;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const sSEEModule& record)
{
    argument.beginStructure();
    argument << bytes(record.Name) << record.Hcode << record.Hsubcode << record.Xcode
             << record.Xsubcode << bytes(record.FunctArea);
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, sSEEModule& record)
{
    QByteArray name;
    QByteArray functArea;
    argument.beginStructure();
    argument >> name >> record.Hcode >> record.Hsubcode >> record.Xcode >> record.Xsubcode >>
        functArea;
    argument.endStructure();
    assign(record.Name, name);
    assign(record.FunctArea, functArea);
    return argument;
}
