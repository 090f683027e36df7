/* Plug-in modules of the panel; the rules in OVIKPlatformInterface.h apply. */
#ifndef OVIK_PLATFORM_PLUGINS_H
#define OVIK_PLATFORM_PLUGINS_H

#include "IProxy/OVIKPlatformDevices.h"
#include "IProxy/OVIKPlatformRecords.h"

#include <QByteArray>
#include <QObject>
#include <QString>

/** One plug-in slot, numbered by the platform; a facility is null when the module lacks it. */
class IHWPluginInstance : public QObject
{
    Q_OBJECT

public:
    explicit IHWPluginInstance(int slot, QObject* parent = nullptr) : QObject(parent), m_slot(slot)
    {
    }
    ~IHWPluginInstance() override = default;

public Q_SLOTS:
    virtual IPlatformLeds* getLeds() = 0;
    virtual IPlatformSensors* getSensors() = 0;

protected:
    int m_slot;
};

/** The LEDs of one plug-in module; LED numbers, modes and values are the module's. */
class IPluginLeds : public QObject
{
    Q_OBJECT

public:
    explicit IPluginLeds(QObject* parent = nullptr) : QObject(parent) {}
    ~IPluginLeds() override = default;

public Q_SLOTS:
    virtual int GetLedMode(uint ledId) const = 0;
    virtual int SetLedUserControl(uint ledId, int control) = 0;
    virtual int flash(uint ledId, uint value, int time) = 0;
    virtual int blink(uint ledId, uint value, int onTime, int offTime) = 0;
    virtual int SetLedOnTime(uint ledId, int time) = 0;
    virtual int SetLedOffTime(uint ledId, int time) = 0;
    virtual int SetLedValue(uint ledId, uint value) = 0;
};

/** The I/O points of one plug-in module; I/O numbers, modes and data are the module's. */
class IPluginSensors : public QObject
{
    Q_OBJECT

public:
    explicit IPluginSensors(QObject* parent = nullptr) : QObject(parent) {}
    ~IPluginSensors() override = default;

public Q_SLOTS:
    virtual int getIoMode(uint ioid) = 0;
    virtual QByteArray readIo(uint ioId, uint length) = 0;
    virtual int writeIo(uint ioId, const QByteArray& data) = 0;
};

/** Signature and serial EEPROM of the plug-in modules; the contents are the module maker's. */
class IHWPlugin : public QObject
{
    Q_OBJECT

public:
    explicit IHWPlugin(QObject* parent = nullptr) : QObject(parent) {}
    ~IHWPlugin() override = default;

public Q_SLOTS:
    virtual int seepromRead(uchar plid, uchar addr, uint length, QByteArray& data) = 0;
    virtual int seepromWrite(uchar plid, uchar addr, const QByteArray& data) = 0;
    virtual sSEEModule signature() const = 0;
    /** The whole field, zero bytes included, as for signatureFunctArea(). */
    virtual QByteArray signatureName() const;
    virtual uchar signatureHCode() const { return signature().Hcode; }
    virtual uchar signatureHSubCode() const { return signature().Hsubcode; }
    virtual uchar signatureXCode() const { return signature().Xcode; }
    virtual uchar signatureXSubCode() const { return signature().Xsubcode; }
    virtual QByteArray signatureFunctArea() const;

Q_SIGNALS:
    void error(QString);

protected:
    sSEEModule m_signature{};
};

#endif
