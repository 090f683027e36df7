/* Order and shape of the operations that the platform library is called through. */
#include "IProxy/OVIKPlatformInterface.h"

#include "tests/support/virtual_slot.h"

#include <QMetaMethod>
#include <QMetaObject>
#include <cstddef>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using Names = std::vector<std::string>;

struct Operation {
    std::string declaration; /* as the meta-object spells it, without const */
    std::size_t slot;
    QMetaMethod::Access access;
};

struct Interface {
    const QMetaObject* meta;
    std::size_t firstSlot;
    Names signalList;
    std::vector<Operation> operations;
    Names shortForms; /* what remains callable with defaulted arguments left out */
};

void PrintTo(const Interface& interface, std::ostream* stream)
{
    *stream << interface.meta->className();
}

template <typename Result, typename Class, typename... Args>
Operation op(const char* declaration, Result (Class::*member)(Args...),
             QMetaMethod::Access access = QMetaMethod::Public)
{
    return {declaration, virtualSlot(member), access};
}

template <typename Result, typename Class, typename... Args>
Operation constOp(const char* declaration, Result (Class::*member)(Args...) const)
{
    return {declaration, virtualSlot(member), QMetaMethod::Public};
}

struct ThreadBase : QThread {
    static std::size_t slotOfRun() { return virtualSlot(&ThreadBase::run); }
};

struct BuzzerAccess : IBuzzer {
    static Operation onOperation()
    {
        return op("int on(int)", &BuzzerAccess::on, QMetaMethod::Protected);
    }
    static Operation offOperation()
    {
        return op("int off()", &BuzzerAccess::off, QMetaMethod::Protected);
    }
};

