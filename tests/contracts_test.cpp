// Dumps the contracts as the compiler and moc see them: records and classes shared with the
// platform library, proxies, and D-Bus interface files. Any change makes the dump differ from
// golden/contracts.txt, which scripts/generate.sh updates.

#include "IProxy/IHWPluginInstanceProxy.h"
#include "IProxy/OVIKPlatformInterface.h"
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
#include "local_ovik/BacklightProxyLocal.h"
#include "local_ovik/BuzzerProxyLocal.h"
#include "local_ovik/MainOsProxyLocal.h"
#include "local_ovik/NetworkManagerProxyLocal.h"
#include "local_ovik/OVIKInterfaceLocal.h"
#include "local_ovik/OvikProxyLocal.h"
#include "local_ovik/SeepromProxyLocal.h"
#include "local_ovik/StorageManagerProxyLocal.h"
#include "local_ovik/SysStatProxyLocal.h"
#include "local_ovik/SystemInfoProxyLocal.h"
#include "tests/support/introspection.h"

#include <gtest/gtest.h>

#include <QMetaMethod>

#include <algorithm>
#include <cstring>
#include <cxxabi.h>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <vector>

namespace
{
/// The compiler's name of a type: unlike the meta-object's, it keeps const and references.
template <class Type>
std::string typeName()
{
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(typeid(Type).name(), nullptr, nullptr, &status), free);
    return name.get();
}

/// A virtual function with its index in the table, a static member, or a field with its offset.
struct Member {
    enum Kind { Virtual, Static, Field } kind;
    std::string name;
    std::string type;
    std::size_t place = 0;
    std::size_t size = 0;
    std::size_t alignment = 1;
};

/// Index in the virtual table, decoded from a pointer to a member function.
template <class Function>
std::size_t virtualIndex(Function function)
{
    struct {
        std::size_t pointer;
        std::size_t adjustment;
    } parts;
    static_assert(sizeof parts == sizeof function, "member pointers have two words");
    memcpy(&parts, &function, sizeof parts);
#if defined(__arm__) || defined(__aarch64__)
    EXPECT_EQ(parts.adjustment & 1U, 1U) << typeName<Function>() << " is not virtual";
    return parts.pointer / sizeof(void*);
#else
    EXPECT_EQ(parts.pointer & 1U, 1U) << typeName<Function>() << " is not virtual";
    return (parts.pointer - 1U) / sizeof(void*);
#endif
}

/// The contracts' virtual functions follow those of QObject.
struct ObjectEnd : QObject {
    virtual void next() {}
    static std::size_t index() { return virtualIndex(&ObjectEnd::next); }
};

template <class Class, class Type>
Member member(const char* name, Type Class::*pointer)
{
    if constexpr (std::is_member_function_pointer_v<Type Class::*>) {
        std::string type = typeName<Type Class::*>();
        const size_t end = type.find("::*)");
        const size_t begin = type.rfind(" (", end);
        type.erase(begin, end + 4 - begin);
        return {Member::Virtual, name, type, virtualIndex(pointer) - ObjectEnd::index()};
    } else {
        std::ptrdiff_t offset = 0;
        static_assert(sizeof offset == sizeof pointer, "data member pointers are offsets");
        memcpy(&offset, &pointer, sizeof offset);
        return {Member::Field, name,         typeName<Type>(), static_cast<std::size_t>(offset),
                sizeof(Type),  alignof(Type)};
    }
}

template <class Type>
Member member(const char* name, Type*)
{
    return {Member::Static, name, typeName<Type>()};
}

