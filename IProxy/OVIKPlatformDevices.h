/* The devices built into the panel; the rules in OVIKPlatformInterface.h apply. */
#ifndef OVIK_PLATFORM_DEVICES_H
#define OVIK_PLATFORM_DEVICES_H

#include "IProxy/OVIKPlatformRecords.h"

#include <QByteArray>
#include <QObject>
#include <QString>

/** The panel's serial EEPROM; the manufacturer defines addresses and contents. */
class II2CSEEPROM : public QObject
{
    Q_OBJECT

public:
    explicit II2CSEEPROM(QObject* parent = nullptr) : QObject(parent) {}
    ~II2CSEEPROM() override = default;

public Q_SLOTS:
    virtual int read(uchar addr, uint length, QByteArray& data) = 0;
    virtual int write(uchar addr, const QByteArray& data) = 0;
    virtual int readSlvAddr(uchar slvAddr, uchar addr, uint length, QByteArray& data) = 0;
    virtual int writeSlvAddr(uchar slvAddr, uchar addr, const QByteArray& data) = 0;
    virtual int getSerialNumber(QByteArray& data) = 0;
    virtual int writeSerialNumber(const QByteArray& data) = 0;
    virtual int getCustomerSerialNumber(QByteArray& data) = 0;
    virtual int writeCustomerSerialNumber(const QByteArray& data) = 0;
    virtual bool bitInSWModuleFlagArea(uint bitIndex) = 0;

Q_SIGNALS:
    void error(QString);
};

/** Backlight and power state of the displays; levels, times and states are the platform's. */
class IBacklight : public QObject
{
    Q_OBJECT

public:
    explicit IBacklight(QObject* parent = nullptr) : QObject(parent) {}
    ~IBacklight() override = default;

public Q_SLOTS:
    virtual int setBacklightTimeout(const QString& displayName, int value) = 0;
    virtual int backlightTimeout(const QString& displayName) = 0;
    virtual int setBrightness(int value) = 0;
    virtual int saveBrightness(int value) = 0;
    virtual int getBrightness() = 0;
    virtual int syncBrightness() = 0;
    virtual int offBrightness() = 0;
    virtual int DPMSOn() = 0;
    virtual int DPMSOff() = 0;
    virtual void stateNotification(const QString& displayName, int state) = 0;
    virtual int state(const QString& displayName = QString()) = 0;

Q_SIGNALS:
    void stateChanged(QString displayName, int state);
    void error(QString);
};

/** The panel's buzzer; modes, times and frequencies are the platform's. */
class IBuzzer : public QObject
{
    Q_OBJECT

public:
    explicit IBuzzer(QObject* parent = nullptr) : QObject(parent) {}
    ~IBuzzer() override = default;

public Q_SLOTS:
    virtual int beep(int freq = 440, int time = 100) = 0;
    virtual int SetBuzzerMode(int mode) = 0;
    virtual int GetBuzzerMode() = 0;
    virtual int SetBuzzerUserControl(int control) = 0;
    virtual int GetBuzzerUserControl() = 0;
    virtual int SetBuzzerOnTime(int time) = 0;
    virtual int SetBuzzerOffTime(int time) = 0;
    virtual int GetBuzzerOnTime() = 0;
    virtual int GetBuzzerOffTime() = 0;
    virtual int SetBuzzerFrequency(int freq) = 0;
    virtual int GetBuzzerFrequency() = 0;

protected Q_SLOTS:
    virtual int on(int freq);
    virtual int off();

Q_SIGNALS:
    void error(QString);
};

/** The LEDs of the panel itself; LED numbers, modes and values are the platform's. */
class IPlatformLeds : public QObject
{
    Q_OBJECT

public:
    explicit IPlatformLeds(QObject* parent = nullptr) : QObject(parent) {}
    ~IPlatformLeds() override = default;

public Q_SLOTS:
    virtual int maxLeds() const = 0;
    virtual int flash(uint ledId, uint value = 1, int time = 100) = 0;
    virtual int blink(uint ledId, uint value = 1, int onTime = 500, int offTime = 500) = 0;
    virtual int SetLedMode(uint ledId, int mode) = 0;
    virtual int GetLedMode(uint ledId) const = 0;
    virtual int SetLedUserControl(uint ledId, int control) = 0;
    virtual int GetLedUserControl(uint ledId) const = 0;
    virtual int SetLedOnTime(uint ledId, int time) = 0;
    virtual int SetLedOffTime(uint ledId, int time) = 0;
    virtual int GetLedOnTime(uint ledId) const = 0;
    virtual int GetLedOffTime(uint ledId) const = 0;
    virtual int SetLedValue(uint ledId, uint value) = 0;
    virtual uint GetLedValue(uint ledId) const = 0;

Q_SIGNALS:
    void error(QString error);
};

/** The sensors and I/O points of the panel itself; units and I/O numbers are the platform's. */
class IPlatformSensors : public QObject
{
    Q_OBJECT

public:
    explicit IPlatformSensors(QObject* parent = nullptr) : QObject(parent) {}
    ~IPlatformSensors() override = default;

public Q_SLOTS:
    virtual sensorData battery() = 0;
    virtual accelAxisData accelerometerAxis() = 0;
    virtual accelAngleData accelerometerAngle() = 0;
    virtual sensorData absorbedCurrent() = 0;
    virtual sensorData workingVoltage(int id) = 0;
    virtual sensorData pressure() = 0;
    virtual sensorData temperature() = 0;
    virtual sensorData humidity() = 0;
    virtual QByteArray readGenericSensor(const QString& name) = 0;
    virtual int maxIos() = 0;
    virtual int setIoMode(uint ioId, int mode) = 0;
    virtual int getIoMode(uint ioid) = 0;
    virtual QByteArray readIo(uint ioId, uint length) = 0;
    virtual int writeIo(uint ioId, const QByteArray& data) = 0;
    virtual sensorData illuminance() = 0;

Q_SIGNALS:
    void error(QString error);
};

/** The near-field reader; the data is the tag's, the JSON layout is the platform's. */
class INFCReader : public QObject
{
    Q_OBJECT

public:
    explicit INFCReader(QObject* parent = nullptr) : QObject(parent) {}
    ~INFCReader() override = default;

    void* fnNotifyCallback = nullptr;

public Q_SLOTS:
    virtual QByteArray read(uint len, uint offset) = 0;
    virtual int write(const QByteArray& ba, uint offset = 0) = 0;
    virtual int start() = 0;
    virtual int stop() = 0;
    virtual int readJSON(QString& json) = 0;
    virtual int writeJSON(const QString& json) = 0;

Q_SIGNALS:
    void dataChanged(QByteArray);
    void error(QString);
    void notifyJSON(QString json);
};

#endif