std::vector<Interface> serviceInterfaces()
{
    return {
        {&IOVIK::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)", "void mousePlugEvent(int)"},
         {op("int setSystemParameter(QString,QString,bool)", &IOVIK::setSystemParameter),
          op("int setSystemParametersJSON(QString,QString)", &IOVIK::setSystemParametersJSON),
          op("QString getSystemParameter(QString)", &IOVIK::getSystemParameter),
          op("QString getAllSystemParametersJSON()", &IOVIK::getAllSystemParametersJSON),
          op("int setVolatileParameter(QString,QString)", &IOVIK::setVolatileParameter),
          op("QString getVolatileParameter(QString)", &IOVIK::getVolatileParameter),
          op("QString getAllVolatileParametersJSON()", &IOVIK::getAllVolatileParametersJSON),
          op("int setScreenOrientation(int)", &IOVIK::setScreenOrientation),
          op("int getScreenOrientation()", &IOVIK::getScreenOrientation),
          op("int setScreenHue(int)", &IOVIK::setScreenHue),
          op("int getScreenHue()", &IOVIK::getScreenHue),
          op("int setScreenWhiteBalance(int)", &IOVIK::setScreenWhiteBalance),
          op("int getScreenWhiteBalance()", &IOVIK::getScreenWhiteBalance),
          op("int setScreenSaturation(int,int,int)", &IOVIK::setScreenSaturation),
          op("screenSaturationInfo getScreenSaturation()", &IOVIK::getScreenSaturation),
          op("int lockScreen(QString)", &IOVIK::lockScreen),
          op("int lockScreenSupported()", &IOVIK::lockScreenSupported),
          op("int unlockScreen(QString)", &IOVIK::unlockScreen),
          op("void mouseNotification(int)", &IOVIK::mouseNotification),
          op("int mouseStatus(QString)", &IOVIK::mouseStatus),
          op("void updateCursorVisibility()", &IOVIK::updateCursorVisibility),
          op("int restartSystem()", &IOVIK::restartSystem),
          op("int restartSystemWithImage(int)", &IOVIK::restartSystemWithImage),
          op("QString dualBootMode()", &IOVIK::dualBootMode),
          op("int clearTimeCounters(int)", &IOVIK::clearTimeCounters),
          op("int getSysCounter()", &IOVIK::getSysCounter),
          op("int getBlightCounter()", &IOVIK::getBlightCounter),
          op("int applyDefaultSettings(QString,int)", &IOVIK::applyDefaultSettings),
          op("int restoreDefaultSettings(int)", &IOVIK::restoreDefaultSettings),
          op("int loadMachineFile(QByteArray)", &IOVIK::loadMachineFile),
          op("int removeMachineFile()", &IOVIK::removeMachineFile),
          op("IImageTransferProcess* uploadImage(QString,QString,bool)", &IOVIK::uploadImage),
          op("IImageTransferProcess* uploadRawImage(QString,QString,bool)", &IOVIK::uploadRawImage),
          op("IImageTransferProcess* "
             "downloadImage(QString,QString,QString,bool,QString,QString,bool)",
             &IOVIK::downloadImage),
          op("IImageTransferProcess* "
             "liveDownloadImage(QString,QString,bool,QString,QString,QString,qlonglong,QString,"
             "QString,bool,bool,bool)",
             &IOVIK::liveDownloadImage),
          op("IJobProcess* checkImage(QString)", &IOVIK::checkImage),
          op("IJobProcess* formatImage(QString,bool)", &IOVIK::formatImage),
          op("void getLastUpdateStatus(int&,QString&)", &IOVIK::getLastUpdateStatus),
          op("int setWCE7Calibration()", &IOVIK::setWCE7Calibration),
          op("int reformatWCE7()", &IOVIK::reformatWCE7),
          op("int reformatExtendedData()", &IOVIK::reformatExtendedData),
          op("int reformatSecondaryPartitions()", &IOVIK::reformatSecondaryPartitions),
          op("int reformatWithTemplate(QString)", &IOVIK::reformatWithTemplate),
          op("bool isServiceControlled(QString)", &IOVIK::isServiceControlled),
          op("int getScreenshot(QString,QString)", &IOVIK::getScreenshot),
          op("int moveToLiveFs(QString)", &IOVIK::moveToLiveFs)},
         {"int setSystemParameter(QString,QString)", "int applyDefaultSettings(QString)",
          "int applyDefaultSettings()", "int restoreDefaultSettings()"}},
        {&ISysStat::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void lowMemory(qulonglong)"},
         {op("qulonglong getAvailableMemory()", &ISysStat::getAvailableMemory),
          op("void monitorSystemResources(int,int)", &ISysStat::monitorSystemResources),
          op("void setLowMemoryThreshold(qulonglong)", &ISysStat::setLowMemoryThreshold),
          constOp("qulonglong getLowMemoryThreshold()", &ISysStat::getLowMemoryThreshold)},
         {"void monitorSystemResources(int)", "void monitorSystemResources()"}},
        {&IStorageManager::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)"},
         {op("QString getUserSpaceMountPoint()", &IStorageManager::getUserSpaceMountPoint),
          op("QString getUSBMountPoint()", &IStorageManager::getUSBMountPoint),
          op("QString getSDCardMountPoint()", &IStorageManager::getSDCardMountPoint),
          op("QString getHMIInstallationFolder()", &IStorageManager::getHMIInstallationFolder),
          op("QString getStorageDeviceList()", &IStorageManager::getStorageDeviceList),
          op("QString getDynamicStorageDeviceList()",
             &IStorageManager::getDynamicStorageDeviceList),
          op("int isAppRunning(QString)", &IStorageManager::isAppRunning),
          op("int getSecurityMarginInOSForFlash()",
             &IStorageManager::getSecurityMarginInOSForFlash),
          op("ovikStorageInfo getStorageInfo(QString)", &IStorageManager::getStorageInfo),
          op("QString getStorageInfoJSON(QString)", &IStorageManager::getStorageInfoJSON),
          op("ovikStorageInfo getShareInfo(QString,int)", &IStorageManager::getShareInfo)},
         {}},
        {&INetworkManager::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void result(int)", "void interfaceStateChanged(QString,int)"},
         {op("QString getConfigJSON(QString)", &INetworkManager::getConfigJSON),
          op("QString getInterfaceConfig(QString)", &INetworkManager::getInterfaceConfig),
          op("int setInterfaceConfigJSON(QString,QString)",
             &INetworkManager::setInterfaceConfigJSON),
          op("int setConfigJSON(QString,QString,bool)", &INetworkManager::setConfigJSON),
          op("int resetConfiguration()", &INetworkManager::resetConfiguration),
          op("int applyNewConfiguration(bool)", &INetworkManager::applyNewConfiguration),
          op("int updateInterfaces(bool)", &INetworkManager::updateInterfaces),
          op("void interfaceStateNotification(QString,int)",
             &INetworkManager::interfaceStateNotification)},
         {"QString getConfigJSON()", "int setConfigJSON(QString,QString)",
          "int setConfigJSON(QString)"}},
        {&ITimeManager::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)"},
         {op("QString getTZENVFile()", &ITimeManager::getTZENVFile),
          op("int updateTimeZoneInfo()", &ITimeManager::updateTimeZoneInfo),
          op("timeZoneInfo getTimeZoneInfo()", &ITimeManager::getTimeZoneInfo),
          op("int setTimeZoneInfo(timeZoneInfo)", &ITimeManager::setTimeZoneInfo)},
         {}},
        {&IServiceManager::staticMetaObject,
         ObjectBase::slotAfter(),
         {},
         {op("int start(QString)", &IServiceManager::start),
          op("int stop(QString)", &IServiceManager::stop),
          op("int restart(QString)", &IServiceManager::restart),
          op("int reload(QString)", &IServiceManager::reload),
          op("int enable(QString)", &IServiceManager::enable),
          op("int disable(QString)", &IServiceManager::disable),
          op("bool enabled(QString)", &IServiceManager::enabled),
          op("int apply(QString)", &IServiceManager::apply),
          op("bool controlled(QString)", &IServiceManager::controlled),
          op("int state(QString)", &IServiceManager::state),
          op("int command(QString,QString,QString)", &IServiceManager::command),
          op("QString getVolatileParameter(QString)", &IServiceManager::getVolatileParameter)},
         {}},
        {&ICANManager::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)"},
         {op("int sleep(QString,Mode,u_int32_t,u_int32_t,bool)", &ICANManager::sleep)},
         {"int sleep(QString,Mode,u_int32_t,u_int32_t)", "int sleep(QString,Mode,u_int32_t)",
          "int sleep(QString,Mode)", "int sleep(QString)", "int sleep()"}}};
}

