/* Layout of the platform records, values of the enumerations and the default operation bodies. */
#include "IProxy/OVIKPlatformInterface.h"

#include <QByteArray>
#include <QMetaType>
#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <iterator>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

struct Value {
    std::string name;
    std::size_t found;
    std::size_t expected;
};

void PrintTo(const Value& value, std::ostream* stream) { *stream << value.name; }

class PlatformLayout : public testing::TestWithParam<Value>
{
};

/* Macros, because only they can spell a field's name as text. */
#define OFFSET(record, field, expected)                                                            \
    (Value{#record "." #field, offsetof(record, field), expected})
#define SIZE(record, expected) (Value{"size of " #record, sizeof(record), expected})
#define ENUMERATOR(name, expected) (Value{#name, static_cast<std::size_t>(name), expected})

INSTANTIATE_TEST_SUITE_P(
    Records, PlatformLayout,
    testing::Values(OFFSET(timeZoneInfo, stdMonth, 0), OFFSET(timeZoneInfo, stdWeek, 1),
                    OFFSET(timeZoneInfo, stdDay, 2), OFFSET(timeZoneInfo, stdHour, 3),
                    OFFSET(timeZoneInfo, stdMinute, 4), OFFSET(timeZoneInfo, stdOffset, 6),
                    OFFSET(timeZoneInfo, dlsMonth, 8), OFFSET(timeZoneInfo, dlsWeek, 9),
                    OFFSET(timeZoneInfo, dlsDay, 10), OFFSET(timeZoneInfo, dlsHour, 11),
                    OFFSET(timeZoneInfo, dlsMinute, 12), OFFSET(timeZoneInfo, dlsOffset, 14),
                    OFFSET(timeZoneInfo, mode, 16), SIZE(timeZoneInfo, 18)));

INSTANTIATE_TEST_SUITE_P(
    SmallRecords, PlatformLayout,
    testing::Values(
        OFFSET(splashImageInfo, x, 0), OFFSET(splashImageInfo, y, 4), SIZE(splashImageInfo, 8),
        OFFSET(sSEEModule, Name, 0), OFFSET(sSEEModule, Hcode, 16),
        OFFSET(sSEEModule, Hsubcode, 17), OFFSET(sSEEModule, Xcode, 18),
        OFFSET(sSEEModule, Xsubcode, 19), OFFSET(sSEEModule, FunctArea, 20), SIZE(sSEEModule, 36),
        OFFSET(sensorData, value, 0), OFFSET(sensorData, status, 4),
        OFFSET(accelerometerAxisData, accel_x, 0), OFFSET(accelerometerAxisData, accel_y, 8),
        OFFSET(accelerometerAxisData, accel_z, 16), OFFSET(accelerometerAngleData, angle_xy, 0),
        OFFSET(accelerometerAngleData, angle_xz, 8), OFFSET(accelerometerAngleData, angle_yz, 16),
        OFFSET(accelAxisData, axes, 0), OFFSET(accelAxisData, status, 24),
        OFFSET(accelAngleData, angles, 0), OFFSET(accelAngleData, status, 24),
        OFFSET(screenSaturationInfo, red, 0), OFFSET(screenSaturationInfo, green, 4),
        OFFSET(screenSaturationInfo, blue, 8)));

class PlatformEnumeration : public testing::TestWithParam<Value>
{
};

INSTANTIATE_TEST_SUITE_P(
    Enumerators, PlatformEnumeration,
    testing::Values(
        ENUMERATOR(IOVIK::restoreNetwork, 1), ENUMERATOR(IOVIK::restoreDisplay, 2),
        ENUMERATOR(IOVIK::restoreServices, 4), ENUMERATOR(IOVIK::restoreUsers, 8),
        ENUMERATOR(IOVIK::restoreSettings, 247), ENUMERATOR(IOVIK::restoreAll, 255),
        ENUMERATOR(INetworkManager::ApplyNone, 0), ENUMERATOR(INetworkManager::ApplyDns, 1),
        ENUMERATOR(INetworkManager::ApplyHostname, 2),
        ENUMERATOR(INetworkManager::ApplyInterfaces, 4), ENUMERATOR(INetworkManager::ApplyWifi, 8),
        ENUMERATOR(INetworkManager::ApplyAll, 15), ENUMERATOR(IImageTransferProcess::Idle, 0),
        ENUMERATOR(IImageTransferProcess::Running, 1), ENUMERATOR(IImageTransferProcess::Ok, 2),
        ENUMERATOR(IImageTransferProcess::Error, 3), ENUMERATOR(IJobProcess::Idle, 0),
        ENUMERATOR(IJobProcess::Running, 1), ENUMERATOR(IJobProcess::Ok, 2),
        ENUMERATOR(IJobProcess::Error, 3), ENUMERATOR(IJobProcess::Reboot, 4),
        ENUMERATOR(ICANManager::NoWakeup, 0), ENUMERATOR(ICANManager::Wakeup, 1)));

class PanelInfo : public ISystemInfo
{
public:
    explicit PanelInfo(const systemInfo& panel) { m_systemInfo = panel; }

    systemSpecs specs() override { return m_systemSpecs; }
    systemInfo info() override { return systemInfo{}; }
    QString infoJSON() override { return m_systemInfoJSON; }
};

class Partition : public IPartitionInfo
{
public:
    explicit Partition(const bootldrInfo& given) : partition(given) {}

    bootldrInfo info() override { return partition; }

private:
    bootldrInfo partition;
};

class MainOs : public IMainOSInfo
{
public:
    partitionInfo info() override { return {7, 1, 2, 3, {'1', '.', '0'}}; }
};

class Buzzer : public IBuzzer
{
public:
    using IBuzzer::off;
    using IBuzzer::on;

    int beep(int, int) override { return 0; }
    int SetBuzzerMode(int) override { return 0; }
    int GetBuzzerMode() override { return 0; }
    int SetBuzzerUserControl(int) override { return 0; }
    int GetBuzzerUserControl() override { return 0; }
    int SetBuzzerOnTime(int) override { return 0; }
    int SetBuzzerOffTime(int) override { return 0; }
    int GetBuzzerOnTime() override { return 0; }
    int GetBuzzerOffTime() override { return 0; }
    int SetBuzzerFrequency(int) override { return 0; }
    int GetBuzzerFrequency() override { return 0; }
};

class Statistics : public ISysStat
{
public:
    qulonglong getAvailableMemory() override { return 0; }
    void monitorSystemResources(int, int) override {}
};

class Module : public IHWPlugin
{
public:
    int seepromRead(uchar, uchar, uint, QByteArray&) override { return 0; }
    int seepromWrite(uchar, uchar, const QByteArray&) override { return 0; }
    sSEEModule signature() const override
    {
        return {{'I', 'O'}, 0x11, 0x22, 0x33, 0xf4, {0xff, 0, 0x80}};
    }
};

class SplashImage : public ISplashImageInfo
{
public:
    splashImageInfo info() override { return {640, 4294967295U}; }
};

class PluginInstance : public IHWPluginInstance
{
public:
    using IHWPluginInstance::IHWPluginInstance;
    using IHWPluginInstance::m_slot;

    IPlatformLeds* getLeds() override { return nullptr; }
    IPlatformSensors* getSensors() override { return nullptr; }
};

class Transfer : public IImageTransferProcess
{
public:
    using IImageTransferProcess::m_incrementalTransferId;

    void run() override {}
    void become(Status status, int id, const QByteArray& sum)
    {
        m_status = status;
        m_transferId = id;
        md5sum = sum;
    }
};

class Job : public IJobProcess
{
public:
    using IJobProcess::m_incrementalJobId;

    void run() override {}
    void become(Status status, int id)
    {
        m_status = status;
        m_jobId = id;
    }
};

class Reader : public INFCReader
{
public:
    QByteArray read(uint, uint) override { return QByteArray(); }
    int write(const QByteArray&, uint) override { return 0; }
    int start() override { return 0; }
    int stop() override { return 0; }
    int readJSON(QString&) override { return 0; }
    int writeJSON(const QString&) override { return 0; }
};

} // namespace

TEST_P(PlatformLayout, IsTheOneThePlatformLibraryIsBuiltWith)
{
    EXPECT_EQ(GetParam().found, GetParam().expected) << GetParam().name;
}

TEST_P(PlatformEnumeration, HasTheValueThePlatformLibraryIsBuiltWith)
{
    EXPECT_EQ(GetParam().found, GetParam().expected) << GetParam().name;
}

TEST(PlatformRecords, StayPlainDataWhenSharedWithThePlatform)
{
    EXPECT_TRUE(std::is_pod_v<systemInfo>);
    EXPECT_TRUE(std::is_pod_v<bootldrInfo>);
    EXPECT_TRUE(std::is_pod_v<ovikStorageInfo>);
    EXPECT_TRUE(std::is_pod_v<timeZoneInfo>);
    EXPECT_TRUE(std::is_pod_v<splashImageInfo>);
    EXPECT_TRUE(std::is_pod_v<sSEEModule>);
    EXPECT_TRUE(std::is_pod_v<sensorData>);
    EXPECT_TRUE(std::is_pod_v<accelAxisData>);
    EXPECT_TRUE(std::is_pod_v<accelAngleData>);
    EXPECT_TRUE(std::is_pod_v<screenSaturationInfo>);
}

TEST(PlatformRecords, KeepBothTheirNames)
{
    EXPECT_TRUE((std::is_same_v<systemInfo, struct _systemInfo>));
    EXPECT_TRUE((std::is_same_v<bootldrInfo, struct _bootldrInfo>));
    EXPECT_TRUE((std::is_same_v<partitionInfo, bootldrInfo>));
    EXPECT_TRUE((std::is_same_v<ovikStorageInfo, struct _ovikStorageInfo>));
    EXPECT_TRUE((std::is_same_v<timeZoneInfo, struct _timeZoneInfo>));
    EXPECT_TRUE((std::is_same_v<splashImageInfo, struct _splashImageInfo>));
    EXPECT_TRUE((std::is_same_v<sensorData, struct _sensorData>));
    EXPECT_TRUE((std::is_same_v<systemSpecs, struct SystemSpecs>));
}

TEST(PlatformRecords, TravelAsMetatypesUnderTheirOwnNames)
{
    const std::vector<std::pair<int, std::string>> metatypes = {
        {qMetaTypeId<systemInfo>(), "systemInfo"},
        {qMetaTypeId<bootldrInfo>(), "partitionInfo"},
        {qMetaTypeId<ovikStorageInfo>(), "ovikStorageInfo"},
        {qMetaTypeId<timeZoneInfo>(), "timeZoneInfo"},
        {qMetaTypeId<splashImageInfo>(), "splashImageInfo"},
        {qMetaTypeId<sSEEModule>(), "sSEEModule"},
        {qMetaTypeId<accelerometerAxisData>(), "accelerometerAxisData"},
        {qMetaTypeId<accelerometerAngleData>(), "accelerometerAngleData"},
        {qMetaTypeId<sensorData>(), "sensorData"},
        {qMetaTypeId<accelAxisData>(), "accelAxisData"},
        {qMetaTypeId<accelAngleData>(), "accelAngleData"},
        {qMetaTypeId<screenSaturationInfo>(), "screenSaturationInfo"},
        {qMetaTypeId<systemSpecs>(), "systemSpecs"},
    };
    for (const auto& [id, name] : metatypes)
        EXPECT_EQ(QMetaType::typeName(id), name);
}

TEST(SystemInfo, AnswersEachFieldOfTheRecordItHolds)
{
    PanelInfo panel({1, 2, 3, {4, 0, 6}, {'P', 'A', 0, 'E', 'L'}, 12, 13, {0xfe, 0}, 0xff});

    EXPECT_EQ(panel.day(), 1);
    EXPECT_EQ(panel.month(), 2);
    EXPECT_EQ(panel.year(), 3);
    EXPECT_EQ(panel.serialNo(), QByteArray("\x04\x00\x06", 3));
    EXPECT_EQ(panel.moduleName(), QByteArray("PA\0EL", 5));
    EXPECT_EQ(panel.hwCode(), 12);
    EXPECT_EQ(panel.hwSubCode(), 13);
    EXPECT_EQ(panel.manufactureCode(), QByteArray("\xfe\x00", 2));
    EXPECT_EQ(panel.hwDispID(), 0xff);
}

TEST(PartitionInfo, AnswersFieldsOfTheRecordThatInfoGives)
{
    Partition partition({9, 31, 12, 24, {}});

    EXPECT_EQ(partition.type(), 9);
    EXPECT_EQ(partition.day(), 31);
    EXPECT_EQ(partition.month(), 12);
    EXPECT_EQ(partition.year(), 24);
}

TEST(PartitionInfo, KeepsTheTrailingZeroBytesOfAShortVersion)
{
    Partition partition({0, 0, 0, 0, {'1', '.', '2', '3'}});

    EXPECT_EQ(partition.version(), QByteArray("1.23") + QByteArray(16, '\0'));
}

TEST(PartitionInfo, GivesAllBytesOfAVersionThatFillsItsField)
{
    bootldrInfo record{};
    std::fill(std::begin(record.version), std::end(record.version), quint8(0xa5));
    Partition partition(record);

    EXPECT_EQ(partition.version(), QByteArray(20, '\xa5'));
}

TEST(PartitionInfo, OfTheMainSystemIsReachedThroughTheGeneralInterface)
{
    MainOs mainOs;
    IPartitionInfo& partition = mainOs;

    EXPECT_EQ(partition.type(), 7);
    EXPECT_EQ(partition.version(), QByteArray("1.0") + QByteArray(17, '\0'));
}

TEST(BuzzerInterface, RefusesToSwitchDirectlyUnlessThePlatformSaysHow)
{
    Buzzer buzzer;

    EXPECT_EQ(buzzer.on(440), -1);
    EXPECT_EQ(buzzer.off(), -1);
}

TEST(SysStat, KeepsTheThresholdItWasGiven)
{
    Statistics statistics;
    EXPECT_EQ(statistics.getLowMemoryThreshold(), 0U);

    statistics.setLowMemoryThreshold(0xffffffffffffffffULL);

    EXPECT_EQ(statistics.getLowMemoryThreshold(), 0xffffffffffffffffULL);
}

TEST(HWPlugin, AnswersEachFieldOfItsSignature)
{
    const Module module;

    EXPECT_EQ(module.signatureName(), QByteArray("IO") + QByteArray(14, '\0'));
    EXPECT_EQ(module.signatureHCode(), 0x11);
    EXPECT_EQ(module.signatureHSubCode(), 0x22);
    EXPECT_EQ(module.signatureXCode(), 0x33);
    EXPECT_EQ(module.signatureXSubCode(), 0xf4);
    EXPECT_EQ(module.signatureFunctArea(), QByteArray("\xff\x00\x80", 3) + QByteArray(13, '\0'));
}

TEST(HWPluginInstance, RemembersItsSlot) { EXPECT_EQ(PluginInstance(2).m_slot, 2); }

TEST(SplashImageInfo, AnswersThePositionThatInfoGives)
{
    SplashImage image;

    EXPECT_EQ(image.x(), 640U);
    EXPECT_EQ(image.y(), 4294967295U);
}

TEST(ImageTransferProcess, IsIdleUntilThePlatformStartsIt)
{
    Transfer transfer;

    EXPECT_EQ(transfer.status(), IImageTransferProcess::Idle);
    EXPECT_EQ(transfer.transferId(), 0);
    EXPECT_TRUE(transfer.md5().isEmpty());
}

TEST(ImageTransferProcess, AnswersWhatItHolds)
{
    Transfer transfer;
    transfer.become(IImageTransferProcess::Error, 41, "0cc175b9");

    EXPECT_EQ(transfer.status(), 3);
    EXPECT_EQ(transfer.transferId(), 41);
    EXPECT_EQ(transfer.md5(), QByteArray("0cc175b9"));
}

TEST(JobProcess, IsIdleUntilThePlatformStartsIt)
{
    Job job;

    EXPECT_EQ(job.status(), IJobProcess::Idle);
    EXPECT_EQ(job.jobId(), 0);
}

TEST(JobProcess, AnswersWhatItHolds)
{
    Job job;
    job.become(IJobProcess::Reboot, 42);

    EXPECT_EQ(job.status(), 4);
    EXPECT_EQ(job.jobId(), 42);
}

TEST(Processes, CountTransfersAndJobsApart)
{
    Transfer::m_incrementalTransferId = 5;

    EXPECT_EQ(Job::m_incrementalJobId, 0);

    Transfer::m_incrementalTransferId = 0;
}

TEST(NFCReader, HasNoCallbackUntilOneIsGiven) { EXPECT_EQ(Reader().fnNotifyCallback, nullptr); }