/// The fields in memory order. Fails on a gap, which shows an unlisted field, unless that field
/// fits into padding.
std::vector<Member> fieldsOf(const std::string& name, const std::vector<Member>& members,
                             std::size_t begin, std::size_t end, std::size_t alignment)
{
    const auto aligned = [](std::size_t offset, std::size_t to) {
        return (offset + to - 1) / to * to;
    };
    std::vector<Member> fields;
    std::copy_if(members.begin(), members.end(), std::back_inserter(fields),
                 [](const Member& m) { return m.kind == Member::Field; });
    std::sort(fields.begin(), fields.end(),
              [](const Member& a, const Member& b) { return a.place < b.place; });
    for (const Member& field : fields) {
        EXPECT_EQ(field.place, aligned(begin, field.alignment))
            << "something is before " << name << "::" << field.name;
        begin = field.place + field.size;
    }
    EXPECT_EQ(end, aligned(begin, alignment)) << "something is at the end of " << name;
    return fields;
}

// --- Records -------------------------------------------------------------------------------------

template <class Record>
std::string dumpedRecord(const std::string& name, const std::vector<Member>& members)
{
    // Plain records have equal offsets and sizes on 64 bit and ARM; records with strings do not.
    constexpr bool plain = std::is_pod_v<Record>;
    std::ostringstream out;
    out << "record " << name;
    if (typeName<Record>() != name)
        out << ", struct " << typeName<Record>();
    if constexpr (QMetaTypeId2<Record>::Defined)
        out << ", metatype " << QMetaType::typeName(qMetaTypeId<Record>());
    if (plain)
        out << ", size " << sizeof(Record) << ", alignment " << alignof(Record);
    out << '\n';
    const std::size_t end = std::is_empty_v<Record> ? 0 : sizeof(Record);
    for (const Member& field : fieldsOf(name, members, 0, end, alignof(Record))) {
        out << "    ";
        if (plain)
            out << field.place << ' ';
        out << field.type << ' ' << field.name << '\n';
    }
    return out.str();
}

