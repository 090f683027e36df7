#pragma once

#include "IProxy/ovik_status.h"

#include <QObject>

#include "IProxy/OVIKPlatformRecords.h"

/**
 * The panel's identity.
 *
 * Here and in every proxy: the returned status tells whether the platform was reached (OVIK_OK,
 * OVIK_NO_PLATFORM, OVIK_REPLY_ERROR; OVIK_NOT_RUN where a backend does not support a call). The
 * platform's answer is in the reference argument: for a getter the value read, for a setter or an
 * action the platform's own result code. It counts only on OVIK_OK.
 */
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
