#include "dbus_ovik/OVIKInterfaceDbus.h"

#include "IProxy/log_ovik.h"
#include "dbus_ovik/BacklightProxyDbus.h"
#include "dbus_ovik/BuzzerProxyDbus.h"
#include "dbus_ovik/HWPluginInstanceProxyDbus.h"
#include "dbus_ovik/MainOsProxyDbus.h"
#include "dbus_ovik/NetworkManagerProxyDbus.h"
#include "dbus_ovik/OvikProxyDbus.h"
#include "dbus_ovik/SeepromProxyDbus.h"
#include "dbus_ovik/ServiceManagerProxyDbus.h"
#include "dbus_ovik/StorageManagerProxyDbus.h"
#include "dbus_ovik/SysStatProxyDbus.h"
#include "dbus_ovik/SystemInfoProxyDbus.h"

#include <QDBusMetaType>
#include <QDateTime>

namespace
{
constexpr int pluginSlots = 4;

/// Every object that needs a proxy, the base object last: most platforms answer calls in order, so
/// the base object's answer comes after all others.
QStringList objectPaths()
{
    QStringList paths = {
        BuzzerProxyDbus::path(),  BacklightProxyDbus::path(),      SystemInfoProxyDbus::path(),
        SeepromProxyDbus::path(), MainOsProxyDbus::path(),         StorageManagerProxyDbus::path(),
        SysStatProxyDbus::path(), NetworkManagerProxyDbus::path(), ServiceManagerProxyDbus::path()};
    for (int slot = 0; slot < pluginSlots; ++slot)
        paths << HWPluginInstanceProxyDbus::path(slot) << HWPluginInstanceProxyDbus::ledsPath(slot)
              << HWPluginInstanceProxyDbus::sensorsPath(slot);
    paths << OvikProxyDbus::path();
    return paths;
}

/// @return the unique name of the platform's connection; empty without one
QString platformOwner(const QDBusConnection& connection)
{
    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetNameOwner"));
    question << ovikServiceName();
    return QDBusReply<QString>(connection.call(question)).value();
}
} // namespace

/**
 * Makes Qt cache the platform's owner. Qt caches the owner of a name only while a signal of that
 * name is connected; otherwise each new client asks the bus again. The service manager's proxy
 * needs this signal anyway.
 */
class OwnerCache : public QObject
{
    Q_OBJECT
public:
    explicit OwnerCache(QDBusConnection connection)
    {
        connection.connect(ovikServiceName(), ServiceManagerProxyDbus::path(),
                           ComWenuOVIKServiceManagerInterface::staticInterfaceName(),
                           QStringLiteral("commandResult"), this, SLOT(ignore()));
    }

private Q_SLOTS:
    void ignore() {}
};

OVIKInterfaceDbus::OVIKInterfaceDbus()
{
    qRegisterMetaType<systemInfo>("systemInfo");
    qDBusRegisterMetaType<systemInfo>();
}

OVIKInterfaceDbus::~OVIKInterfaceDbus() { OVIKInterfaceDbus::shutdown(); }

bool OVIKInterfaceDbus::init()
{
    if (isValid())
        return true;

    if (!connectToBus()) {
        logOVIK("dbus-debug connection failed");
        return false;
    }
    logOVIK("dbus-debug connection success");

    const OwnerCache cache(*m_connection);
    m_ovik = std::make_unique<ComWenuOVIKInterface>(ovikServiceName(), QStringLiteral("/"),
                                                    *m_connection, nullptr);
    if (!m_ovik->isValid() || !createProxies()) {
        // There is no session bus fallback; log readers look for this wording.
        qWarning("Cannot find dbus node in system bus. Fallback to use session bus");
        m_ovik.reset();
        return false;
    }
    return true;
}

bool OVIKInterfaceDbus::createProxies()
{
    const QString owner = platformOwner(*m_connection);
    const PlatformIntrospection known(*m_connection, objectPaths());
    // A platform that hangs or is still starting does not report its objects.
    if (owner.isEmpty() || !known.hasAnswered(OvikProxyDbus::path()) ||
        platformOwner(*m_connection) != owner)
        return false;

    create(m_buzzer, "m_buzzer not valid\n", known);
    create(m_backlight, "m_backlight not valid\n", known);
    findPlugins(known);
    create(m_systemInfo, "m_systemInfo not valid\n", known);
    create(m_seeprom, "m_seeprom not valid\n", known);
    create(m_ovikProxy, "m_ovikProxy not valid\n", known);
    create(m_mainOs, "m_mainOs not valid\n", known);
    create(m_storageManager, "m_storageManager not valid\n", known);
    create(m_sysStat, "m_sysStat not valid\n", known);
    create(m_networkManager, "m_networkManager not valid\n", known);
    create(m_serviceManager, "m_serviceManager not valid\n", known);
    return true;
}