std::vector<Interface> infoInterfaces()
{
    return {
        {&ISystemInfo::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)"},
         {op("systemSpecs specs()", &ISystemInfo::specs),
          op("systemInfo info()", &ISystemInfo::info),
          op("QString infoJSON()", &ISystemInfo::infoJSON), op("uchar day()", &ISystemInfo::day),
          op("uchar month()", &ISystemInfo::month), op("uchar year()", &ISystemInfo::year),
          op("QByteArray serialNo()", &ISystemInfo::serialNo),
          op("QByteArray moduleName()", &ISystemInfo::moduleName),
          op("uchar hwCode()", &ISystemInfo::hwCode),
          op("uchar hwSubCode()", &ISystemInfo::hwSubCode),
          op("QByteArray manufactureCode()", &ISystemInfo::manufactureCode),
          op("uchar hwDispID()", &ISystemInfo::hwDispID)},
         {}},
        {&IPartitionInfo::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)"},
         {op("uchar type()", &IPartitionInfo::type), op("uchar day()", &IPartitionInfo::day),
          op("uchar month()", &IPartitionInfo::month), op("uchar year()", &IPartitionInfo::year),
          op("QByteArray version()", &IPartitionInfo::version),
          op("bootldrInfo info()", &IPartitionInfo::info)},
         {}},
        {&IBootLoaderInfo::staticMetaObject,
         virtualSlot(&IPartitionInfo::info),
         {},
         {op("partitionInfo info()", &IBootLoaderInfo::info)},
         {}},
        {&IXLoaderInfo::staticMetaObject,
         virtualSlot(&IPartitionInfo::info),
         {},
         {op("partitionInfo info()", &IXLoaderInfo::info)},
         {}},
        {&IMainOSInfo::staticMetaObject,
         virtualSlot(&IPartitionInfo::info),
         {},
         {op("partitionInfo info()", &IMainOSInfo::info)},
         {}},
        {&IConfigOSInfo::staticMetaObject,
         virtualSlot(&IPartitionInfo::info),
         {},
         {op("partitionInfo info()", &IConfigOSInfo::info)},
         {}},
        {&ISplashImageInfo::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)"},
         {op("uint x()", &ISplashImageInfo::x), op("uint y()", &ISplashImageInfo::y),
          op("splashImageInfo info()", &ISplashImageInfo::info)},
         {}}};
}

