#pragma once

#include "IProxy/OVIKPlatformServices.h"
#include "panel_sim/panel_model.h"

// Settings and services of the simulated panel.
//
// An operation that neither the D-Bus service nor the library offers is not simulated: it returns
// sim::Refused or an empty value. Such operations come last in their class.

class SimOvik : public IOVIK
{
    Q_OBJECT

public:
    explicit SimOvik(sim::Panel& panel, QObject* parent = nullptr);

    int setSystemParameter(const QString& key, const QString& value, bool doSync = true) override;
    int setSystemParametersJSON(const QString& key, const QString& json) override
    {
        return m_panel.setSystemParameters(key, json);
    }
    QString getSystemParameter(const QString& key) override
    {
        return m_panel.systemParameters().value(key);
    }
    QString getAllSystemParametersJSON() override { return m_panel.systemParameters().json(); }
    int setVolatileParameter(const QString& key, const QString& value) override
    {
        return m_panel.setVolatileParameter(key, value);
    }
    QString getVolatileParameter(const QString& key) override
    {
        return m_panel.volatileParameters().value(key);
    }
    QString getAllVolatileParametersJSON() override { return m_panel.volatileParameters().json(); }
    int setScreenOrientation(int angle) override { return m_panel.setOrientation(angle); }
    int getScreenOrientation() override { return m_panel.orientation(); }
    int clearTimeCounters(int which) override { return m_panel.clearCounters(which); }
    int getSysCounter() override { return m_panel.systemSeconds(); }
    int getBlightCounter() override { return m_panel.backlightSeconds(); }
    bool isServiceControlled(const QString& service) override;

    // Offered on the bus, but without effect: nothing restarts, and no image is transferred.
    int restartSystem() override { return sim::Done; }
    int restartSystemWithImage(int) override { return sim::Done; }
    IImageTransferProcess* uploadImage(const QString&, const QString&, bool) override
    {
        return nullptr;
    }
    IImageTransferProcess* uploadRawImage(const QString&, const QString&, bool) override
    {
        return nullptr;
    }
    IImageTransferProcess* downloadImage(const QString&, const QString&, const QString&, bool,
                                         const QString&, const QString&, bool) override
    {
        return nullptr;
    }

    // Not simulated.
    int setScreenHue(int) override { return sim::Refused; }
    int getScreenHue() override { return sim::Refused; }
    int setScreenWhiteBalance(int) override { return sim::Refused; }
    int getScreenWhiteBalance() override { return sim::Refused; }
    int setScreenSaturation(int, int, int) override { return sim::Refused; }
    screenSaturationInfo getScreenSaturation() override { return {}; }
    int lockScreen(const QString&) override { return sim::Refused; }
    int lockScreenSupported() override { return sim::Refused; }
    int unlockScreen(const QString&) override { return sim::Refused; }
    void mouseNotification(int) override {}
    int mouseStatus(const QString&) override { return sim::Refused; }
    void updateCursorVisibility() override {}
    QString dualBootMode() override { return {}; }
    int applyDefaultSettings(const QString&, int) override { return sim::Refused; }
    int restoreDefaultSettings(int) override { return sim::Refused; }
    int loadMachineFile(const QByteArray&) override { return sim::Refused; }
    int removeMachineFile() override { return sim::Refused; }
    IImageTransferProcess* liveDownloadImage(const QString&, const QString&, bool, const QString&,
                                             const QString&, const QString&, qint64, const QString&,
                                             const QString&, bool, bool, bool) override
    {
        return nullptr;
    }
    IJobProcess* checkImage(const QString&) override { return nullptr; }
    IJobProcess* formatImage(const QString&, bool) override { return nullptr; }
    void getLastUpdateStatus(int& status, QString&) override { status = sim::Refused; }
    int setWCE7Calibration() override { return sim::Refused; }
    int reformatWCE7() override { return sim::Refused; }
    int reformatExtendedData() override { return sim::Refused; }
    int reformatSecondaryPartitions() override { return sim::Refused; }
    int reformatWithTemplate(const QString&) override { return sim::Refused; }
    int getScreenshot(const QString&, const QString&) override { return sim::Refused; }
    int moveToLiveFs(const QString&) override { return sim::Refused; }

Q_SIGNALS:
    void systemParameterChanged(const QString& name, const QString& value);
    void volatileParameterChanged(const QString& name, const QString& value);

private:
    sim::Panel& m_panel;
};

class SimSysStat : public ISysStat
{
    Q_OBJECT

public:
    explicit SimSysStat(const sim::Panel& panel, QObject* parent = nullptr)
        : ISysStat(parent), m_panel(panel)
    {
    }

    qulonglong getAvailableMemory() override { return m_panel.availableMemory(); }

    // Not simulated.
    void monitorSystemResources(int, int) override {}

private:
    const sim::Panel& m_panel;
};