/// Uses only the answers in @p known: the platform may lose its name now and come back.
template <class Proxy>
void OVIKInterfaceDbus::create(std::unique_ptr<Proxy>& member, const char* warning,
                               const PlatformIntrospection& known)
{
    if (member)
        member.release()->deleteLater();
    member = std::make_unique<Proxy>(*m_connection, known);
    if (!member->hasClient()) {
        qWarning("%s", warning);
        member.reset();
    }
}

bool OVIKInterfaceDbus::connectToBus()
{
    if (!m_connection) {
        // Never drop one reference to the system bus: Qt keeps only a plain pointer to it. After
        // the disconnection below, the next systemBus() would use freed memory.
        static const auto* const systemBus = new QDBusConnection(QDBusConnection::systemBus());
        m_connection = std::make_unique<QDBusConnection>(*systemBus);
        return m_connection->isConnected();
    }

    const QString oldName = m_connection->name();
    logOVIK("dbus-debug retrying after name " + oldName.toUtf8());
    QDBusConnection::disconnectFromBus(oldName);
    m_connection.reset();
    // Qt opens a new socket only for a name that was never used before.
    const QString newName =
        QStringLiteral("ovik_%1").arg(QDateTime::currentDateTime().toSecsSinceEpoch());
    m_connection = std::make_unique<QDBusConnection>(
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, newName));
    return m_connection->isConnected();
}

void OVIKInterfaceDbus::findPlugins(const PlatformIntrospection& known)
{
    for (int slot = 0; slot < pluginSlots; ++slot) {
        auto instance = std::make_unique<HWPluginInstanceProxyDbus>(*m_connection, slot, known);
        // Appended to the modules of an earlier init() on purpose, so that their places stay.
        if (instance->hasClient())
            m_HWPluginInstances.append(instance.release());
        else
            qWarning("HWPluginInstance not valid\n");
    }
}

bool OVIKInterfaceDbus::shutdown()
{
    qDeleteAll(m_HWPluginInstances);
    m_HWPluginInstances.clear();
    m_ovikProxy.reset();
    m_mainOs.reset();
    m_storageManager.reset();
    m_networkManager.reset();
    m_sysStat.reset();
    m_seeprom.reset();
    m_systemInfo.reset();
    m_backlight.reset();
    m_buzzer.reset();
    m_ovik.reset();
    m_serviceManager.reset();
    m_connection.reset();
    return true;
}

bool OVIKInterfaceDbus::isValid() const
{
    return m_connection && m_ovik && m_buzzer && m_backlight && m_systemInfo && m_seeprom &&
           m_ovikProxy && m_mainOs && m_storageManager && m_sysStat && m_networkManager &&
           m_serviceManager;
}

ISystemInfoProxy* OVIKInterfaceDbus::systemInfoProxy() { return m_systemInfo.get(); }
IBuzzerProxy* OVIKInterfaceDbus::buzzerProxy() { return m_buzzer.get(); }
IBacklightProxy* OVIKInterfaceDbus::backlightProxy() { return m_backlight.get(); }
ISeepromProxy* OVIKInterfaceDbus::seepromProxy() { return m_seeprom.get(); }
IOvikProxy* OVIKInterfaceDbus::ovikProxy() { return m_ovikProxy.get(); }
IMainOsProxy* OVIKInterfaceDbus::mainOsProxy() { return m_mainOs.get(); }
IStorageManagerProxy* OVIKInterfaceDbus::storageManagerProxy() { return m_storageManager.get(); }
ISysStatProxy* OVIKInterfaceDbus::sysStatProxy() { return m_sysStat.get(); }
INetworkManagerProxy* OVIKInterfaceDbus::networkManagerProxy() { return m_networkManager.get(); }
IServiceManagerProxy* OVIKInterfaceDbus::serviceManagerProxy() { return m_serviceManager.get(); }

QVector<HWPluginInstanceProxyDbus*> OVIKInterfaceDbus::HWPluginInstanceProxy()
{
    return m_HWPluginInstances;
}

#include "OVIKInterfaceDbus.moc"
