#include "wrapper_ovik/ovikapplication.h"

#include "IProxy/log_ovik.h"
#include "dbus_ovik/OVIKDBusRecords.h"

#include <QDBusMetaType>
#include <QTimer>

#include <chrono>
#include <cstdio>

namespace
{
constexpr std::chrono::milliseconds dbusRetryInterval{1000};
}

OvikApplication::OvikApplication(int& argc, char** argv) : QCoreApplication(argc, argv)
{
    qRegisterMetaType<systemInfo>("systemInfo");
    qDBusRegisterMetaType<systemInfo>();
    qRegisterMetaType<partitionInfo>("partitionInfo");
    qDBusRegisterMetaType<partitionInfo>();
    qRegisterMetaType<ovikStorageInfo>("ovikStorageInfo");
    qDBusRegisterMetaType<ovikStorageInfo>();
}

OvikApplication::~OvikApplication() = default;

void OvikApplication::checkDbus()
{
    logOVIK("try init DBUS now");
    if (m_mode == OVIK_MODE_DBUS)
        return;
    logOVIK("try init DBUS not in DBUS mode");
    if (!m_interfaceDbus.init()) {
        logOVIK("retry init DBUS later");
        QTimer::singleShot(dbusRetryInterval, this, SLOT(checkDbus()));
        return;
    }
    logOVIK("init DBUS OK");
    setMode(OVIK_MODE_DBUS_AS_IT_IS);
}

int OvikApplication::setMode(int mode)
{
    logOVIK("OVIK set mode from " + QByteArray::number(m_mode) + " to " + QByteArray::number(mode));
    switch (mode) {
    case OVIK_MODE_NONE:
        useNone();
        return OVIK_OK;
    case OVIK_MODE_LOCAL:
        if (!m_interfaceLocal.init())
            return OVIK_BACKEND_FAILED;
        useLocal();
        return OVIK_OK;
    case OVIK_MODE_DBUS:
        if (!m_interfaceDbus.init())
            return OVIK_BACKEND_FAILED;
        useDbus();
        return OVIK_OK;
    case OVIK_MODE_DBUS_AS_IT_IS:
        useDbus();
        return OVIK_OK;
    case OVIK_MODE_DBUS_OR_NONE:
        if (m_interfaceDbus.init())
            useDbus();
        else
            useNone();
        return OVIK_OK;
    default:
        puts("Illegal OvikApplication mode");
        return OVIK_ILLEGAL_MODE;
    }
}

void OvikApplication::useNone()
{
    m_systemInfo = nullptr;
    m_buzzer = nullptr;
    m_backlight = nullptr;
    m_seeprom = nullptr;
    m_ovik = nullptr;
    m_mainOs = nullptr;
    m_storageManager = nullptr;
    m_sysStat = nullptr;
    m_networkManager = nullptr;
    m_serviceManager = nullptr;
    // The list of plug-in modules is kept on purpose: the modules are still in their slots.
    m_mode = OVIK_MODE_NONE;
}

void OvikApplication::useLocal()
{
    // The in-process backend has neither a service manager nor plug-in modules. Those of the D-Bus
    // backend stay in use on purpose.
    adopt(m_interfaceLocal);
    m_mode = OVIK_MODE_LOCAL;
}

void OvikApplication::useDbus()
{
    adopt(m_interfaceDbus);
    m_HWPluginInstances = m_interfaceDbus.HWPluginInstanceProxy();
    m_serviceManager = m_interfaceDbus.serviceManagerProxy();
    m_mode = OVIK_MODE_DBUS;
}

/// Uses the proxies that every backend has.
template <class Backend>
void OvikApplication::adopt(Backend& backend)
{
    m_systemInfo = backend.systemInfoProxy();
    m_buzzer = backend.buzzerProxy();
    m_backlight = backend.backlightProxy();
    m_seeprom = backend.seepromProxy();
    m_ovik = backend.ovikProxy();
    m_mainOs = backend.mainOsProxy();
    m_storageManager = backend.storageManagerProxy();
    m_sysStat = backend.sysStatProxy();
    m_networkManager = backend.networkManagerProxy();
}

int OvikApplication::getMode() { return m_mode; }

int OvikApplication::doSomething() { return 0; }
