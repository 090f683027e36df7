#pragma once

#include "panel_sim/platform_devices.h"
#include "panel_sim/platform_services.h"

#include <QDBusObjectPath>

// The objects whose operations have other types on the bus. Those operations come first in each
// class; the others only forward.

/// On the bus a transfer is an object path; "/" when there is none.
class OvikOnBus : public QObject
{
    Q_OBJECT

public:
    explicit OvikOnBus(sim::Panel& panel, QObject* parent = nullptr);

    QDBusObjectPath downloadImage(const QString&, const QString&, const QString&, bool)
    {
        return noTransfer();
    }
    QDBusObjectPath uploadImage(const QString&, const QString&, bool) { return noTransfer(); }
    QDBusObjectPath uploadRawImage(const QString&, const QString&, bool) { return noTransfer(); }

    int getSysCounter() { return m_ovik.getSysCounter(); }
    int getBlightCounter() { return m_ovik.getBlightCounter(); }
    int clearTimeCounters(int which) { return m_ovik.clearTimeCounters(which); }
    QString getVolatileParameter(const QString& name) { return m_ovik.getVolatileParameter(name); }
    QString getSystemParameter(const QString& name) { return m_ovik.getSystemParameter(name); }
    QString getAllVolatileParametersJSON() { return m_ovik.getAllVolatileParametersJSON(); }
    QString getAllSystemParametersJSON() { return m_ovik.getAllSystemParametersJSON(); }
    int setVolatileParameter(const QString& name, const QString& value)
    {
        return m_ovik.setVolatileParameter(name, value);
    }
    int setSystemParameter(const QString& name, const QString& value)
    {
        return m_ovik.setSystemParameter(name, value);
    }
    int setSystemParametersJSON(const QString& key, const QString& json)
    {
        return m_ovik.setSystemParametersJSON(key, json);
    }
    int setScreenOrientation(int angle) { return m_ovik.setScreenOrientation(angle); }
    int restartSystem() { return m_ovik.restartSystem(); }
    int restartSystemWithImage(int imageType) { return m_ovik.restartSystemWithImage(imageType); }

Q_SIGNALS:
    void systemParameterChanged(const QString& name, const QString& value);
    void volatileParameterChanged(const QString& name, const QString& value);

private:
    static QDBusObjectPath noTransfer() { return QDBusObjectPath("/"); }

    SimOvik m_ovik;
};

/// On the bus a reading is only its value, valid or not.
class SensorsOnBus : public QObject
{
    Q_OBJECT

public:
    SensorsOnBus(sim::Panel& panel, int slot, QObject* parent = nullptr)
        : QObject(parent), m_sensors(panel, slot)
    {
    }

    int battery() { return m_sensors.battery().value; }
    int absorbedCurrent() { return m_sensors.absorbedCurrent().value; }
    int workingVoltage(int id) { return m_sensors.workingVoltage(id).value; }
    int pressure() { return m_sensors.pressure().value; }
    int temperature() { return m_sensors.temperature().value; }
    int humidity() { return m_sensors.humidity().value; }
    int illuminance() { return m_sensors.illuminance().value; }
    accelerometerAxisData accelerometerAxis() { return m_sensors.accelerometerAxis().axes; }
    accelerometerAngleData accelerometerAngle() { return m_sensors.accelerometerAngle().angles; }

    QByteArray readGenericSensor(const QString& name) { return m_sensors.readGenericSensor(name); }
    int maxIos() { return m_sensors.maxIos(); }
    int setIoMode(uint ioId, int mode) { return m_sensors.setIoMode(ioId, mode); }
    int getIoMode(uint ioId) { return m_sensors.getIoMode(ioId); }
    QByteArray readIo(uint ioId, uint length) { return m_sensors.readIo(ioId, length); }
    int writeIo(uint ioId, const QByteArray& data) { return m_sensors.writeIo(ioId, data); }

private:
    SimSensors m_sensors;
};

/// On the bus starting returns the tag's data, stopping returns none.
class NfcReaderOnBus : public QObject
{
    Q_OBJECT

public:
    explicit NfcReaderOnBus(sim::Panel& panel, QObject* parent = nullptr);

    QByteArray start();
    QByteArray stop();

    QByteArray read(uint length, uint offset) { return m_reader.read(length, offset); }
    int write(const QByteArray& data, uint offset) { return m_reader.write(data, offset); }
    int readJSON(QString& json) { return m_reader.readJSON(json); }
    int writeJSON(const QString& json) { return m_reader.writeJSON(json); }

Q_SIGNALS:
    void dataChanged(const QByteArray& data);
    void notifyJSON(const QString& json);

private:
    SimNfcReader m_reader;
};