std::vector<Interface> deviceInterfaces()
{
    return {
        {&II2CSEEPROM::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)"},
         {op("int read(uchar,uint,QByteArray&)", &II2CSEEPROM::read),
          op("int write(uchar,QByteArray)", &II2CSEEPROM::write),
          op("int readSlvAddr(uchar,uchar,uint,QByteArray&)", &II2CSEEPROM::readSlvAddr),
          op("int writeSlvAddr(uchar,uchar,QByteArray)", &II2CSEEPROM::writeSlvAddr),
          op("int getSerialNumber(QByteArray&)", &II2CSEEPROM::getSerialNumber),
          op("int writeSerialNumber(QByteArray)", &II2CSEEPROM::writeSerialNumber),
          op("int getCustomerSerialNumber(QByteArray&)", &II2CSEEPROM::getCustomerSerialNumber),
          op("int writeCustomerSerialNumber(QByteArray)", &II2CSEEPROM::writeCustomerSerialNumber),
          op("bool bitInSWModuleFlagArea(uint)", &II2CSEEPROM::bitInSWModuleFlagArea)},
         {}},
        {&IBacklight::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void stateChanged(QString,int)", "void error(QString)"},
         {op("int setBacklightTimeout(QString,int)", &IBacklight::setBacklightTimeout),
          op("int backlightTimeout(QString)", &IBacklight::backlightTimeout),
          op("int setBrightness(int)", &IBacklight::setBrightness),
          op("int saveBrightness(int)", &IBacklight::saveBrightness),
          op("int getBrightness()", &IBacklight::getBrightness),
          op("int syncBrightness()", &IBacklight::syncBrightness),
          op("int offBrightness()", &IBacklight::offBrightness),
          op("int DPMSOn()", &IBacklight::DPMSOn), op("int DPMSOff()", &IBacklight::DPMSOff),
          op("void stateNotification(QString,int)", &IBacklight::stateNotification),
          op("int state(QString)", &IBacklight::state)},
         {"int state()"}},
        {&IBuzzer::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)"},
         {op("int beep(int,int)", &IBuzzer::beep),
          op("int SetBuzzerMode(int)", &IBuzzer::SetBuzzerMode),
          op("int GetBuzzerMode()", &IBuzzer::GetBuzzerMode),
          op("int SetBuzzerUserControl(int)", &IBuzzer::SetBuzzerUserControl),
          op("int GetBuzzerUserControl()", &IBuzzer::GetBuzzerUserControl),
          op("int SetBuzzerOnTime(int)", &IBuzzer::SetBuzzerOnTime),
          op("int SetBuzzerOffTime(int)", &IBuzzer::SetBuzzerOffTime),
          op("int GetBuzzerOnTime()", &IBuzzer::GetBuzzerOnTime),
          op("int GetBuzzerOffTime()", &IBuzzer::GetBuzzerOffTime),
          op("int SetBuzzerFrequency(int)", &IBuzzer::SetBuzzerFrequency),
          op("int GetBuzzerFrequency()", &IBuzzer::GetBuzzerFrequency), BuzzerAccess::onOperation(),
          BuzzerAccess::offOperation()},
         {"int beep(int)", "int beep()"}},
        {&IPlatformLeds::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)"},
         {constOp("int maxLeds()", &IPlatformLeds::maxLeds),
          op("int flash(uint,uint,int)", &IPlatformLeds::flash),
          op("int blink(uint,uint,int,int)", &IPlatformLeds::blink),
          op("int SetLedMode(uint,int)", &IPlatformLeds::SetLedMode),
          constOp("int GetLedMode(uint)", &IPlatformLeds::GetLedMode),
          op("int SetLedUserControl(uint,int)", &IPlatformLeds::SetLedUserControl),
          constOp("int GetLedUserControl(uint)", &IPlatformLeds::GetLedUserControl),
          op("int SetLedOnTime(uint,int)", &IPlatformLeds::SetLedOnTime),
          op("int SetLedOffTime(uint,int)", &IPlatformLeds::SetLedOffTime),
          constOp("int GetLedOnTime(uint)", &IPlatformLeds::GetLedOnTime),
          constOp("int GetLedOffTime(uint)", &IPlatformLeds::GetLedOffTime),
          op("int SetLedValue(uint,uint)", &IPlatformLeds::SetLedValue),
          constOp("uint GetLedValue(uint)", &IPlatformLeds::GetLedValue)},
         {"int flash(uint,uint)", "int flash(uint)", "int blink(uint,uint,int)",
          "int blink(uint,uint)", "int blink(uint)"}},
        {&IPlatformSensors::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void error(QString)"},
         {op("sensorData battery()", &IPlatformSensors::battery),
          op("accelAxisData accelerometerAxis()", &IPlatformSensors::accelerometerAxis),
          op("accelAngleData accelerometerAngle()", &IPlatformSensors::accelerometerAngle),
          op("sensorData absorbedCurrent()", &IPlatformSensors::absorbedCurrent),
          op("sensorData workingVoltage(int)", &IPlatformSensors::workingVoltage),
          op("sensorData pressure()", &IPlatformSensors::pressure),
          op("sensorData temperature()", &IPlatformSensors::temperature),
          op("sensorData humidity()", &IPlatformSensors::humidity),
          op("QByteArray readGenericSensor(QString)", &IPlatformSensors::readGenericSensor),
          op("int maxIos()", &IPlatformSensors::maxIos),
          op("int setIoMode(uint,int)", &IPlatformSensors::setIoMode),
          op("int getIoMode(uint)", &IPlatformSensors::getIoMode),
          op("QByteArray readIo(uint,uint)", &IPlatformSensors::readIo),
          op("int writeIo(uint,QByteArray)", &IPlatformSensors::writeIo),
          op("sensorData illuminance()", &IPlatformSensors::illuminance)},
         {}},
        {&INFCReader::staticMetaObject,
         ObjectBase::slotAfter(),
         {"void dataChanged(QByteArray)", "void error(QString)", "void notifyJSON(QString)"},
         {op("QByteArray read(uint,uint)", &INFCReader::read),
          op("int write(QByteArray,uint)", &INFCReader::write),
          op("int start()", &INFCReader::start), op("int stop()", &INFCReader::stop),
          op("int readJSON(QString&)", &INFCReader::readJSON),
          op("int writeJSON(QString)", &INFCReader::writeJSON)},
         {"int write(QByteArray)"}}};
}

