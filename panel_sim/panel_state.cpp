#include "panel_sim/panel_state.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cstring>

namespace sim
{

namespace
{
constexpr int pointsPerPlugin = 8;

template <class Point>
std::vector<Point> fixedAndSettableInTurn()
{
    std::vector<Point> points;
    points.reserve(pointsPerPlugin);
    for (int index = 0; index < pointsPerPlugin; ++index)
        points.push_back(Point{index % 2 == 0 ? Fixed : Settable});
    return points;
}

template <class Point>
int changeMode(std::vector<Point>& points, uint id, int mode)
{
    if (id >= points.size() || (mode != Fixed && mode != Settable))
        return Refused;
    points[id].mode = mode;
    return Done;
}

/// Writes as much of @p text as fits and keeps the zero byte at the end.
template <class Byte, size_t length>
void fill(Byte (&field)[length], const QByteArray& text)
{
    memcpy(field, text.constData(), std::min(length - 1, size_t(text.size())));
}
} // namespace

bool readJson(const QString& text, QJsonObject& object)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    object = document.object();
    return document.isObject();
}

QString writeJson(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

Memory::Memory(int first) : m_cells(size, '\0')
{
    for (int address = 0; address < size; ++address)
        m_cells[address] = static_cast<char>(first + address);
}

QByteArray Memory::read(int address, uint length) const
{
    return m_cells.mid(address, static_cast<int>(std::min(length, uint(size))));
}

int Memory::write(int address, const QByteArray& data)
{
    if (address + data.size() > size)
        return Refused;
    m_cells.replace(address, data.size(), data);
    return Done;
}

QString Parameters::json() const
{
    QJsonObject object;
    for (auto it = m_values.begin(); it != m_values.end(); ++it)
        object[it.key()] = it.value();
    return writeJson(object);
}

Network::Network()
    : m_current{{"hostname", "panel"},
                {"dns", QJsonObject{{"servers", QJsonArray{"192.0.2.53"}}}},
                {"interfaces",
                 QJsonObject{
                     {"eth0", QJsonObject{{"mode", "static"},
                                          {"address", "192.0.2.10"},
                                          {"netmask", "255.255.255.0"},
                                          {"gateway", "192.0.2.1"}}},
                     {"eth1", QJsonObject{{"mode", "dhcp"}}},
                     {"wlan0", QJsonObject{{"mode", "dhcp"}, {"ssid", ""}}},
                 }}},
      m_prepared(m_current)
{
}

QString Network::json(const QString& key) const
{
    return writeJson(key.isEmpty() ? m_current : QJsonObject{{key, m_current[key]}});
}

QString Network::interfaceJson(const QString& interface) const
{
    const QJsonValue config = m_current["interfaces"][interface];
    return config.isObject() ? writeJson(config.toObject()) : QString();
}

int Network::prepareInterface(const QString& interface, const QString& config)
{
    QJsonObject object;
    QJsonObject interfaces = m_prepared["interfaces"].toObject();
    if (!interfaces.contains(interface) || !readJson(config, object))
        return Refused;
    interfaces[interface] = object;
    m_prepared["interfaces"] = interfaces;
    return Done;
}

int Network::prepare(const QString& config, const QString& key)
{
    QJsonObject object;
    if (!readJson(config, object) || (!key.isEmpty() && !object.contains(key)))
        return Refused;
    const QStringList keys = key.isEmpty() ? object.keys() : QStringList{key};
    for (const QString& name : keys)
        m_prepared[name] = object[name];
    return Done;
}

ovikStorageInfo Storage::record() const
{
    ovikStorageInfo record{};
    fill(record.mountPoint, mountPoint.toUtf8());
    record.deviceType = deviceType;
    record.totalSpace = totalSpace;
    record.freeSpace = freeSpace;
    record.accessFlag = accessFlag;
    return record;
}

QJsonObject Storage::json() const
{
    return {{"name", name},
            {"mountPoint", mountPoint},
            {"deviceType", deviceType},
            {"totalSpace", double(totalSpace)},
            {"freeSpace", double(freeSpace)},
            {"accessFlag", double(accessFlag)}};
}

int Service::start()
{
    running = true;
    return Done;
}

int Service::stop()
{
    running = false;
    return Done;
}

int Service::enable()
{
    enabled = true;
    return Done;
}

int Service::disable()
{
    enabled = false;
    return Done;
}

Plugin::Plugin(int slot)
    : leds(fixedAndSettableInTurn<Led>()), ios(fixedAndSettableInTurn<IoPoint>())
{
    sSEEModule module{};
    fill(module.Name, "SIM-IO8-" + QByteArray::number(slot));
    module.Hcode = 0x21;
    module.Hsubcode = 0x01;
    module.Xcode = 0x42;
    module.Xsubcode = static_cast<quint8>(slot);
    fill(module.FunctArea, "8 LED, 8 I/O");
    eeprom.write(0, QByteArray(reinterpret_cast<const char*>(&module), sizeof(module)));
}

sSEEModule Plugin::signature() const
{
    sSEEModule module;
    memcpy(&module, eeprom.read(0, sizeof(module)).constData(), sizeof(module));
    return module;
}

Led* Plugin::settableLed(uint id)
{
    return id < leds.size() && leds[id].mode == Settable ? &leds[id] : nullptr;
}

int Plugin::setLedMode(uint id, int mode) { return changeMode(leds, id, mode); }

int Plugin::setIoMode(uint id, int mode) { return changeMode(ios, id, mode); }

QByteArray Plugin::readIo(uint id, uint count) const
{
    QByteArray values;
    for (uint index = id; index < ios.size() && index - id < count; ++index)
        values.append(ios[index].on ? '1' : '0');
    return values;
}

int Plugin::writeIo(uint id, const QByteArray& values)
{
    const auto count = static_cast<size_t>(values.size());
    if (id >= ios.size() || count == 0 || count > ios.size() - id)
        return Refused;

    std::vector<IoPoint> written = ios;
    for (size_t index = 0; index < count; ++index) {
        IoPoint& point = written[id + index];
        const char value = values[static_cast<int>(index)];
        if (point.mode != Settable || (value != '0' && value != '1'))
            return Refused;
        point.on = value == '1';
    }
    ios = written;
    return Done;
}

} // namespace sim
