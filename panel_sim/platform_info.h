#pragma once

#include "IProxy/OVIKPlatformInfo.h"
#include "panel_sim/panel_model.h"

// Identity and software of the simulated panel. Nothing here changes at run time.

class SimSystemInfo : public ISystemInfo
{
    Q_OBJECT

public:
    explicit SimSystemInfo(const sim::Panel& panel, QObject* parent = nullptr);

    systemSpecs specs() override { return m_systemSpecs; }
    systemInfo info() override { return m_systemInfo; }
    QString infoJSON() override { return m_systemInfoJSON; }
};

class SimMainOsInfo : public IMainOSInfo
{
    Q_OBJECT

public:
    explicit SimMainOsInfo(const sim::Panel& panel, QObject* parent = nullptr) : IMainOSInfo(parent)
    {
        m_partitionInfo = panel.mainOs();
    }

    partitionInfo info() override { return m_partitionInfo; }
};

class SimSplashImageInfo : public ISplashImageInfo
{
    Q_OBJECT

public:
    explicit SimSplashImageInfo(const sim::Panel& panel, QObject* parent = nullptr)
        : ISplashImageInfo(parent)
    {
        m_splashImageInfo = panel.splashImage();
    }

    splashImageInfo info() override { return m_splashImageInfo; }
};