std::vector<Interface> pluginInterfaces()
{
    return {{&IHWPluginInstance::staticMetaObject,
             ObjectBase::slotAfter(),
             {},
             {op("IPlatformLeds* getLeds()", &IHWPluginInstance::getLeds),
              op("IPlatformSensors* getSensors()", &IHWPluginInstance::getSensors)},
             {}},
            {&IPluginLeds::staticMetaObject,
             ObjectBase::slotAfter(),
             {},
             {constOp("int GetLedMode(uint)", &IPluginLeds::GetLedMode),
              op("int SetLedUserControl(uint,int)", &IPluginLeds::SetLedUserControl),
              op("int flash(uint,uint,int)", &IPluginLeds::flash),
              op("int blink(uint,uint,int,int)", &IPluginLeds::blink),
              op("int SetLedOnTime(uint,int)", &IPluginLeds::SetLedOnTime),
              op("int SetLedOffTime(uint,int)", &IPluginLeds::SetLedOffTime),
              op("int SetLedValue(uint,uint)", &IPluginLeds::SetLedValue)},
             {}},
            {&IPluginSensors::staticMetaObject,
             ObjectBase::slotAfter(),
             {},
             {op("int getIoMode(uint)", &IPluginSensors::getIoMode),
              op("QByteArray readIo(uint,uint)", &IPluginSensors::readIo),
              op("int writeIo(uint,QByteArray)", &IPluginSensors::writeIo)},
             {}},
            {&IHWPlugin::staticMetaObject,
             ObjectBase::slotAfter(),
             {"void error(QString)"},
             {op("int seepromRead(uchar,uchar,uint,QByteArray&)", &IHWPlugin::seepromRead),
              op("int seepromWrite(uchar,uchar,QByteArray)", &IHWPlugin::seepromWrite),
              constOp("sSEEModule signature()", &IHWPlugin::signature),
              constOp("QByteArray signatureName()", &IHWPlugin::signatureName),
              constOp("uchar signatureHCode()", &IHWPlugin::signatureHCode),
              constOp("uchar signatureHSubCode()", &IHWPlugin::signatureHSubCode),
              constOp("uchar signatureXCode()", &IHWPlugin::signatureXCode),
              constOp("uchar signatureXSubCode()", &IHWPlugin::signatureXSubCode),
              constOp("QByteArray signatureFunctArea()", &IHWPlugin::signatureFunctArea)},
             {}}};
}

