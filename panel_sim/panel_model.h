#pragma once

#include "panel_sim/panel_state.h"

#include <QObject>
#include <QSet>
#include <map>

namespace sim
{

/// A simulated panel: its whole state and operations, independent of the D-Bus service and the
/// library that offer it.
class Panel : public QObject
{
    Q_OBJECT

public:
    /// Slots are numbered from 0 to slotCount - 1.
    static constexpr int slotCount = 4;

    /// @param pluginSlots the slots with a plug-in module
    /// @param commandDelay duration of a service command, in ms
    Panel(const QSet<int>& pluginSlots, int commandDelay, QObject* parent = nullptr);

    const systemInfo& identity() const { return m_identity; }
    const partitionInfo& mainOs() const { return m_mainOs; }
    const splashImageInfo& splashImage() const { return m_splashImage; }

    const Buzzer& buzzer() const { return m_buzzer; }
    int setBuzzer(int Buzzer::*setting, int value);

    const Backlight& backlight() const { return m_backlight; }
    int setBrightness(int level);
    int saveBrightness(int level);
    int setBacklightTimeout(const QString& display, int value);

    int systemSeconds() const { return m_systemCounter.seconds(); }
    int backlightSeconds() const { return m_backlightCounter.seconds(); }
    /// Clears counters. @param which bits: 1 the system's counter, 2 the backlight's
    int clearCounters(int which);

    int orientation() const { return m_orientation; }
    int setOrientation(int degrees);

    const Parameters& systemParameters() const { return m_systemParameters; }
    const Parameters& volatileParameters() const { return m_volatileParameters; }
    int setSystemParameter(const QString& name, const QString& value);
    int setVolatileParameter(const QString& name, const QString& value);
    /// Sets one parameter for each member of the JSON object, under the member's name or, when
    /// @p key is not empty, under "key.name".
    int setSystemParameters(const QString& key, const QString& json);

    Memory& eeprom() { return m_eeprom; }
    /// Null when there is no slave at @p address.
    Memory* eepromSlave(int address);

    Network& network() { return m_network; }
    int applyNetwork();

    const std::vector<Storage>& storages() const { return m_storages; }
    quint64 availableMemory() const { return quint64(192) << 20; }

    /// Null when there is no such service.
    const Service* service(const QString& name) const;
    int changeService(const QString& name, int (Service::*change)());
    /// Starts a command of a service; commandFinished() reports the result.
    int command(const QString& service, const QString& name, const QString& options);

    QList<int> pluginSlots() const;
    /// Null when the slot is empty.
    Plugin* plugin(int slot);
    int setLed(int slot, uint id, int Led::*setting, int value);
    int setLedMode(int slot, uint id, int mode);
    int lightLed(int slot, uint id, uint value);
    /// Lights the LED for @p time milliseconds, then switches it off.
    int flashLed(int slot, uint id, uint value, int time);
    int blinkLed(int slot, uint id, uint value, int onTime, int offTime);
    int setIoMode(int slot, uint id, int mode);
    int writeIo(int slot, uint id, const QByteArray& values);

    const timeZoneInfo& timeZone() const { return m_timeZone; }
    void setTimeZone(const timeZoneInfo& timeZone) { m_timeZone = timeZone; }

    /// The near-field tag on the reader: its bytes and its JSON text.
    const Memory& tag() const { return m_tag; }
    const QString& tagJson() const { return m_tagJson; }
    int writeTag(int offset, const QByteArray& data);
    int writeTagJson(const QString& json);

Q_SIGNALS:
    /// Anything but the parameters and the tag has changed.
    void changed();
    void ledsChanged(int slot);
    void systemParameterChanged(const QString& name, const QString& value);
    void volatileParameterChanged(const QString& name, const QString& value);
    void commandFinished(const QString& service, const QString& name, const QString& json);
    void tagChanged();
    void tagJsonChanged(const QString& json);

private:
    /// Emits changed() when @p result is Done. @return @p result
    int told(int result);
    int toldLeds(int slot, int result);
    Led* settableLed(int slot, uint id);

    const int m_commandDelay;

    const systemInfo m_identity;
    const partitionInfo m_mainOs;
    const splashImageInfo m_splashImage{40, 24};
    const std::vector<Storage> m_storages;

    Buzzer m_buzzer;
    Backlight m_backlight;
    Counter m_systemCounter{1000 * 3600};
    Counter m_backlightCounter{700 * 3600};
    int m_orientation = 0;
    Parameters m_systemParameters;
    Parameters m_volatileParameters;
    Memory m_eeprom;
    std::map<int, Memory> m_eepromSlaves;
    Network m_network;
    QMap<QString, Service> m_services;
    std::map<int, Plugin> m_plugins;
    timeZoneInfo m_timeZone;
    Memory m_tag;
    QString m_tagJson = QStringLiteral("{}");
};

} // namespace sim
