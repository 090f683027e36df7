#include "panel_sim/dbus_face.h"

#include "dbus_ovik/OVIKDBusRecords.h"
#include "panel_sim/bus_forms.h"
#include "panel_sim/platform_devices.h"
#include "panel_sim/platform_info.h"
#include "panel_sim/platform_plugins.h"
#include "panel_sim/platform_services.h"
#include "panel_sim/sim_records.h"

#include "BacklightAdaptor.h"
#include "BuzzerAdaptor.h"
#include "HWPluginAdaptor.h"
#include "HWPluginInstanceAdaptor.h"
#include "I2CSEEPROMAdaptor.h"
#include "LedsAdaptor.h"
#include "NFCReaderAdaptor.h"
#include "NetworkManagerAdaptor.h"
#include "OVIKAdaptor.h"
#include "PartitionInfoAdaptor.h"
#include "SensorsAdaptor.h"
#include "ServiceManagerAdaptor.h"
#include "SplashImageInfoAdaptor.h"
#include "StorageMgrAdaptor.h"
#include "SysStatAdaptor.h"
#include "SystemInfoAdaptor.h"
#include "TimeMgrAdaptor.h"

#include <QDBusError>
#include <QDBusMetaType>

namespace
{
const QString busName = QStringLiteral("com.wenu.OVIK");

template <class Object, class Adaptor>
QObject* onPanel(sim::Panel& panel, QObject* parent)
{
    auto* object = new Object(panel, parent);
    new Adaptor(object);
    return object;
}

template <class Object, class... Adaptors>
QObject* inSlot(sim::Panel& panel, int slot, QObject* parent)
{
    auto* object = new Object(panel, slot, parent);
    (new Adaptors(object), ...);
    return object;
}

const struct {
    const char* name;
    const char* path;
    QObject* (*make)(sim::Panel&, QObject* parent);
} panelObjects[] = {
    {"OVIK", "/", onPanel<OvikOnBus, OVIKAdaptor>},
    {"Backlight", "/Backlight", onPanel<SimBacklight, BacklightAdaptor>},
    {"Buzzer", "/Buzzer", onPanel<SimBuzzer, BuzzerAdaptor>},
    {"I2CSEEPROM", "/I2CSEEPROM", onPanel<SimSeeprom, I2CSEEPROMAdaptor>},
    {"MainOSInfo", "/MainOSInfo", onPanel<SimMainOsInfo, PartitionInfoAdaptor>},
    {"SysStat", "/SysStat", onPanel<SimSysStat, SysStatAdaptor>},
    {"SystemInfo", "/SystemInfo", onPanel<SimSystemInfo, SystemInfoAdaptor>},
    {"StorageMgr", "/StorageMgr", onPanel<SimStorageManager, StorageMgrAdaptor>},
    {"NetworkManager", "/NetworkManager", onPanel<SimNetworkManager, NetworkManagerAdaptor>},
    {"ServiceManager", "/ServiceManager", onPanel<SimServiceManager, ServiceManagerAdaptor>},
    {"SplashImageInfo", "/SplashImageInfo", onPanel<SimSplashImageInfo, SplashImageInfoAdaptor>},
    {"TimeMgr", "/TimeMgr", onPanel<SimTimeManager, TimeMgrAdaptor>},
    {"NFCReader", "/NFCReader", onPanel<NfcReaderOnBus, NFCReaderAdaptor>},
};

const struct {
    const char* name;
    const char* path; ///< %1 is the slot
    QObject* (*make)(sim::Panel&, int slot, QObject* parent);
} pluginObjects[] = {
    {"HWPlugin", "/HWPlugin/%1", inSlot<SimHWPlugin, HWPluginAdaptor, HWPluginInstanceAdaptor>},
    {"Leds", "/HWPlugin/%1/Leds", inSlot<SimLeds, LedsAdaptor>},
    {"Sensors", "/HWPlugin/%1/Sensors", inSlot<SensorsOnBus, SensorsAdaptor>},
};

void registerRecords()
{
    qDBusRegisterMetaType<systemInfo>();
    qDBusRegisterMetaType<partitionInfo>();
    qDBusRegisterMetaType<ovikStorageInfo>();
    qDBusRegisterMetaType<timeZoneInfo>();
    qDBusRegisterMetaType<accelerometerAxisData>();
    qDBusRegisterMetaType<accelerometerAngleData>();
    qDBusRegisterMetaType<splashImageInfo>();
    qDBusRegisterMetaType<sSEEModule>();
}
} // namespace

QStringList DBusFace::objectNames()
{
    QStringList names;
    for (const auto& object : panelObjects)
        names.append(object.name);
    for (const auto& object : pluginObjects)
        names.append(object.name);
    return names;
}

DBusFace::DBusFace(sim::Panel& panel, const QDBusConnection& bus, QObject* parent)
    : QObject(parent), m_panel(panel), m_bus(bus)
{
    registerRecords();
}

QString DBusFace::open(const QStringList& missing)
{
    if (!m_bus.isConnected())
        return "no system bus: " + m_bus.lastError().message();
    if (!registerObjects(missing))
        return "cannot register the objects on the bus";
    if (!m_bus.registerService(busName)) {
        const QString why = m_bus.lastError().message();
        return "cannot own the bus name " + busName + ": " + (why.isEmpty() ? "it is taken" : why);
    }
    return {};
}

bool DBusFace::registerObjects(const QStringList& missing)
{
    bool done = true;
    for (const auto& object : panelObjects) {
        if (!missing.contains(object.name))
            done &= m_bus.registerObject(object.path, object.make(m_panel, this));
    }
    for (const auto& object : pluginObjects) {
        for (int slot : m_panel.pluginSlots()) {
            if (!missing.contains(object.name))
                done &= m_bus.registerObject(QString(object.path).arg(slot),
                                             object.make(m_panel, slot, this));
        }
    }
    return done;
}
