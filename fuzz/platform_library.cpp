// The platform library's objects. Functions that the product does not call keep the simulated
// panel's behaviour. The library file has only the factory function, which calls this file.

#include "fuzz/platform_library.h"

#include "fuzz/draw.h"
#include "fuzz/draw_message.h"
#include "panel_sim/platform_devices.h"
#include "panel_sim/platform_info.h"
#include "panel_sim/platform_services.h"

#include <QThread>

#include <cstring>

FuzzedDataProvider* libraryInput;

namespace
{
FuzzedDataProvider& input()
{
    static FuzzedDataProvider none(nullptr, 0);
    return libraryInput ? *libraryInput : none;
}

int number() { return drawNumber(input()); }

/// Null, valid or invalid, possibly longer than requested.
QByteArray bytes()
{
    constexpr size_t most[] = {24, 300, 70000};
    const size_t choice = input().ConsumeIntegralInRange<size_t>(0, std::size(most));
    if (choice == std::size(most))
        return {};
    return QByteArray::fromStdString(drawBytes(input(), most[choice], true));
}

/// Any UTF-16, with unpaired surrogates and zeros.
QString text()
{
    if (input().ConsumeBool())
        return QString::fromStdString(drawText(input()));
    const QByteArray units = bytes();
    QString text(units.size() / 2, QChar());
    memcpy(text.data(), units.constData(), static_cast<size_t>(text.size()) * 2);
    return text;
}

struct Buzzer : SimBuzzer {
    using SimBuzzer::SimBuzzer;
    int SetBuzzerMode(int) override { return number(); }
    int GetBuzzerMode() override { return number(); }
    int SetBuzzerUserControl(int) override { return number(); }
    int SetBuzzerOnTime(int) override { return number(); }
    int SetBuzzerOffTime(int) override { return number(); }
};

struct Backlight : SimBacklight {
    using SimBacklight::SimBacklight;
    int saveBrightness(int) override { return number(); }
    int getBrightness() override { return number(); }
};

struct SystemInfo : SimSystemInfo {
    using SimSystemInfo::SimSystemInfo;
    systemInfo info() override
    {
        systemInfo record;
        const std::string drawn = drawBytes(input(), sizeof record, true);
        memset(&record, 'x', sizeof record);
        memcpy(&record, drawn.data(), drawn.size());
        return record;
    }
};

struct Seeprom : SimSeeprom {
    using SimSeeprom::SimSeeprom;
    int read(uchar, uint, QByteArray& data) override
    {
        data = bytes();
        return number();
    }
    int readSlvAddr(uchar, uchar, uint, QByteArray& data) override
    {
        data = bytes();
        return number();
    }
};

struct Ovik : SimOvik {
    using SimOvik::SimOvik;
    int setSystemParameter(const QString&, const QString&, bool) override { return number(); }
    QString getSystemParameter(const QString&) override { return text(); }
    int setVolatileParameter(const QString&, const QString&) override { return number(); }
    QString getVolatileParameter(const QString&) override { return text(); }
    int getSysCounter() override { return number(); }
    int getBlightCounter() override { return number(); }
};

struct MainOsInfo : SimMainOsInfo {
    using SimMainOsInfo::SimMainOsInfo;
    QByteArray version() override { return bytes(); }
};

struct StorageManager : SimStorageManager {
    using SimStorageManager::SimStorageManager;
    QString getStorageInfoJSON(QString) override { return text(); }
};

struct SysStat : SimSysStat {
    using SimSysStat::SimSysStat;
    qulonglong getAvailableMemory() override { return input().ConsumeIntegral<quint64>(); }
};

struct NetworkManager : SimNetworkManager {
    using SimNetworkManager::SimNetworkManager;
    QString getConfigJSON(const QString&) override { return text(); }
    int setInterfaceConfigJSON(const QString&, const QString&) override { return number(); }
    int applyNewConfiguration(bool) override { return number(); }
};

// As in a real platform's library, the objects live as long as the process.

template <class Object>
QObject* object()
{
    static auto* const panel = new sim::Panel({}, 0);
    static auto* const theObject = new Object(*panel);
    return theObject;
}

/// The object needs a thread of its own, since its callers block until it answers.
QObject* systemInfoInThread()
{
    static auto* const thread = [] {
        auto* const started = new QThread;
        started->start();
        object<SystemInfo>()->moveToThread(started);
        return started;
    }();
    Q_UNUSED(thread)
    return object<SystemInfo>();
}

const struct {
    const char* name;
    QObject* (*get)();
} instances[] = {
    {"Buzzer", object<Buzzer>},
    {"Backlight", object<Backlight>},
    {"SystemInfo", systemInfoInThread},
    {"I2CSEEPROM", object<Seeprom>},
    {"OVIK", object<Ovik>},
    {"MainOSInfo", object<MainOsInfo>},
    {"StorageMgr", object<StorageManager>},
    {"SysStat", object<SysStat>},
    {"NetworkManager", object<NetworkManager>},
};
} // namespace

extern "C" __attribute__((visibility("default"), used)) QObject* ovikFuzzInstance(const char* name)
{
    for (const auto& row : instances) {
        if (strcmp(row.name, name) == 0)
            return row.get();
    }
    return nullptr;
}
