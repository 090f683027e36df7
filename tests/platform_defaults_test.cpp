/* Default behaviour of the platform's interfaces when a platform library does not override them. */
#include "IProxy/OVIKPlatformInterface.h"

#include <QByteArray>
#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>

namespace
{

struct PanelInfo : ISystemInfo {
    explicit PanelInfo(const systemInfo& panel) { m_systemInfo = panel; }
    systemSpecs specs() override { return m_systemSpecs; }
    systemInfo info() override { return systemInfo{}; }
    QString infoJSON() override { return m_systemInfoJSON; }
};

TEST(SystemInfo, ReturnsEachFieldOfItsRecord)
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

struct MainOs : IMainOSInfo {
    explicit MainOs(const partitionInfo& given) : partition(given) {}
    partitionInfo info() override { return partition; }
    partitionInfo partition;
};

TEST(PartitionInfo, ReturnsTheFieldsOfInfo)
{
    MainOs mainOs({9, 31, 12, 24, {'1', '.', '2', '3'}});
    IPartitionInfo& partition = mainOs;

    EXPECT_EQ(partition.type(), 9);
    EXPECT_EQ(partition.day(), 31);
    EXPECT_EQ(partition.month(), 12);
    EXPECT_EQ(partition.year(), 24);
    EXPECT_EQ(partition.version(), QByteArray("1.23") + QByteArray(16, '\0'));

    std::fill(std::begin(mainOs.partition.version), std::end(mainOs.partition.version),
              quint8(0xa5));
    EXPECT_EQ(partition.version(), QByteArray(20, '\xa5'));
}

struct Buzzer : IBuzzer {
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

TEST(BuzzerInterface, RefusesToSwitchDirectly)
{
    EXPECT_EQ(Buzzer().on(440), -1);
    EXPECT_EQ(Buzzer().off(), -1);
}

struct Statistics : ISysStat {
    qulonglong getAvailableMemory() override { return 0; }
    void monitorSystemResources(int, int) override {}
};

TEST(SysStat, KeepsTheThresholdItWasGiven)
{
    Statistics statistics;
    EXPECT_EQ(statistics.getLowMemoryThreshold(), 0U);
    statistics.setLowMemoryThreshold(0xffffffffffffffffULL);
    EXPECT_EQ(statistics.getLowMemoryThreshold(), 0xffffffffffffffffULL);
}

struct Module : IHWPlugin {
    int seepromRead(uchar, uchar, uint, QByteArray&) override { return 0; }
    int seepromWrite(uchar, uchar, const QByteArray&) override { return 0; }
    sSEEModule signature() const override
    {
        return {{'I', 'O'}, 0x11, 0x22, 0x33, 0xf4, {0xff, 0, 0x80}};
    }
};

TEST(HWPlugin, ReturnsEachFieldOfItsSignature)
{
    const Module module;

    EXPECT_EQ(module.signatureName(), QByteArray("IO") + QByteArray(14, '\0'));
    EXPECT_EQ(module.signatureHCode(), 0x11);
    EXPECT_EQ(module.signatureHSubCode(), 0x22);
    EXPECT_EQ(module.signatureXCode(), 0x33);
    EXPECT_EQ(module.signatureXSubCode(), 0xf4);
    EXPECT_EQ(module.signatureFunctArea(), QByteArray("\xff\x00\x80", 3) + QByteArray(13, '\0'));
}

struct SplashImage : ISplashImageInfo {
    splashImageInfo info() override { return {640, 4294967295U}; }
};

TEST(SplashImageInfo, ReturnsThePositionOfInfo)
{
    EXPECT_EQ(SplashImage().x(), 640U);
    EXPECT_EQ(SplashImage().y(), 4294967295U);
}

struct Transfer : IImageTransferProcess {
    using IImageTransferProcess::m_incrementalTransferId;
    void run() override {}
    void become(Status status, int id, const QByteArray& sum)
    {
        m_status = status;
        m_transferId = id;
        md5sum = sum;
    }
};

TEST(ImageTransferProcess, IsIdleAtFirstAndReturnsItsMembers)
{
    Transfer transfer;
    EXPECT_EQ(transfer.status(), IImageTransferProcess::Idle);
    EXPECT_EQ(transfer.transferId(), 0);
    EXPECT_TRUE(transfer.md5().isEmpty());

    transfer.become(IImageTransferProcess::Error, 41, "0cc175b9");
    EXPECT_EQ(transfer.status(), 3);
    EXPECT_EQ(transfer.transferId(), 41);
    EXPECT_EQ(transfer.md5(), QByteArray("0cc175b9"));
}

struct Job : IJobProcess {
    using IJobProcess::m_incrementalJobId;
    void run() override {}
    void become(Status status, int id)
    {
        m_status = status;
        m_jobId = id;
    }
};

TEST(JobProcess, IsIdleAtFirstAndReturnsItsMembers)
{
    Job job;
    EXPECT_EQ(job.status(), IJobProcess::Idle);
    EXPECT_EQ(job.jobId(), 0);

    job.become(IJobProcess::Reboot, 42);
    EXPECT_EQ(job.status(), 4);
    EXPECT_EQ(job.jobId(), 42);
}

TEST(Processes, CountTransfersAndJobsApart)
{
    EXPECT_EQ(Transfer::m_incrementalTransferId, 0);
    EXPECT_EQ(Job::m_incrementalJobId, 0);
    EXPECT_NE(&Transfer::m_incrementalTransferId, &Job::m_incrementalJobId);
}

struct PluginInstance : IHWPluginInstance {
    using IHWPluginInstance::IHWPluginInstance;
    using IHWPluginInstance::m_slot;
    IPlatformLeds* getLeds() override { return nullptr; }
    IPlatformSensors* getSensors() override { return nullptr; }
};

TEST(HWPluginInstance, RemembersItsSlot) { EXPECT_EQ(PluginInstance(2).m_slot, 2); }

struct Reader : INFCReader {
    QByteArray read(uint, uint) override { return QByteArray(); }
    int write(const QByteArray&, uint) override { return 0; }
    int start() override { return 0; }
    int stop() override { return 0; }
    int readJSON(QString&) override { return 0; }
    int writeJSON(const QString&) override { return 0; }
};

TEST(NFCReader, HasNoCallbackUntilOneIsGiven) { EXPECT_EQ(Reader().fnNotifyCallback, nullptr); }

} // namespace
