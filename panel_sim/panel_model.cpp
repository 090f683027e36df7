#include "panel_sim/panel_model.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>
#include <QVariant>

#include <cstring>

namespace sim
{

namespace
{
constexpr int firstEepromSlave = 0x50;
constexpr int lastEepromSlave = 0x57;

constexpr quint64 MiB = quint64(1) << 20;

partitionInfo release()
{
    partitionInfo info{1, 14, 3, 24, {}};
    memcpy(info.version, "1.4.2", 5);
    return info;
}

/// Central European time: the last Sundays of October and March, offsets in minutes.
constexpr timeZoneInfo startTimeZone{10, 5, 0, 3, 0, 60, 3, 5, 0, 2, 0, 120, 1};

const QMap<QString, QString> startParameters{
    {"language", "en"}, {"keyboard", "us"}, {"timezone", "CET"}, {"screensaver", "off"}};

/// Enabled, running, controlled, with commands.
const QMap<QString, Service> startServices{
    {"wifi", {true, true, true, true}},   //
    {"ssh", {true, true, true, false}},   //
    {"vnc", {false, false, true, false}}, //
    {"ntp", {true, true, true, false}},   //
    {"logger", {true, true, false, false}},
};

QJsonObject wifiNetwork(const QString& ssid, const QString& bssid, int signal,
                        const QString& security)
{
    return {{"ssid", ssid}, {"bssid", bssid}, {"signal", signal}, {"security", security}};
}

QJsonArray wifiNetworks()
{
    return {wifiNetwork("workshop", "02:00:00:00:00:01", -48, "wpa2"),
            wifiNetwork("office", "02:00:00:00:00:02", -67, "wpa2"),
            wifiNetwork("guest", "02:00:00:00:00:03", -80, "open")};
}

/// Converts a JSON value to the text of a parameter.
QString parameterText(const QJsonValue& value)
{
    if (value.isObject() || value.isArray())
        return QJsonDocument::fromVariant(value.toVariant()).toJson(QJsonDocument::Compact);
    return value.toVariant().toString();
}
} // namespace

Panel::Panel(const QSet<int>& pluginSlots, int commandDelay, QObject* parent)
    : QObject(parent), m_commandDelay(commandDelay),
      m_identity{14, 3, 24, {0x01, 0x23, 0x45}, {'P', 'A', 'N', 'E', 'L'}, 7, 2, {'W', 'N'}, 10},
      m_mainOs(release()),
      m_storages{{"internal", "/mnt/data", 1, 4096 * MiB, 3000 * MiB, 3, false},
                 {"usb", "/mnt/usb", 2, 16384 * MiB, 12000 * MiB, 3, true},
                 {"sdcard", "/mnt/sdcard", 3, 8192 * MiB, 8000 * MiB, 1, true}},
      m_systemParameters(startParameters), m_services(startServices), m_timeZone(startTimeZone)
{
    m_eeprom.write(0, QByteArray(reinterpret_cast<const char*>(&m_identity), sizeof(m_identity)));
    for (int address = firstEepromSlave; address <= lastEepromSlave; ++address)
        m_eepromSlaves.emplace(address, Memory(address));
    for (int slot : pluginSlots)
        m_plugins.emplace(slot, Plugin(slot));
}

int Panel::told(int result)
{
    if (result == Done)
        emit changed();
    return result;
}

int Panel::setBuzzer(int Buzzer::*setting, int value)
{
    if (value < 0)
        return Refused;
    m_buzzer.*setting = value;
    return told(Done);
}

int Panel::setBrightness(int level)
{
    if (level < 0 || level > Backlight::highest)
        return Refused;
    m_backlight.level = level;
    return told(Done);
}

int Panel::saveBrightness(int level)
{
    if (level < 0 || level > Backlight::highest)
        return Refused;
    m_backlight.saved = level;
    return setBrightness(level);
}

int Panel::setBacklightTimeout(const QString& display, int value)
{
    if (value < 0)
        return Refused;
    m_backlight.timeouts[display] = value;
    return told(Done);
}

int Panel::clearCounters(int which)
{
    if (which < 1 || which > 3)
        return Refused;
    if (which & 1)
        m_systemCounter.clear();
    if (which & 2)
        m_backlightCounter.clear();
    return told(Done);
}

int Panel::setOrientation(int degrees)
{
    if (degrees < 0 || degrees >= 360 || degrees % 90 != 0)
        return Refused;
    m_orientation = degrees;
    return told(Done);
}

int Panel::setSystemParameter(const QString& name, const QString& value)
{
    m_systemParameters.set(name, value);
    emit systemParameterChanged(name, value);
    return Done;
}

int Panel::setVolatileParameter(const QString& name, const QString& value)
{
    m_volatileParameters.set(name, value);
    emit volatileParameterChanged(name, value);
    return Done;
}

int Panel::setSystemParameters(const QString& key, const QString& json)
{
    QJsonObject members;
    if (!readJson(json, members))
        return Refused;
    const QString prefix = key.isEmpty() ? QString() : key + '.';
    for (auto it = members.constBegin(); it != members.constEnd(); ++it)
        setSystemParameter(prefix + it.key(), parameterText(it.value()));
    return Done;
}

Memory* Panel::eepromSlave(int address)
{
    const auto found = m_eepromSlaves.find(address);
    return found == m_eepromSlaves.end() ? nullptr : &found->second;
}

int Panel::applyNetwork()
{
    m_network.apply();
    return told(Done);
}

const Service* Panel::service(const QString& name) const
{
    const auto found = m_services.find(name);
    return found == m_services.end() ? nullptr : &*found;
}

int Panel::changeService(const QString& name, int (Service::*change)())
{
    const auto found = m_services.find(name);
    if (found == m_services.end() || !found->controlled)
        return Refused;
    return told(((*found).*change)());
}

int Panel::command(const QString& service, const QString& name, const QString& options)
{
    const auto found = m_services.find(service);
    if (found == m_services.end() || !found->hasCommands)
        return Refused;

    QJsonObject result{{"command", name}, {"options", options}, {"result", Done}};
    if (name == "scan")
        result["networks"] = wifiNetworks();
    QTimer::singleShot(m_commandDelay, this, [this, service, name, json = writeJson(result)] {
        emit commandFinished(service, name, json);
    });
    return Done;
}

QList<int> Panel::pluginSlots() const
{
    QList<int> numbers;
    for (const auto& plugin : m_plugins)
        numbers.append(plugin.first);
    return numbers;
}

Plugin* Panel::plugin(int slot)
{
    const auto found = m_plugins.find(slot);
    return found == m_plugins.end() ? nullptr : &found->second;
}

int Panel::toldLeds(int slot, int result)
{
    if (result == Done)
        emit ledsChanged(slot);
    return told(result);
}

Led* Panel::settableLed(int slot, uint id)
{
    Plugin* module = plugin(slot);
    return module ? module->settableLed(id) : nullptr;
}

int Panel::setLed(int slot, uint id, int Led::*setting, int value)
{
    Led* led = settableLed(slot, id);
    if (!led || value < 0)
        return Refused;
    led->*setting = value;
    return toldLeds(slot, Done);
}

int Panel::setLedMode(int slot, uint id, int mode)
{
    Plugin* module = plugin(slot);
    return toldLeds(slot, module ? module->setLedMode(id, mode) : Refused);
}

int Panel::lightLed(int slot, uint id, uint value)
{
    Led* led = settableLed(slot, id);
    if (!led)
        return Refused;
    led->value = value;
    return toldLeds(slot, Done);
}

int Panel::flashLed(int slot, uint id, uint value, int time)
{
    if (time < 0 || lightLed(slot, id, value) == Refused)
        return Refused;
    QTimer::singleShot(time, this, [this, slot, id] { lightLed(slot, id, 0); });
    return Done;
}

int Panel::blinkLed(int slot, uint id, uint value, int onTime, int offTime)
{
    Led* led = settableLed(slot, id);
    if (!led || onTime < 0 || offTime < 0)
        return Refused;
    led->onTime = onTime;
    led->offTime = offTime;
    return lightLed(slot, id, value);
}

int Panel::setIoMode(int slot, uint id, int mode)
{
    Plugin* module = plugin(slot);
    return told(module ? module->setIoMode(id, mode) : Refused);
}

int Panel::writeIo(int slot, uint id, const QByteArray& values)
{
    Plugin* module = plugin(slot);
    return told(module ? module->writeIo(id, values) : Refused);
}

int Panel::writeTag(int offset, const QByteArray& data)
{
    const int result = m_tag.write(offset, data);
    if (result == Done)
        emit tagChanged();
    return result;
}

int Panel::writeTagJson(const QString& json)
{
    QJsonObject object;
    if (!readJson(json, object))
        return Refused;
    m_tagJson = json;
    emit tagJsonChanged(json);
    return Done;
}

} // namespace sim