// Only a macro can turn a name into text.
#define M(name) member(#name, &Seen::name)
#define RECORD(record, ...)                                                                        \
    [] {                                                                                           \
        using Seen = record;                                                                       \
        return dumpedRecord<Seen>(#record, {__VA_ARGS__});                                         \
    }()
#define VALUE(name) " " #name "=" + std::to_string(name)

// clang-format off
std::string records()
{
    return RECORD(systemInfo, M(day), M(month), M(year), M(serialNo), M(moduleName), M(hwCode),
                  M(hwSubCode), M(manufactureCode), M(hwDispID))
        + RECORD(bootldrInfo, M(type), M(day), M(month), M(year), M(version))
        + RECORD(ovikStorageInfo, M(mountPoint), M(deviceType), M(totalSpace), M(freeSpace),
                 M(accessFlag))
        + RECORD(timeZoneInfo, M(stdMonth), M(stdWeek), M(stdDay), M(stdHour), M(stdMinute),
                 M(stdOffset), M(dlsMonth), M(dlsWeek), M(dlsDay), M(dlsHour), M(dlsMinute),
                 M(dlsOffset), M(mode))
        + RECORD(splashImageInfo, M(x), M(y))
        + RECORD(sSEEModule, M(Name), M(Hcode), M(Hsubcode), M(Xcode), M(Xsubcode), M(FunctArea))
        + RECORD(sensorData, M(value), M(status))
        + RECORD(accelerometerAxisData, M(accel_x), M(accel_y), M(accel_z))
        + RECORD(accelerometerAngleData, M(angle_xy), M(angle_xz), M(angle_yz))
        + RECORD(accelAxisData, M(axes), M(status))
        + RECORD(accelAngleData, M(angles), M(status))
        + RECORD(screenSaturationInfo, M(red), M(green), M(blue))
        + RECORD(systemSpecs, M(type), M(cpu), M(part), M(video), M(net), M(sensors), M(panelModel))
        + RECORD(systemSpecs::Cpu, M(name), M(isImx))
        + RECORD(systemSpecs::Part, M(xloader), M(bootloader), M(fpga), M(hasXloader), M(hasFPGA),
                 M(isPortable))
        + RECORD(systemSpecs::Part::XLoader)
        + RECORD(systemSpecs::Part::BootLoader)
        + RECORD(systemSpecs::Part::Fpga, M(length))
        + RECORD(systemSpecs::Video, M(hasGammaCorrection), M(hasColorCorrection),
                 M(hasAutoCalibration), M(hasOrientation))
        + RECORD(systemSpecs::Net, M(ethNum), M(bridge), M(hwSwitch), M(wifi))
        + RECORD(systemSpecs::Net::Bridge, M(disabled))
        + RECORD(systemSpecs::Net::HwSwitch, M(isManaged), M(interfaces), M(port), M(mac))
        + RECORD(systemSpecs::Net::Wifi, M(internalDisabled), M(hasAntennaMode), M(antennaMode))
        + RECORD(systemSpecs::Sensors, M(hasTemperature), M(hasTemperatureOffset), M(hasHumidity),
                 M(hasHumidityOffset), M(hasPressure), M(hasVoltage), M(hasCurrent),
                 M(hasAccelerometer))
        + RECORD(PanelModel, M(family_id), M(disp_size), M(subfamily_id), M(hw_revision));
}

std::string values()
{
    return std::string("values")
        + VALUE(IOVIK::restoreNetwork) + VALUE(IOVIK::restoreDisplay)
        + VALUE(IOVIK::restoreServices) + VALUE(IOVIK::restoreUsers) + VALUE(IOVIK::restoreSettings)
        + VALUE(IOVIK::restoreAll) + "\nvalues"
        + VALUE(INetworkManager::ApplyNone) + VALUE(INetworkManager::ApplyDns)
        + VALUE(INetworkManager::ApplyHostname) + VALUE(INetworkManager::ApplyInterfaces)
        + VALUE(INetworkManager::ApplyWifi) + VALUE(INetworkManager::ApplyAll) + "\nvalues"
        + VALUE(IImageTransferProcess::Idle) + VALUE(IImageTransferProcess::Running)
        + VALUE(IImageTransferProcess::Ok) + VALUE(IImageTransferProcess::Error) + "\nvalues"
        + VALUE(IJobProcess::Idle) + VALUE(IJobProcess::Running) + VALUE(IJobProcess::Ok)
        + VALUE(IJobProcess::Error) + VALUE(IJobProcess::Reboot) + "\nvalues"
        + VALUE(ICANManager::NoWakeup) + VALUE(ICANManager::Wakeup) + "\n";
}
// clang-format on

// --- Classes -------------------------------------------------------------------------------------

std::string parametersOf(const QMetaMethod& method)
{
    std::string text;
    for (int i = 0; i < method.parameterCount(); ++i) {
        const QByteArray name = method.parameterNames().at(i);
        EXPECT_TRUE(!name.isEmpty() || method.methodType() == QMetaMethod::Signal)
            << method.methodSignature().constData() << " has a parameter without a name";
        text += (i ? ", " : "") + method.parameterTypes().at(i).toStdString();
        text += (name.isEmpty() ? "" : " ") + name.toStdString();
    }
    return '(' + text + ')';
}

std::string declarationOf(const QMetaMethod& method)
{
    static const char* const accesses[] = {"private ", "protected ", ""};
    static const char* const kinds[] = {"invokable ", "signal ", "slot ", "constructor "};
    return accesses[method.access()] + std::string(kinds[method.methodType()]) + method.typeName() +
           ' ' + method.name().toStdString();
}

/// True when the method has the same declaration in the base class, except for parameter names.
bool overrides(const QMetaObject& base, const QMetaMethod& method)
{
    const int index = base.indexOfMethod(method.methodSignature());
    return index >= 0 && declarationOf(base.method(index)) == declarationOf(method);
}

/// @param size 0 when the data members are not part of the contract
std::string dumpedClass(const QMetaObject& meta, std::size_t virtualEnd, std::size_t size,
                        std::size_t alignment, const std::vector<Member>& members)
{
    const std::string name = meta.className();
    std::map<std::string, Member> virtuals;
    std::set<std::size_t> places;
    for (const Member& m : members) {
        if (m.kind == Member::Virtual) {
            virtuals[m.name] = m;
            places.insert(m.place);
        }
    }
    for (std::size_t i = places.empty() ? virtualEnd : *places.begin(); i < virtualEnd; ++i)
        EXPECT_EQ(places.count(i), 1u) << name << ": list the virtual operation at +" << i;

    std::ostringstream out;
    out << "class " << name << " : " << meta.superClass()->className()
        << ", virtual operations end at +" << virtualEnd << '\n';
    const auto virtualPart = [](const Member& m) {
        return ", +" + std::to_string(m.place) + ' ' + m.type + '\n';
    };
    int overridden = 0;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const std::string parameters = parametersOf(method);
        const auto found = virtuals.find(method.name().toStdString());
        if (found == virtuals.end() && overrides(*meta.superClass(), method)) {
            ++overridden;
            continue;
        }
        out << "    " << declarationOf(method) << parameters;
        // The variants with default arguments follow the full method.
        int optional = 0;
        while (i + 1 < meta.methodCount() && meta.method(i + 1).attributes() & QMetaMethod::Cloned)
            ++optional, ++i;
        if (optional)
            out << ", optional " << optional;
        out << (found == virtuals.end() ? "\n" : virtualPart(found->second));
        if (found != virtuals.end())
            virtuals.erase(found);
    }
    if (overridden)
        out << "    overrides " << overridden << '\n';
    for (const auto& [virtualName, m] : virtuals)
        out << "    virtual " << virtualName << virtualPart(m);
    for (const Member& m : members) {
        if (m.kind == Member::Static)
            out << "    static " << m.type << ' ' << m.name << '\n';
    }
    if (size > 0) {
        for (const Member& m : fieldsOf(name, members, sizeof(QObject), size, alignment))
            out << "    field " << m.type << ' ' << m.name << '\n';
    }
    return out.str();
}

