#include "panel_sim/platform_devices.h"

namespace
{
/// The EEPROM address of the software modules' flags: 8 in each byte, lowest bit first.
constexpr int flagArea = 0xE0;
constexpr uint flagCount = 8 * (sim::Memory::size - flagArea);
} // namespace

int SimSeeprom::read(uchar addr, uint length, QByteArray& data)
{
    data = m_panel.eeprom().read(addr, length);
    return sim::Done;
}

int SimSeeprom::write(uchar addr, const QByteArray& data)
{
    return m_panel.eeprom().write(addr, data);
}

int SimSeeprom::readSlvAddr(uchar slvAddr, uchar addr, uint length, QByteArray& data)
{
    const sim::Memory* slave = m_panel.eepromSlave(slvAddr);
    data = slave ? slave->read(addr, length) : QByteArray();
    return slave ? sim::Done : sim::Refused;
}

int SimSeeprom::writeSlvAddr(uchar slvAddr, uchar addr, const QByteArray& data)
{
    sim::Memory* slave = m_panel.eepromSlave(slvAddr);
    return slave ? slave->write(addr, data) : sim::Refused;
}

bool SimSeeprom::bitInSWModuleFlagArea(uint bitIndex)
{
    if (bitIndex >= flagCount)
        return false;
    const QByteArray byte = m_panel.eeprom().read(flagArea + static_cast<int>(bitIndex / 8), 1);
    return (byte[0] >> (bitIndex % 8)) & 1;
}

SimLeds::SimLeds(sim::Panel& panel, int slot, QObject* parent)
    : IPlatformLeds(parent), m_panel(panel), m_slot(slot)
{
    connect(&panel, &sim::Panel::ledsChanged, this, [this](int changedSlot) {
        if (changedSlot == m_slot)
            emit dataChanged(values());
    });
}

int SimLeds::maxLeds() const
{
    const sim::Plugin* plugin = m_panel.plugin(m_slot);
    return plugin ? static_cast<int>(plugin->leds.size()) : 0;
}

const sim::Led* SimLeds::led(uint id) const
{
    const sim::Plugin* plugin = m_panel.plugin(m_slot);
    return plugin ? plugin->led(id) : nullptr;
}

int SimLeds::get(uint id, int sim::Led::*setting) const
{
    const sim::Led* found = led(id);
    return found ? found->*setting : sim::Refused;
}

uint SimLeds::GetLedValue(uint ledId) const
{
    const sim::Led* found = led(ledId);
    return found ? found->value : 0;
}

QByteArray SimLeds::values() const
{
    QByteArray bytes;
    for (uint id = 0; led(id); ++id)
        bytes.append(static_cast<char>(led(id)->value));
    return bytes;
}

sensorData SimSensors::workingVoltage(int id)
{
    if (id != 0)
        return {0, false};
    return {24000, true};
}

QByteArray SimSensors::readGenericSensor(const QString& name)
{
    return name == "temperature" ? QByteArray::number(temperature().value) : QByteArray();
}

int SimSensors::maxIos()
{
    const sim::Plugin* plugin = m_panel.plugin(m_slot);
    return plugin ? static_cast<int>(plugin->ios.size()) : 0;
}

int SimSensors::getIoMode(uint ioid)
{
    const sim::Plugin* plugin = m_panel.plugin(m_slot);
    const sim::IoPoint* point = plugin ? plugin->io(ioid) : nullptr;
    return point ? point->mode : sim::Refused;
}

QByteArray SimSensors::readIo(uint ioId, uint length)
{
    const sim::Plugin* plugin = m_panel.plugin(m_slot);
    return plugin ? plugin->readIo(ioId, length) : QByteArray();
}

SimNfcReader::SimNfcReader(sim::Panel& panel, QObject* parent) : INFCReader(parent), m_panel(panel)
{
    connect(&panel, &sim::Panel::tagChanged, this,
            [this] { emit dataChanged(read(sim::Memory::size, 0)); });
    connect(&panel, &sim::Panel::tagJsonChanged, this, &SimNfcReader::notifyJSON);
}

QByteArray SimNfcReader::read(uint len, uint offset)
{
    if (offset >= sim::Memory::size)
        return {};
    return m_panel.tag().read(static_cast<int>(offset), len);
}

int SimNfcReader::write(const QByteArray& ba, uint offset)
{
    if (offset >= sim::Memory::size)
        return sim::Refused;
    return m_panel.writeTag(static_cast<int>(offset), ba);
}

int SimNfcReader::readJSON(QString& json)
{
    json = m_panel.tagJson();
    return sim::Done;
}
