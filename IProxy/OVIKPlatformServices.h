/* Settings and services of the panel's system; the rules in OVIKPlatformInterface.h apply. */
#ifndef OVIK_PLATFORM_SERVICES_H
#define OVIK_PLATFORM_SERVICES_H

#include "IProxy/OVIKPlatformProcesses.h"
#include "IProxy/OVIKPlatformRecords.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <sys/types.h>

/** Parameters, screen, images and counters of the panel; keys and values are the platform's. */
class IOVIK : public QObject
{
    Q_OBJECT

public:
    /** The scope of a restore; the values are bits and may be combined. */
    enum defaultSettings {
        restoreNetwork = 1,
        restoreDisplay = 2,
        restoreServices = 4,
        restoreUsers = 8,
        restoreSettings = 247, /**< everything except the users */
        restoreAll = 255
    };

    explicit IOVIK(QObject* parent = nullptr) : QObject(parent) {}
    ~IOVIK() override = default;

public Q_SLOTS:
    virtual int setSystemParameter(const QString& key, const QString& value,
                                   bool doSync = true) = 0;
    virtual int setSystemParametersJSON(const QString& key, const QString& json) = 0;
    virtual QString getSystemParameter(const QString& key) = 0;
    virtual QString getAllSystemParametersJSON() = 0;
    virtual int setVolatileParameter(const QString& key, const QString& value) = 0;
    virtual QString getVolatileParameter(const QString& key) = 0;
    virtual QString getAllVolatileParametersJSON() = 0;
    virtual int setScreenOrientation(int angle) = 0;
    virtual int getScreenOrientation() = 0;
    virtual int setScreenHue(int hue) = 0;
    virtual int getScreenHue() = 0;
    virtual int setScreenWhiteBalance(int whiteBalance) = 0;
    virtual int getScreenWhiteBalance() = 0;
    virtual int setScreenSaturation(int red, int green, int blue) = 0;
    virtual screenSaturationInfo getScreenSaturation() = 0;
    virtual int lockScreen(const QString& display) = 0;
    virtual int lockScreenSupported() = 0;
    virtual int unlockScreen(const QString& display) = 0;
    virtual void mouseNotification(int bPlugged) = 0;
    virtual int mouseStatus(const QString& display) = 0;
    virtual void updateCursorVisibility() = 0;
    virtual int restartSystem() = 0;
    virtual int restartSystemWithImage(int imageType) = 0;
    virtual QString dualBootMode() = 0;
    virtual int clearTimeCounters(int which) = 0;
    virtual int getSysCounter() = 0;
    virtual int getBlightCounter() = 0;
    virtual int applyDefaultSettings(const QString& configFilePath = QString(),
                                     int what = restoreAll) = 0;
    virtual int restoreDefaultSettings(int what = restoreAll) = 0;
    virtual int loadMachineFile(const QByteArray& data) = 0;
    virtual int removeMachineFile() = 0;
    virtual IImageTransferProcess* uploadImage(const QString& imageType, const QString& destination,
                                               bool checkMd5) = 0;
    virtual IImageTransferProcess* uploadRawImage(const QString& imageType,
                                                  const QString& destination, bool checkMd5) = 0;
    virtual IImageTransferProcess* downloadImage(const QString& imageType, const QString& source,
                                                 const QString& sourceMd5, bool checkMd5,
                                                 const QString& user, const QString& pass,
                                                 bool reboot) = 0;
    virtual IImageTransferProcess*
    liveDownloadImage(const QString& source, const QString& sourceMd5, bool checkMd5,
                      const QString& imageFormat, const QString& partition, const QString& label,
                      qint64 offset, const QString& fsType, const QString& fsPermissions,
                      bool reformat, bool skipFsck, bool resizeFs) = 0;
    virtual IJobProcess* checkImage(const QString& imageType) = 0;
    virtual IJobProcess* formatImage(const QString& imageType, bool reboot) = 0;
    virtual void getLastUpdateStatus(int& status, QString& message) = 0;
    virtual int setWCE7Calibration() = 0;
    virtual int reformatWCE7() = 0;
    virtual int reformatExtendedData() = 0;
    virtual int reformatSecondaryPartitions() = 0;
    virtual int reformatWithTemplate(const QString& sfdiskTemplate) = 0;
    virtual bool isServiceControlled(const QString& service) = 0;
    virtual int getScreenshot(const QString& path, const QString& format) = 0;
    virtual int moveToLiveFs(const QString& rootfs) = 0;

Q_SIGNALS:
    void error(QString error);
    void mousePlugEvent(int bPlugged);
};

/** Memory of the running system, in the platform's unit; warns below the threshold. */
class ISysStat : public QObject
{
    Q_OBJECT

public:
    explicit ISysStat(QObject* parent = nullptr) : QObject(parent) {}
    ~ISysStat() override = default;

public Q_SLOTS:
    virtual qulonglong getAvailableMemory() = 0;
    virtual void monitorSystemResources(int every = 60, int verbose = 0) = 0;
    virtual void setLowMemoryThreshold(qulonglong lowMemory) { m_lowMemoryThreshold = lowMemory; }
    virtual qulonglong getLowMemoryThreshold() const { return m_lowMemoryThreshold; }

Q_SIGNALS:
    void lowMemory(qulonglong availableMemory);

protected:
    quint64 m_lowMemoryThreshold = 0;
};