std::vector<Interface> processInterfaces()
{
    return {{&IImageTransferProcess::staticMetaObject,
             ThreadBase::slotOfRun(),
             {"void statusChanged(int)", "void progress(int)"},
             {op("void run()", &IImageTransferProcess::run),
              constOp("int transferId()", &IImageTransferProcess::transferId),
              op("int status()", &IImageTransferProcess::status),
              constOp("QByteArray md5()", &IImageTransferProcess::md5)},
             {}},
            {&IJobProcess::staticMetaObject,
             ThreadBase::slotOfRun(),
             {"void statusChanged(int,QString)", "void progress(int)"},
             {op("void run()", &IJobProcess::run), constOp("int jobId()", &IJobProcess::jobId),
              op("int status()", &IJobProcess::status)},
             {}}};
}

std::string declarationOf(const QMetaMethod& method)
{
    return std::string(method.typeName()) + " " + method.methodSignature().toStdString();
}

std::vector<QMetaMethod> ownMethods(const QMetaObject& meta, bool shortened)
{
    std::vector<QMetaMethod> methods;
    for (int index = meta.methodOffset(); index < meta.methodCount(); ++index) {
        const QMetaMethod method = meta.method(index);
        if (((method.attributes() & QMetaMethod::Cloned) != 0) == shortened)
            methods.push_back(method);
    }
    return methods;
}

void expectSame(const Names& found, const Names& expected)
{
    EXPECT_EQ(found.size(), expected.size());
    for (std::size_t index = 0; index < found.size() && index < expected.size(); ++index)
        EXPECT_EQ(found[index], expected[index]) << "at place " << index;
}

std::string interfaceName(const testing::TestParamInfo<Interface>& info)
{
    return info.param.meta->className();
}

class PlatformInterface : public testing::TestWithParam<Interface>
{
};

INSTANTIATE_TEST_SUITE_P(Services, PlatformInterface, testing::ValuesIn(serviceInterfaces()),
                         interfaceName);
