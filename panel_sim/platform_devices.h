#pragma once

#include "IProxy/OVIKPlatformDevices.h"
#include "panel_sim/panel_model.h"

// The devices of the simulated panel.
//
// An operation that neither the D-Bus service nor the library offers is not simulated: it returns
// sim::Refused or an empty value. Such operations come last in their class.

class SimBuzzer : public IBuzzer
{
    Q_OBJECT

public:
    explicit SimBuzzer(sim::Panel& panel, QObject* parent = nullptr)
        : IBuzzer(parent), m_panel(panel)
    {
    }

    int beep(int freq, int time) override
    {
        return freq < 0 || time < 0 ? sim::Refused : sim::Done;
    }
    int SetBuzzerMode(int mode) override { return m_panel.setBuzzer(&sim::Buzzer::mode, mode); }
    int GetBuzzerMode() override { return m_panel.buzzer().mode; }
    int SetBuzzerUserControl(int control) override
    {
        return m_panel.setBuzzer(&sim::Buzzer::userControl, control);
    }
    int GetBuzzerUserControl() override { return m_panel.buzzer().userControl; }
    int SetBuzzerOnTime(int time) override { return m_panel.setBuzzer(&sim::Buzzer::onTime, time); }
    int SetBuzzerOffTime(int time) override
    {
        return m_panel.setBuzzer(&sim::Buzzer::offTime, time);
    }
    int GetBuzzerOnTime() override { return m_panel.buzzer().onTime; }
    int GetBuzzerOffTime() override { return m_panel.buzzer().offTime; }
    int SetBuzzerFrequency(int freq) override
    {
        return m_panel.setBuzzer(&sim::Buzzer::frequency, freq);
    }
    int GetBuzzerFrequency() override { return m_panel.buzzer().frequency; }

private:
    sim::Panel& m_panel;
};

class SimBacklight : public IBacklight
{
    Q_OBJECT

public:
    explicit SimBacklight(sim::Panel& panel, QObject* parent = nullptr)
        : IBacklight(parent), m_panel(panel)
    {
    }

    int setBacklightTimeout(const QString& displayName, int value) override
    {
        return m_panel.setBacklightTimeout(displayName, value);
    }
    int backlightTimeout(const QString& displayName) override
    {
        return m_panel.backlight().timeouts.value(displayName, 0);
    }
    int setBrightness(int value) override { return m_panel.setBrightness(value); }
    int saveBrightness(int value) override { return m_panel.saveBrightness(value); }
    int getBrightness() override { return m_panel.backlight().level; }
    /// Restores the saved level.
    int syncBrightness() override { return m_panel.setBrightness(m_panel.backlight().saved); }
    int offBrightness() override { return m_panel.setBrightness(0); }

    // Not simulated.
    int DPMSOn() override { return sim::Refused; }
    int DPMSOff() override { return sim::Refused; }
    void stateNotification(const QString&, int) override {}
    int state(const QString&) override { return sim::Refused; }

private:
    sim::Panel& m_panel;
};

/// Operations on an unknown slave address are refused and return no data.
class SimSeeprom : public II2CSEEPROM
{
    Q_OBJECT

public:
    explicit SimSeeprom(sim::Panel& panel, QObject* parent = nullptr)
        : II2CSEEPROM(parent), m_panel(panel)
    {
    }

    int read(uchar addr, uint length, QByteArray& data) override;
    int write(uchar addr, const QByteArray& data) override;
    int readSlvAddr(uchar slvAddr, uchar addr, uint length, QByteArray& data) override;
    int writeSlvAddr(uchar slvAddr, uchar addr, const QByteArray& data) override;
    bool bitInSWModuleFlagArea(uint bitIndex) override;

    // Not simulated.
    int getSerialNumber(QByteArray&) override { return sim::Refused; }
    int writeSerialNumber(const QByteArray&) override { return sim::Refused; }
    int getCustomerSerialNumber(QByteArray&) override { return sim::Refused; }
    int writeCustomerSerialNumber(const QByteArray&) override { return sim::Refused; }

private:
    sim::Panel& m_panel;
};