/** Storage devices and network shares; names, kinds and the JSON layout are the platform's. */
class IStorageManager : public QObject
{
    Q_OBJECT

public:
    explicit IStorageManager(QObject* parent = nullptr) : QObject(parent) {}
    ~IStorageManager() override = default;

public Q_SLOTS:
    virtual QString getUserSpaceMountPoint() = 0;
    virtual QString getUSBMountPoint() = 0;
    virtual QString getSDCardMountPoint() = 0;
    virtual QString getHMIInstallationFolder() = 0;
    virtual QString getStorageDeviceList() = 0;
    virtual QString getDynamicStorageDeviceList() = 0;
    virtual int isAppRunning(QString appName) = 0;
    virtual int getSecurityMarginInOSForFlash() = 0;
    virtual ovikStorageInfo getStorageInfo(QString storageName) = 0;
    virtual QString getStorageInfoJSON(QString storageName) = 0;
    virtual ovikStorageInfo getShareInfo(QString networkPath, int timeout) = 0;

Q_SIGNALS:
    void error(QString error);
};

/** Network configuration of the panel; keys, the JSON layout and states are the platform's. */
class INetworkManager : public QObject
{
    Q_OBJECT

public:
    /** The scope of a new configuration; the values are bits and may be combined. */
    enum ApplyOptions {
        ApplyNone = 0,
        ApplyDns = 1,
        ApplyHostname = 2,
        ApplyInterfaces = 4,
        ApplyWifi = 8,
        ApplyAll = 15
    };

    explicit INetworkManager(QObject* parent = nullptr) : QObject(parent) {}
    ~INetworkManager() override = default;

public Q_SLOTS:
    virtual QString getConfigJSON(const QString& key = QString()) = 0;
    virtual QString getInterfaceConfig(const QString& ifname) = 0;
    virtual int setInterfaceConfigJSON(const QString& interface, const QString& config) = 0;
    virtual int setConfigJSON(const QString& config, const QString& keyFilter = QString(),
                              bool forceJSON = false) = 0;
    virtual int resetConfiguration() = 0;
    virtual int applyNewConfiguration(bool async) = 0;
    virtual int updateInterfaces(bool async) = 0;
    virtual void interfaceStateNotification(const QString& interface, int state) = 0;

Q_SIGNALS:
    void result(int rc);
    void interfaceStateChanged(QString interface, int state);
};

/** Time zone of the panel; the rules are those of the system's time zone configuration. */
class ITimeManager : public QObject
{
    Q_OBJECT

public:
    explicit ITimeManager(QObject* parent = nullptr) : QObject(parent) {}
    ~ITimeManager() override = default;

public Q_SLOTS:
    virtual QString getTZENVFile() = 0;
    virtual int updateTimeZoneInfo() = 0;
    virtual timeZoneInfo getTimeZoneInfo() = 0;
    virtual int setTimeZoneInfo(timeZoneInfo newTimeZoneInfo) = 0;

Q_SIGNALS:
    void error(QString error);
};

/** Services of the panel's system; service names, commands and states are the platform's. */
class IServiceManager : public QObject
{
    Q_OBJECT

public:
    explicit IServiceManager(QObject* parent = nullptr) : QObject(parent) {}
    ~IServiceManager() override = default;

    void* fnWifiInterfaceCallback = nullptr;

public Q_SLOTS:
    virtual int start(const QString& service) = 0;
    virtual int stop(const QString& service) = 0;
    virtual int restart(const QString& service) = 0;
    virtual int reload(const QString& service) = 0;
    virtual int enable(const QString& service) = 0;
    virtual int disable(const QString& service) = 0;
    virtual bool enabled(const QString& service) = 0;
    virtual int apply(const QString& service) = 0;
    virtual bool controlled(const QString& service) = 0;
    virtual int state(const QString& service) = 0;
    virtual int command(const QString& service, const QString& cmd, const QString& opts) = 0;
    virtual QString getVolatileParameter(const QString& key) = 0;
};

/** Sleep and wake-up of the field bus interfaces; identifiers and masks are the bus's. */
class ICANManager : public QObject
{
    Q_OBJECT

public:
    enum Mode { NoWakeup = 0, Wakeup = 1 };

    explicit ICANManager(QObject* parent = nullptr) : QObject(parent) {}
    ~ICANManager() override = default;

public Q_SLOTS:
    virtual int sleep(const QString& canIfName = QStringLiteral("can0"), Mode mode = NoWakeup,
                      u_int32_t id = 0, u_int32_t mask = 0, bool extended = false) = 0;

Q_SIGNALS:
    void error(QString error);
};

#endif
