#pragma once

#include "IProxy/OVIKPlatformPlugins.h"
#include "panel_sim/panel_model.h"

/// The module in one slot. Its EEPROM only accepts the number of that slot.
class SimHWPlugin : public IHWPlugin
{
    Q_OBJECT

public:
    SimHWPlugin(sim::Panel& panel, int slot, QObject* parent = nullptr)
        : IHWPlugin(parent), m_panel(panel), m_slot(slot)
    {
    }

    int seepromRead(uchar plid, uchar addr, uint length, QByteArray& data) override;
    int seepromWrite(uchar plid, uchar addr, const QByteArray& data) override;
    sSEEModule signature() const override;

private:
    sim::Plugin* plugin(uchar plid) const
    {
        return plid == m_slot ? m_panel.plugin(plid) : nullptr;
    }

    sim::Panel& m_panel;
    const int m_slot;
};
