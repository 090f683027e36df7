#include "panel_sim/platform_plugins.h"

int SimHWPlugin::seepromRead(uchar plid, uchar addr, uint length, QByteArray& data)
{
    const sim::Plugin* module = plugin(plid);
    data = module ? module->eeprom.read(addr, length) : QByteArray();
    return module ? sim::Done : sim::Refused;
}

int SimHWPlugin::seepromWrite(uchar plid, uchar addr, const QByteArray& data)
{
    sim::Plugin* module = plugin(plid);
    return module ? module->eeprom.write(addr, data) : sim::Refused;
}

sSEEModule SimHWPlugin::signature() const
{
    const sim::Plugin* module = m_panel.plugin(m_slot);
    return module ? module->signature() : sSEEModule{};
}
