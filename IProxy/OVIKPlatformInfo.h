/* What the panel is and what is installed on it; the rules in OVIKPlatformInterface.h apply. */
#ifndef OVIK_PLATFORM_INFO_H
#define OVIK_PLATFORM_INFO_H

#include "IProxy/OVIKPlatformRecords.h"

#include <QByteArray>
#include <QObject>
#include <QString>

/** Identity and capabilities of the panel; the codes are the manufacturer's. */
class ISystemInfo : public QObject
{
    Q_OBJECT

public:
    explicit ISystemInfo(QObject* parent = nullptr) : QObject(parent) {}
    ~ISystemInfo() override = default;

public Q_SLOTS:
    virtual systemSpecs specs() = 0;
    virtual systemInfo info() = 0;
    virtual QString infoJSON() = 0;
    virtual uchar day() { return m_systemInfo.day; }
    virtual uchar month() { return m_systemInfo.month; }
    virtual uchar year() { return m_systemInfo.year; }
    virtual QByteArray serialNo();
    virtual QByteArray moduleName();
    virtual uchar hwCode() { return m_systemInfo.hwCode; }
    virtual uchar hwSubCode() { return m_systemInfo.hwSubCode; }
    virtual QByteArray manufactureCode();
    virtual uchar hwDispID() { return m_systemInfo.hwDispID; }

Q_SIGNALS:
    void error(QString);

protected:
    systemInfo m_systemInfo{};
    QString m_systemInfoJSON;
    systemSpecs m_systemSpecs{};
};

/** Release data of one software partition; type codes and version text are the partition's own. */
class IPartitionInfo : public QObject
{
    Q_OBJECT

public:
    explicit IPartitionInfo(QObject* parent = nullptr) : QObject(parent) {}
    ~IPartitionInfo() override = default;

public Q_SLOTS:
    virtual uchar type() { return info().type; }
    virtual uchar day() { return info().day; }
    virtual uchar month() { return info().month; }
    virtual uchar year() { return info().year; }
    /** The whole version field, trailing zero bytes included. */
    virtual QByteArray version();
    virtual bootldrInfo info() = 0;

Q_SIGNALS:
    void error(QString error);

protected:
    partitionInfo m_partitionInfo{};
};

/** Release data of the boot loader; the values are the partition's own. */
class IBootLoaderInfo : public IPartitionInfo
{
    Q_OBJECT

public:
    explicit IBootLoaderInfo(QObject* parent = nullptr) : IPartitionInfo(parent) {}
    ~IBootLoaderInfo() override = default;

public Q_SLOTS:
    partitionInfo info() override = 0;
};

/** Release data of the first-stage loader; the values are the partition's own. */
class IXLoaderInfo : public IPartitionInfo
{
    Q_OBJECT

public:
    explicit IXLoaderInfo(QObject* parent = nullptr) : IPartitionInfo(parent) {}
    ~IXLoaderInfo() override = default;

public Q_SLOTS:
    partitionInfo info() override = 0;
};

/** Release data of the main operating system; the values are the partition's own. */
class IMainOSInfo : public IPartitionInfo
{
    Q_OBJECT

public:
    explicit IMainOSInfo(QObject* parent = nullptr) : IPartitionInfo(parent) {}
    ~IMainOSInfo() override = default;

public Q_SLOTS:
    partitionInfo info() override = 0;
};

/** Release data of the configuration system; the values are the partition's own. */
class IConfigOSInfo : public IPartitionInfo
{
    Q_OBJECT

public:
    explicit IConfigOSInfo(QObject* parent = nullptr) : IPartitionInfo(parent) {}
    ~IConfigOSInfo() override = default;

public Q_SLOTS:
    partitionInfo info() override = 0;
};

/** Placement of the splash image; the coordinates are the screen's. */
class ISplashImageInfo : public QObject
{
    Q_OBJECT

public:
    explicit ISplashImageInfo(QObject* parent = nullptr) : QObject(parent) {}
    ~ISplashImageInfo() override = default;

public Q_SLOTS:
    virtual uint x() { return info().x; }
    virtual uint y() { return info().y; }
    virtual splashImageInfo info() = 0;

Q_SIGNALS:
    void error(QString error);

protected:
    splashImageInfo m_splashImageInfo{};
};

#endif