static_assert(sizeof(QThread) == sizeof(QObject), "the data members follow those of either base");

// "Seen" is a derived class, which gives access to protected members. The library creates the
// objects of its own classes, so their data members are part of the contract.
#define DUMPED(seenClass, size, ...)                                                               \
    [] {                                                                                           \
        struct Seen : seenClass {                                                                  \
            virtual void next() {}                                                                 \
            static std::string dumped()                                                            \
            {                                                                                      \
                return dumpedClass(seenClass::staticMetaObject,                                    \
                                   virtualIndex(&Seen::next) - ObjectEnd::index(), size,           \
                                   alignof(seenClass), {__VA_ARGS__});                             \
            }                                                                                      \
        };                                                                                         \
        return Seen::dumped();                                                                     \
    }()
#define PLATFORM(seenClass, ...) DUMPED(seenClass, sizeof(seenClass), __VA_ARGS__)
#define CLASS(seenClass, ...) DUMPED(seenClass, 0, __VA_ARGS__)

// clang-format off
std::string platformClasses()
{
    return PLATFORM(ISystemInfo, M(specs), M(info), M(infoJSON), M(day), M(month), M(year),
                 M(serialNo), M(moduleName), M(hwCode), M(hwSubCode), M(manufactureCode),
                 M(hwDispID), M(m_systemInfo), M(m_systemInfoJSON), M(m_systemSpecs))
        + PLATFORM(IPartitionInfo, M(type), M(day), M(month), M(year), M(version), M(info),
                 M(m_partitionInfo))
        + PLATFORM(IBootLoaderInfo, M(info), M(m_partitionInfo))
        + PLATFORM(IXLoaderInfo, M(info), M(m_partitionInfo))
        + PLATFORM(IMainOSInfo, M(info), M(m_partitionInfo))
        + PLATFORM(IConfigOSInfo, M(info), M(m_partitionInfo))
        + PLATFORM(ISplashImageInfo, M(x), M(y), M(info), M(m_splashImageInfo))
        + PLATFORM(II2CSEEPROM, M(read), M(write), M(readSlvAddr), M(writeSlvAddr),
                 M(getSerialNumber), M(writeSerialNumber), M(getCustomerSerialNumber),
                 M(writeCustomerSerialNumber), M(bitInSWModuleFlagArea))
        + PLATFORM(IBacklight, M(setBacklightTimeout), M(backlightTimeout), M(setBrightness),
                 M(saveBrightness), M(getBrightness), M(syncBrightness), M(offBrightness),
                 M(DPMSOn), M(DPMSOff), M(stateNotification), M(state))
        + PLATFORM(IBuzzer, M(beep), M(SetBuzzerMode), M(GetBuzzerMode), M(SetBuzzerUserControl),
                 M(GetBuzzerUserControl), M(SetBuzzerOnTime), M(SetBuzzerOffTime),
                 M(GetBuzzerOnTime), M(GetBuzzerOffTime), M(SetBuzzerFrequency),
                 M(GetBuzzerFrequency), M(on), M(off))
        + PLATFORM(IPlatformLeds, M(maxLeds), M(flash), M(blink), M(SetLedMode), M(GetLedMode),
                 M(SetLedUserControl), M(GetLedUserControl), M(SetLedOnTime), M(SetLedOffTime),
                 M(GetLedOnTime), M(GetLedOffTime), M(SetLedValue), M(GetLedValue))
        + PLATFORM(IPlatformSensors, M(battery), M(accelerometerAxis), M(accelerometerAngle),
                 M(absorbedCurrent), M(workingVoltage), M(pressure), M(temperature), M(humidity),
                 M(readGenericSensor), M(maxIos), M(setIoMode), M(getIoMode), M(readIo),
                 M(writeIo), M(illuminance))
        + PLATFORM(INFCReader, M(read), M(write), M(start), M(stop), M(readJSON), M(writeJSON),
                 M(fnNotifyCallback))
        + PLATFORM(IHWPluginInstance, M(getLeds), M(getSensors), M(m_slot))
        + PLATFORM(IPluginLeds, M(GetLedMode), M(SetLedUserControl), M(flash), M(blink),
                 M(SetLedOnTime), M(SetLedOffTime), M(SetLedValue))
        + PLATFORM(IPluginSensors, M(getIoMode), M(readIo), M(writeIo))
        + PLATFORM(IHWPlugin, M(seepromRead), M(seepromWrite), M(signature), M(signatureName),
                 M(signatureHCode), M(signatureHSubCode), M(signatureXCode), M(signatureXSubCode),
                 M(signatureFunctArea), M(m_signature))
        + PLATFORM(IImageTransferProcess, M(run), M(transferId), M(status), M(md5), M(m_status),
                 M(m_transferId), M(md5sum), M(m_transferIdMutex), M(m_ProcessMutex),
                 M(m_incrementalTransferId))
        + PLATFORM(IJobProcess, M(run), M(jobId), M(status), M(m_status), M(m_statusMessage),
                 M(m_jobId), M(m_jobIdMutex), M(m_ProcessMutex), M(m_incrementalJobId))
        + PLATFORM(IOVIK, M(setSystemParameter), M(setSystemParametersJSON), M(getSystemParameter),
                 M(getAllSystemParametersJSON), M(setVolatileParameter), M(getVolatileParameter),
                 M(getAllVolatileParametersJSON), M(setScreenOrientation),
                 M(getScreenOrientation), M(setScreenHue), M(getScreenHue),
                 M(setScreenWhiteBalance), M(getScreenWhiteBalance), M(setScreenSaturation),
                 M(getScreenSaturation), M(lockScreen), M(lockScreenSupported), M(unlockScreen),
                 M(mouseNotification), M(mouseStatus), M(updateCursorVisibility),
                 M(restartSystem), M(restartSystemWithImage), M(dualBootMode),
                 M(clearTimeCounters), M(getSysCounter), M(getBlightCounter),
                 M(applyDefaultSettings), M(restoreDefaultSettings), M(loadMachineFile),
                 M(removeMachineFile), M(uploadImage), M(uploadRawImage), M(downloadImage),
                 M(liveDownloadImage), M(checkImage), M(formatImage), M(getLastUpdateStatus),
                 M(setWCE7Calibration), M(reformatWCE7), M(reformatExtendedData),
                 M(reformatSecondaryPartitions), M(reformatWithTemplate), M(isServiceControlled),
                 M(getScreenshot), M(moveToLiveFs))
        + PLATFORM(ISysStat, M(getAvailableMemory), M(monitorSystemResources),
                 M(setLowMemoryThreshold), M(getLowMemoryThreshold), M(m_lowMemoryThreshold))
        + PLATFORM(IStorageManager, M(getUserSpaceMountPoint), M(getUSBMountPoint),
                 M(getSDCardMountPoint), M(getHMIInstallationFolder), M(getStorageDeviceList),
                 M(getDynamicStorageDeviceList), M(isAppRunning),
                 M(getSecurityMarginInOSForFlash), M(getStorageInfo), M(getStorageInfoJSON),
                 M(getShareInfo))
        + PLATFORM(INetworkManager, M(getConfigJSON), M(getInterfaceConfig),
                 M(setInterfaceConfigJSON), M(setConfigJSON), M(resetConfiguration),
                 M(applyNewConfiguration), M(updateInterfaces), M(interfaceStateNotification))
        + PLATFORM(ITimeManager, M(getTZENVFile), M(updateTimeZoneInfo), M(getTimeZoneInfo),
                 M(setTimeZoneInfo))
        + PLATFORM(IServiceManager, M(start), M(stop), M(restart), M(reload), M(enable), M(disable),
                 M(enabled), M(apply), M(controlled), M(state), M(command),
                 M(getVolatileParameter), M(fnWifiInterfaceCallback))
        + PLATFORM(ICANManager, M(sleep));
}

