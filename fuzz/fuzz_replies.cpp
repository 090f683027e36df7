// Fuzzes the D-Bus backend's proxies, record readers, introspection reader and signal with a
// platform that answers from the input.

#include "dbus_ovik/BacklightProxyDbus.h"
#include "dbus_ovik/BuzzerProxyDbus.h"
#include "dbus_ovik/HWPluginInstanceProxyDbus.h"
#include "dbus_ovik/MainOsProxyDbus.h"
#include "dbus_ovik/NetworkManagerProxyDbus.h"
#include "dbus_ovik/OVIKInterfaceDbus.h"
#include "dbus_ovik/OvikProxyDbus.h"
#include "dbus_ovik/SeepromProxyDbus.h"
#include "dbus_ovik/ServiceManagerProxyDbus.h"
#include "dbus_ovik/StorageManagerProxyDbus.h"
#include "dbus_ovik/SysStatProxyDbus.h"
#include "dbus_ovik/SystemInfoProxyDbus.h"
#include "fuzz/check.h"
#include "fuzz/platform_bus.h"

#include "ComWenuOVIKTimeMgrInterface.h"

#include <QCoreApplication>
#include <QDBusMetaType>

#include <cstring>

namespace
{
constexpr int mostCalls = 20;
/// More than the platform ever sends.
constexpr int longest = 100000;

struct Platform {
    PlatformBus bus;
    int argc = 1;
    QCoreApplication application{argc, nullptr};
    OVIKInterfaceDbus backend;
};
Platform* platform;

QDBusConnection bus() { return QDBusConnection::systemBus(); }

// --- Results of a call ---

template <class Record>
bool areEqual(const Record& one, const Record& other)
{
    return memcmp(&one, &other, sizeof one) == 0;
}
bool areEqual(const QString& one, const QString& other) { return one == other; }
bool areEqual(const QByteArray& one, const QByteArray& other) { return one == other; }

template <class Record>
bool isBounded(const Record&)
{
    return true;
}
bool isBounded(const QString& text) { return text.size() <= longest; }
bool isBounded(const QByteArray& bytes) { return bytes.size() <= longest; }

/// The value of an output before a call.
template <class T>
T untouched()
{
    T value;
    memset(static_cast<void*>(&value), 0x5A, sizeof value);
    return value;
}
template <>
bool untouched<bool>()
{
    return true;
}
template <>
QString untouched<QString>()
{
    return "untouched";
}
template <>
QByteArray untouched<QByteArray>()
{
    return "untouched";
}

/// Checks one operation: @p call gets the output and returns a status.
template <class T, class Call>
void expectStatus(Call call)
{
    const T before = untouched<T>();
    T value = before;
    const status_t status = call(value);
    check(status == (platform->bus.hasFailed() ? OVIK_REPLY_ERROR : OVIK_OK),
          "a call fails if its reply is an error, and else not");
    check(status == OVIK_OK || areEqual(value, before), "an output is written on success only");
    check(isBounded(value), "an answer is no longer than what was sent");
}

/// Like expectStatus(), but with the generated client, for replies that no proxy requests.
template <class T, class Client>
void expectReply(const QString& path, QDBusPendingReply<T> (Client::*method)())
{
    expectStatus<T>([&](T& value) {
        Client client(ovikServiceName(), path, bus(), nullptr);
        QDBusPendingReply<T> reply = (client.*method)();
        return getReplyValue(reply, value) ? OVIK_OK : OVIK_REPLY_ERROR;
    });
}

void onResult(const char* service, const char* command, const char* json)
{
    for (const char* const text : {service, command, json})
        check(strlen(text) <= longest, "a result's texts end");
}

// --- The calls ---

void asksPlugin(FuzzedDataProvider& input)
{
    const auto instances = platform->backend.HWPluginInstanceProxy();
    auto* const instance = instances.at(input.ConsumeBool());
    switch (input.ConsumeIntegralInRange(0, 3)) {
    case 0:
        instance->getLeds()->blink(1, 2, 3, 4);
        break;
    case 1:
        instance->getSensors()->getIoMode(1);
        break;
    case 2:
        instance->getSensors()->writeIo(1, "1");
        break;
    default:
        check(isBounded(instance->getSensors()->readIo(1, 1)), "bytes are those sent");
    }
}

void commands(FuzzedDataProvider& input)
{
    void* const callback = input.ConsumeBool() ? reinterpret_cast<void*>(onResult) : nullptr;
    expectStatus<int>([&](int& value) {
        return platform->backend.serviceManagerProxy()->command("wifi", "scan", "", callback,
                                                                value);
    });
    QCoreApplication::processEvents();
}

/// A new proxy checks whether its object exists.
void looksForObject()
{
    auto connection = bus();
    BuzzerProxyDbus buzzer(connection);
    const ComWenuOVIKBuzzerInterface client(ovikServiceName(), "/Buzzer", bus(), nullptr);
    isPresent(client);
    if (buzzer.isValid())
        return expectStatus<int>([&](int& value) { return buzzer.getBuzzerMode(value); });
    int ignored = 0;
    check(buzzer.getBuzzerMode(ignored) == OVIK_NO_PLATFORM, "an absent object is not asked");
}

void readsEeprom(FuzzedDataProvider& input)
{
    ISeepromProxy* const seeprom = platform->backend.seepromProxy();
    const bool slave = input.ConsumeBool();
    expectStatus<QByteArray>([&](QByteArray& bytes) {
        int result = 0;
        return slave ? seeprom->readSlave(1, 2, 3, bytes, result)
                     : seeprom->read(1, 2, bytes, result);
    });
}

void call(FuzzedDataProvider& input)
{
    OVIKInterfaceDbus& backend = platform->backend;
    switch (input.ConsumeIntegralInRange(0, 17)) {
    case 0:
        return expectStatus<systemInfo>(
            [&](auto& value) { return backend.systemInfoProxy()->getSystemInfo(value); });
    case 1:
        return expectStatus<ovikStorageInfo>([&](auto& value) {
            return backend.storageManagerProxy()->getStorageInfo("usb", value);
        });
    case 2:
        return expectReply("/MainOSInfo", &ComWenuOVIKPartitionInfoInterface::info);
    case 3:
        return expectReply("/TimeMgr", &ComWenuOVIKTimeMgrInterface::getTimeZoneInfo);
    case 4:
        return expectReply("/HWPlugin/0/Sensors",
                           &ComWenuOVIKPlatformSensorsInterface::accelerometerAxis);
    case 5:
        return expectReply("/HWPlugin/0/Sensors",
                           &ComWenuOVIKPlatformSensorsInterface::accelerometerAngle);
    case 6:
        return readsEeprom(input);
    case 7:
        return looksForObject();
    case 8:
        return commands(input);
    case 9:
        return asksPlugin(input);
    case 10:
        return expectStatus<qulonglong>(
            [&](auto& value) { return backend.sysStatProxy()->availableMemory(value); });
    case 11:
        return expectStatus<QByteArray>(
            [&](auto& value) { return backend.mainOsProxy()->version(value); });
    case 12:
        return expectStatus<QString>(
            [&](auto& value) { return backend.networkManagerProxy()->getConfigJson(value); });
    case 13:
        return expectStatus<bool>(
            [&](auto& value) { return backend.serviceManagerProxy()->enabled("ntp", value); });
    case 14:
        return expectStatus<int>(
            [&](auto& value) { return backend.backlightProxy()->getBrightness(value); });
    case 15:
        return expectStatus<int>(
            [&](auto& value) { return backend.buzzerProxy()->setBuzzerMode(1, value); });
    case 16:
        return expectStatus<QString>(
            [&](auto& value) { return backend.ovikProxy()->getVolatileParameter("a", value); });
    default:
        return expectStatus<QString>([&](auto& value) {
            return backend.storageManagerProxy()->getStorageInfoJson("", value);
        });
    }
}

/// Prevents effects of this input on the next one.
void comeToRest()
{
    platform->bus.drawFrom(nullptr);
    qulonglong ignored = 0;
    check(platform->backend.sysStatProxy()->availableMemory(ignored) == OVIK_OK,
          "the platform answers on"); // so all earlier signals have arrived
    QCoreApplication::processEvents();
}
} // namespace

extern "C" void logOVIKErrors(char*) {}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    platform = new Platform;
    // The product registers only the types that it requests.
    qDBusRegisterMetaType<ovikStorageInfo>();
    qDBusRegisterMetaType<partitionInfo>();
    qDBusRegisterMetaType<timeZoneInfo>();
    qDBusRegisterMetaType<accelerometerAxisData>();
    qDBusRegisterMetaType<accelerometerAngleData>();
    check(platform->backend.init() && platform->backend.isValid(), "the platform is there");
    check(platform->backend.HWPluginInstanceProxy().size() == 2, "there are two modules");
    atexit([] { delete platform; });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    platform->bus.drawFrom(&input);
    for (int calls = 0; calls < mostCalls && input.remaining_bytes() > 0; ++calls)
        call(input);
    comeToRest();
    return 0;
}
