#include "panel_sim/platform_info.h"

SimSystemInfo::SimSystemInfo(const sim::Panel& panel, QObject* parent) : ISystemInfo(parent)
{
    m_systemInfo = panel.identity();
    m_systemInfoJSON = sim::writeJson({
        {"day", day()},
        {"month", month()},
        {"year", year()},
        {"serialNo", QString::fromLatin1(serialNo().toHex())},
        {"moduleName", QString::fromLatin1(moduleName())},
        {"hwCode", hwCode()},
        {"hwSubCode", hwSubCode()},
        {"manufactureCode", QString::fromLatin1(manufactureCode())},
        {"hwDispID", hwDispID()},
    });
    m_systemSpecs.type = "panel";
    m_systemSpecs.cpu.name = "simulated";
    m_systemSpecs.net.ethNum = 2;
    m_systemSpecs.video.hasOrientation = true;
    m_systemSpecs.sensors.hasTemperature = true;
}
