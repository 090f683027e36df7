#pragma once

#include "IProxy/OVIKPlatformRecords.h"
#include "IProxy/ovik_status.h"

#include <QObject>

/// The panel's identity.
class ISystemInfoProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~ISystemInfoProxy() override = default;

    /// True when there is a platform object to call.
    virtual bool isValid() const = 0;

public Q_SLOTS:
    virtual status_t getSystemInfo(systemInfo& resp) = 0;
};