/// The LEDs of the plug-in module in one slot.
class SimLeds : public IPlatformLeds
{
    Q_OBJECT

public:
    SimLeds(sim::Panel& panel, int slot, QObject* parent = nullptr);

    int maxLeds() const override;
    int flash(uint ledId, uint value, int time) override
    {
        return m_panel.flashLed(m_slot, ledId, value, time);
    }
    int blink(uint ledId, uint value, int onTime, int offTime) override
    {
        return m_panel.blinkLed(m_slot, ledId, value, onTime, offTime);
    }
    int SetLedMode(uint ledId, int mode) override
    {
        return m_panel.setLedMode(m_slot, ledId, mode);
    }
    int GetLedMode(uint ledId) const override { return get(ledId, &sim::Led::mode); }
    int SetLedUserControl(uint ledId, int control) override
    {
        return m_panel.setLed(m_slot, ledId, &sim::Led::userControl, control);
    }
    int GetLedUserControl(uint ledId) const override { return get(ledId, &sim::Led::userControl); }
    int SetLedOnTime(uint ledId, int time) override
    {
        return m_panel.setLed(m_slot, ledId, &sim::Led::onTime, time);
    }
    int SetLedOffTime(uint ledId, int time) override
    {
        return m_panel.setLed(m_slot, ledId, &sim::Led::offTime, time);
    }
    int GetLedOnTime(uint ledId) const override { return get(ledId, &sim::Led::onTime); }
    int GetLedOffTime(uint ledId) const override { return get(ledId, &sim::Led::offTime); }
    int SetLedValue(uint ledId, uint value) override
    {
        return m_panel.lightLed(m_slot, ledId, value);
    }
    uint GetLedValue(uint ledId) const override;

Q_SIGNALS:
    /// Sends the values of all LEDs, one byte each.
    void dataChanged(const QByteArray& data);

private:
    const sim::Led* led(uint id) const;
    int get(uint id, int sim::Led::*setting) const;
    QByteArray values() const;

    sim::Panel& m_panel;
    const int m_slot;
};

/// The sensors and I/O points of the plug-in module in one slot.
class SimSensors : public IPlatformSensors
{
    Q_OBJECT

public:
    SimSensors(sim::Panel& panel, int slot, QObject* parent = nullptr)
        : IPlatformSensors(parent), m_panel(panel), m_slot(slot)
    {
    }

    sensorData battery() override { return {3050, true}; }
    accelAxisData accelerometerAxis() override { return {{0.0, 0.0, 9.81}, true}; }
    accelAngleData accelerometerAngle() override { return {{0.0, 90.0, 90.0}, true}; }
    sensorData absorbedCurrent() override { return {420, true}; }
    sensorData workingVoltage(int id) override;
    sensorData pressure() override { return {1013, true}; }
    sensorData temperature() override { return {31, true}; }
    sensorData humidity() override { return {45, true}; }
    QByteArray readGenericSensor(const QString& name) override;
    int maxIos() override;
    int setIoMode(uint ioId, int mode) override { return m_panel.setIoMode(m_slot, ioId, mode); }
    int getIoMode(uint ioid) override;
    QByteArray readIo(uint ioId, uint length) override;
    int writeIo(uint ioId, const QByteArray& data) override
    {
        return m_panel.writeIo(m_slot, ioId, data);
    }
    sensorData illuminance() override { return {320, true}; }

private:
    sim::Panel& m_panel;
    const int m_slot;
};

/// A reader with a tag on it.
class SimNfcReader : public INFCReader
{
    Q_OBJECT

public:
    explicit SimNfcReader(sim::Panel& panel, QObject* parent = nullptr);

    QByteArray read(uint len, uint offset) override;
    int write(const QByteArray& ba, uint offset) override;
    int start() override { return sim::Done; }
    int stop() override { return sim::Done; }
    int readJSON(QString& json) override;
    int writeJSON(const QString& json) override { return m_panel.writeTagJson(json); }

private:
    sim::Panel& m_panel;
};