INSTANTIATE_TEST_SUITE_P(Info, PlatformInterface, testing::ValuesIn(infoInterfaces()),
                         interfaceName);
INSTANTIATE_TEST_SUITE_P(Devices, PlatformInterface, testing::ValuesIn(deviceInterfaces()),
                         interfaceName);
INSTANTIATE_TEST_SUITE_P(Plugins, PlatformInterface, testing::ValuesIn(pluginInterfaces()),
                         interfaceName);
INSTANTIATE_TEST_SUITE_P(Processes, PlatformInterface, testing::ValuesIn(processInterfaces()),
                         interfaceName);

} // namespace

TEST_P(PlatformInterface, ListsItsSignalsAndThenItsOperationsInTheAgreedOrder)
{
    Names expected = GetParam().signalList;
    for (const Operation& operation : GetParam().operations)
        expected.push_back(operation.declaration);

    Names found;
    for (const QMetaMethod& method : ownMethods(*GetParam().meta, false))
        found.push_back(declarationOf(method));

    expectSame(found, expected);
}

TEST_P(PlatformInterface, CanHaveItsOperationsInvokedByNameAndItsSignalsConnected)
{
    const std::vector<QMetaMethod> methods = ownMethods(*GetParam().meta, false);
    const std::size_t signalCount = GetParam().signalList.size();
    ASSERT_EQ(methods.size(), signalCount + GetParam().operations.size());

    for (std::size_t index = 0; index < methods.size(); ++index) {
        SCOPED_TRACE(declarationOf(methods[index]));
        if (index < signalCount) {
            EXPECT_EQ(methods[index].methodType(), QMetaMethod::Signal);
        } else {
            EXPECT_EQ(methods[index].methodType(), QMetaMethod::Slot);
            EXPECT_EQ(methods[index].access(), GetParam().operations[index - signalCount].access);
        }
    }
}

TEST_P(PlatformInterface, LetsArgumentsBeLeftOutOnlyWhereAgreed)
{
    Names found;
    for (const QMetaMethod& method : ownMethods(*GetParam().meta, true))
        found.push_back(declarationOf(method));

    expectSame(found, GetParam().shortForms);
}

TEST_P(PlatformInterface, PlacesItsOperationsWithoutGapsBehindThoseOfItsBase)
{
    std::size_t expected = GetParam().firstSlot;
    for (const Operation& operation : GetParam().operations)
        EXPECT_EQ(operation.slot, expected++) << operation.declaration;
}

TEST(PlatformInterfaceShape, StorageOperationsTakeTheirStringsByValue)
{
    using Manager = IStorageManager;
    EXPECT_TRUE((std::is_same_v<decltype(&Manager::isAppRunning), int (Manager::*)(QString)>));
    EXPECT_TRUE((
        std::is_same_v<decltype(&Manager::getStorageInfo), ovikStorageInfo (Manager::*)(QString)>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(&Manager::getStorageInfoJSON), QString (Manager::*)(QString)>));
    EXPECT_TRUE((std::is_same_v<decltype(&Manager::getShareInfo),
                                ovikStorageInfo (Manager::*)(QString, int)>));
}

TEST(PlatformInterfaceShape, EveryPartitionKindIsAPartitionWithItsOwnMetaObject)
{
    for (const QMetaObject* kind :
         {&IBootLoaderInfo::staticMetaObject, &IXLoaderInfo::staticMetaObject,
          &IMainOSInfo::staticMetaObject, &IConfigOSInfo::staticMetaObject})
        EXPECT_EQ(kind->superClass(), &IPartitionInfo::staticMetaObject) << kind->className();
}

TEST(PlatformInterfaceShape, TheFactoryGivesAnObjectForAnInstanceName)
{
    EXPECT_TRUE(
        (std::is_same_v<OvikPluginFactory_getInstance_function, QObject* (*)(const char*)>));
}