std::string proxyClasses()
{
    return CLASS(IOvikInterface, M(init), M(shutdown), M(isValid), M(systemInfoProxy),
              M(buzzerProxy), M(backlightProxy))
        + CLASS(IBacklightProxy, M(isValid), M(getBrightness), M(saveBrightness))
        + CLASS(IBuzzerProxy, M(isValid), M(setBuzzerMode), M(getBuzzerMode),
              M(setBuzzerUserControl), M(setBuzzerOnTime), M(setBuzzerOffTime))
        + CLASS(IHWPluginInstanceProxy, M(isValid), M(getLeds), M(getSensors), M(m_slot))
        + CLASS(IMainOsProxy, M(isValid), M(version))
        + CLASS(INetworkManagerProxy, M(isValid), M(getConfigJson), M(setInterfaceConfigJson),
              M(applyNewConfiguration))
        + CLASS(IOvikProxy, M(isValid), M(getSysCounter), M(getBackLightCounter),
              M(getVolatileParameter), M(getSystemParameter), M(getAllVolatileParametersJson),
              M(getAllSystemParametersJson), M(setVolatileParameter), M(setSystemParameter),
              M(setSystemParametersJSON))
        + CLASS(ISeepromProxy, M(isValid), M(read), M(readSlave))
        + CLASS(IServiceManagerProxy, M(isValid), M(start), M(stop), M(restart), M(reload),
              M(enable), M(disable), M(enabled), M(apply), M(controlled), M(state), M(command),
              M(onCommandResult))
        + CLASS(IStorageManagerProxy, M(isValid), M(getStorageInfo), M(getStorageInfoJson))
        + CLASS(ISysStatProxy, M(isValid), M(availableMemory))
        + CLASS(ISystemInfoProxy, M(isValid), M(getSystemInfo))
        + CLASS(ComWenuOVIKInterface, M(getAllSystemParametersJSON), M(getVolatileParameter),
              M(getAllVolatileParametersJSON))
        + CLASS(OVIKInterfaceDbus, M(seepromProxy), M(ovikProxy), M(mainOsProxy),
              M(storageManagerProxy), M(sysStatProxy), M(networkManagerProxy),
              M(HWPluginInstanceProxy), M(serviceManagerProxy))
        + CLASS(BacklightProxyDbus)
        + CLASS(BuzzerProxyDbus)
        + CLASS(HWPluginInstanceProxyDbus)
        + CLASS(MainOsProxyDbus)
        + CLASS(NetworkManagerProxyDbus)
        + CLASS(OvikProxyDbus)
        + CLASS(PluginLedsProxyDbus)
        + CLASS(PluginSensorsProxyDbus)
        + CLASS(SeepromProxyDbus)
        + CLASS(ServiceManagerProxyDbus)
        + CLASS(StorageManagerProxyDbus)
        + CLASS(SysStatProxyDbus)
        + CLASS(SystemInfoProxyDbus)
        + CLASS(OVIKInterfaceLocal, M(ovikProxy), M(mainOsProxy), M(storageManagerProxy),
              M(sysStatProxy), M(networkManagerProxy))
        + CLASS(BacklightProxyLocal)
        + CLASS(BuzzerProxyLocal)
        + CLASS(MainOsProxyLocal)
        + CLASS(NetworkManagerProxyLocal)
        + CLASS(OvikProxyLocal)
        + CLASS(SeepromProxyLocal)
        + CLASS(StorageManagerProxyLocal)
        + CLASS(SysStatProxyLocal)
        + CLASS(SystemInfoProxyLocal);
}
// clang-format on

