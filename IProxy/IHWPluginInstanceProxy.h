#pragma once

#include <QObject>

class IPluginLeds;
class IPluginSensors;

/// The hardware module in one plug-in slot.
class IHWPluginInstanceProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~IHWPluginInstanceProxy() override = default;

    virtual bool isValid() const = 0;

    // Null when the module lacks the facility.
    virtual IPluginLeds* getLeds() = 0;
    virtual IPluginSensors* getSensors() = 0;

protected:
    int m_slot = -1;
};
