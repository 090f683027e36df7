#pragma once

#include "IProxy/OVIKPlatformRecords.h"
#include "IProxy/ovik_status.h"
#include "dbus_ovik/OVIKInterfaceDbus.h"
#include "local_ovik/OVIKInterfaceLocal.h"
#include "wrapper_ovik/ovik_c.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QMetaType>
#include <QString>
#include <QVector>

// The result of a slot for the calling thread: a status, and a value that is valid on OVIK_OK only.
// The C API names a slot's return type by its metatype name, so each record is declared as a
// metatype under exactly its own name.

struct StatusIntResp {
    status_t status;
    int value;
};
struct StatusBoolResp {
    status_t status;
    bool value;
};
struct StatusByteArrayResp {
    status_t status;
    QByteArray value;
};
struct StatusStringResp {
    status_t status;
    QString value;
};
struct StatusUint64Resp {
    status_t status;
    qulonglong value;
};
struct SystemInfoResp {
    status_t status;
    systemInfo info;
};
Q_DECLARE_METATYPE(StatusIntResp)
Q_DECLARE_METATYPE(StatusBoolResp)
Q_DECLARE_METATYPE(StatusByteArrayResp)
Q_DECLARE_METATYPE(StatusStringResp)
Q_DECLARE_METATYPE(StatusUint64Resp)
Q_DECLARE_METATYPE(SystemInfoResp)

/**
 * The application object of the thread that calls the platform.
 *
 * It owns the backends and points at the proxies of the backend in use. A request slot calls one of
 * these proxies. Every slot runs on this object's thread.
 */
class OvikApplication : public QCoreApplication
{
    Q_OBJECT
public:
    /// @param argc must outlive the object, as QCoreApplication keeps a reference.
    OvikApplication(int& argc, char** argv);
    ~OvikApplication() override;

public Q_SLOTS:
    /// Initialises the D-Bus backend and adopts it, or retries every second, without limit.
    void checkDbus();

    /**
     * Selects the backend, see ovik_setMode().
     *
     * @return OVIK_OK, OVIK_BACKEND_FAILED with nothing changed, or OVIK_ILLEGAL_MODE.
     */
    int setMode(int mode);

    /// OVIK_MODE_NONE, OVIK_MODE_LOCAL or OVIK_MODE_DBUS.
    int getMode();

    /// Liveness probe: always 0.
    int doSomething();

    // One slot per request. @return OVIK_NO_PLATFORM without a proxy, else the proxy's status.
    StatusIntResp getBuzzerMode();
    StatusIntResp setBuzzerMode(int mode);
    StatusIntResp setBuzzerUserControl(int control);
    StatusIntResp setBuzzerOnTime(int time);
    StatusIntResp setBuzzerOffTime(int time);
    StatusIntResp getBrightness();
    StatusIntResp saveBrightness(int value);
    SystemInfoResp getSystemInfo();
    // EEPROM addresses are bytes: only the low 8 bits are used. The result code is discarded.
    StatusByteArrayResp seepromRead(int addr, int len);
    StatusByteArrayResp seepromReadSlave(int slaveAddr, int addr, int len);
    StatusIntResp getSysCounter();
    StatusIntResp getBackLightCounter();
    StatusStringResp getVolatileParameter(const QString& key);
    StatusStringResp getAllVolatileParametersJson();
    StatusStringResp getSystemParameter(const QString& key);
    StatusStringResp getAllSystemParametersJson();
    StatusIntResp setVolatileParameter(const QString& key, const QString& value);
    StatusIntResp setSystemParameter(const QString& key, const QString& value);
    StatusIntResp setSystemParametersJson(const QString& key, const QString& json);
    StatusByteArrayResp mainOsVersion();
    // The two JSON documents below as Latin-1.
    StatusByteArrayResp getStorageInfoJson(const QString& name);
    StatusUint64Resp getAvailableMemory();
    StatusByteArrayResp getNetworkConfigJson();
    StatusIntResp setInterfaceConfigJson(const QString& interface, const QString& config);
    StatusIntResp applyNewConfiguration();

    // Plug-in modules. The slot is a place in the list of the modules found; a place beyond the
    // list returns OVIK_EMPTY_SLOT. A module without such points returns OVIK_OK and -1, a call
    // that fails on the platform OVIK_OK and 0.
    StatusIntResp getHWPluginIOMode(unsigned int slot, unsigned int index);
    StatusByteArrayResp getHWPluginIO(unsigned int slot, unsigned int index, int count);
    StatusIntResp setHWPluginIO(unsigned int slot, unsigned int index, QByteArray output);
    StatusIntResp getHWPluginLedMode(unsigned int slot, unsigned int index);
    StatusIntResp setHWPluginLedUserControl(unsigned int slot, unsigned int index, int control);
    StatusIntResp setHWPluginLedValue(unsigned int slot, unsigned int index, unsigned int value);
    StatusIntResp setHWPluginLedOnTime(unsigned int slot, unsigned int index, int onTime);
    StatusIntResp setHWPluginLedOffTime(unsigned int slot, unsigned int index, int offTime);
    StatusIntResp setHWPluginLedFlash(unsigned int slot, unsigned int index, int time);
    StatusIntResp setHWPluginLedBlink(unsigned int slot, unsigned int index, int onTime,
                                      int offTime);

    StatusIntResp serviceStart(QString service);
    StatusIntResp serviceStop(QString service);
    StatusIntResp serviceRestart(QString service);
    StatusIntResp serviceReload(QString service);
    StatusIntResp serviceEnable(QString service);
    StatusIntResp serviceDisable(QString service);
    StatusBoolResp serviceEnabled(QString service);
    StatusIntResp serviceApply(QString service);
    StatusBoolResp serviceControlled(QString service);
    StatusIntResp serviceState(QString service);
    /// @param fnCallback see IServiceManagerProxy::command().
    StatusIntResp serviceCommand(QString service, QString cmd, QString opts, void* fnCallback);

private:
    void useNone();
    void useLocal();
    void useDbus();
    template <class Backend>
    void adopt(Backend& backend);

    int m_mode = OVIK_MODE_NONE;
    OVIKInterfaceLocal m_interfaceLocal;
    OVIKInterfaceDbus m_interfaceDbus;
    // Not owned; null for a facility that the backend in use lacks.
    ISystemInfoProxy* m_systemInfo = nullptr;
    IBuzzerProxy* m_buzzer = nullptr;
    IBacklightProxy* m_backlight = nullptr;
    ISeepromProxy* m_seeprom = nullptr;
    IOvikProxy* m_ovik = nullptr;
    IMainOsProxy* m_mainOs = nullptr;
    IStorageManagerProxy* m_storageManager = nullptr;
    ISysStatProxy* m_sysStat = nullptr;
    INetworkManagerProxy* m_networkManager = nullptr;
    IServiceManagerProxy* m_serviceManager = nullptr;

protected:
    /// Found and owned by the D-Bus backend.
    QVector<HWPluginInstanceProxyDbus*> m_HWPluginInstances;
};