// --- D-Bus ---------------------------------------------------------------------------------------

std::string dbusInterfaces()
{
    std::ostringstream out;
    for (const std::string& name : interfaceNames()) {
        const Interface interface = introspectedFile(name)[name];
        out << "interface " << name << '\n';
        for (const auto& [method, types] : interface.methods)
            out << "    method " << method << ' ' << types << '\n';
        for (const auto& [event, types] : interface.events)
            out << "    signal " << event << ' ' << types << '\n';
    }
    return out.str();
}

/// The section of each record, class or interface: an unindented line and the lines below it.
std::map<std::string, std::string> sectionsOf(const std::string& text)
{
    std::map<std::string, std::string> sections;
    std::istringstream lines(text);
    std::string name;
    for (std::string line; std::getline(lines, line);) {
        if (line.front() != ' ')
            name = line.substr(0, line.find_first_of(" ,", line.find(' ') + 1));
        sections[name] += line + '\n';
    }
    return sections;
}

TEST(Contracts, AreThoseOfTheGoldenFile)
{
    const std::string dump =
        records() + values() + platformClasses() + proxyClasses() + dbusInterfaces();
    const char* const path = OVIK_GOLDEN_CONTRACTS;
    if (getenv("OVIK_WRITE_GOLDEN")) {
        std::ofstream(path) << dump;
        return;
    }
    std::ifstream file(path);
    auto golden = sectionsOf({std::istreambuf_iterator<char>(file), {}});
    for (const auto& [name, section] : sectionsOf(dump)) {
        EXPECT_EQ(section, golden[name]) << "if the change is wanted: scripts/generate.sh";
        golden.erase(name);
    }
    for (const auto& [name, section] : golden)
        ADD_FAILURE() << name << " is gone; if that is wanted: scripts/generate.sh";
}

TEST(Contracts, TheFactoryGivesAnObjectForAnInstanceName)
{
    EXPECT_EQ(typeName<OvikPluginFactory_getInstance_function>(), "QObject* (*)(char const*)");
}
} // namespace