/// Returns an empty record and an empty text for an unknown storage.
class SimStorageManager : public IStorageManager
{
    Q_OBJECT

public:
    explicit SimStorageManager(const sim::Panel& panel, QObject* parent = nullptr)
        : IStorageManager(parent), m_panel(panel)
    {
    }

    QString getUserSpaceMountPoint() override { return mountPoint("internal"); }
    QString getUSBMountPoint() override { return mountPoint("usb"); }
    QString getSDCardMountPoint() override { return mountPoint("sdcard"); }
    QString getHMIInstallationFolder() override { return mountPoint("internal") + "/hmi"; }
    QString getStorageDeviceList() override { return devices(false); }
    QString getDynamicStorageDeviceList() override { return devices(true); }
    int isAppRunning(QString appName) override { return appName == "hmi" ? 1 : 0; }
    int getSecurityMarginInOSForFlash() override { return 10 << 20; }
    ovikStorageInfo getStorageInfo(QString storageName) override;
    QString getStorageInfoJSON(QString storageName) override;
    /// Returns an empty record: shares are not simulated.
    ovikStorageInfo getShareInfo(QString, int) override { return {}; }

private:
    const sim::Storage* find(const QString& name) const;
    QString mountPoint(const QString& name) const;
    /// The names of all storages, or of the removable ones only, as a JSON array.
    QString devices(bool removableOnly) const;

    const sim::Panel& m_panel;
};

class SimNetworkManager : public INetworkManager
{
    Q_OBJECT

public:
    explicit SimNetworkManager(sim::Panel& panel, QObject* parent = nullptr)
        : INetworkManager(parent), m_panel(panel)
    {
    }

    QString getConfigJSON(const QString& key = QString()) override
    {
        return m_panel.network().json(key);
    }
    QString getInterfaceConfig(const QString& ifname) override
    {
        return m_panel.network().interfaceJson(ifname);
    }
    int setInterfaceConfigJSON(const QString& interface, const QString& config) override
    {
        return m_panel.network().prepareInterface(interface, config);
    }
    int setConfigJSON(const QString& config, const QString& keyFilter = QString(),
                      bool = false) override
    {
        return m_panel.network().prepare(config, keyFilter);
    }
    /// Applies at once, for any argument. On the bus the operation has no argument.
    int applyNewConfiguration(bool = false) override;

    // Not simulated.
    int resetConfiguration() override { return sim::Refused; }
    int updateInterfaces(bool) override { return sim::Refused; }
    void interfaceStateNotification(const QString&, int) override {}

private:
    sim::Panel& m_panel;
};

class SimTimeManager : public ITimeManager
{
    Q_OBJECT

public:
    explicit SimTimeManager(sim::Panel& panel, QObject* parent = nullptr)
        : ITimeManager(parent), m_panel(panel)
    {
    }

    QString getTZENVFile() override { return QStringLiteral("/etc/timezone.env"); }
    int updateTimeZoneInfo() override { return sim::Done; }
    timeZoneInfo getTimeZoneInfo() override { return m_panel.timeZone(); }
    int setTimeZoneInfo(timeZoneInfo newTimeZoneInfo) override;

private:
    sim::Panel& m_panel;
};

/// Operations on unknown services and on services that the panel does not control are refused. The
/// state is 1 when a service runs, else 0.
class SimServiceManager : public IServiceManager
{
    Q_OBJECT

public:
    explicit SimServiceManager(sim::Panel& panel, QObject* parent = nullptr);

    int start(const QString& service) override { return change(service, &sim::Service::start); }
    int stop(const QString& service) override { return change(service, &sim::Service::stop); }
    int restart(const QString& service) override { return change(service, &sim::Service::restart); }
    int reload(const QString& service) override { return change(service, &sim::Service::reload); }
    int enable(const QString& service) override { return change(service, &sim::Service::enable); }
    int disable(const QString& service) override { return change(service, &sim::Service::disable); }
    bool enabled(const QString& service) override { return is(service, &sim::Service::enabled); }
    int apply(const QString& service) override { return change(service, &sim::Service::apply); }
    bool controlled(const QString& service) override
    {
        return is(service, &sim::Service::controlled);
    }
    int state(const QString& service) override;
    int command(const QString& service, const QString& cmd, const QString& opts) override
    {
        return m_panel.command(service, cmd, opts);
    }
    QString getVolatileParameter(const QString& key) override
    {
        return m_panel.volatileParameters().value(key);
    }

Q_SIGNALS:
    void commandResult(const QString& service, const QString& command, const QString& json);

private:
    int change(const QString& service, int (sim::Service::*operation)())
    {
        return m_panel.changeService(service, operation);
    }
    bool is(const QString& service, bool sim::Service::*property) const;

    sim::Panel& m_panel;
};
