#pragma once

#include <QObject>

class IBacklightProxy;
class IBuzzerProxy;
class ISystemInfoProxy;

/**
 * A backend: one way to reach the panel's platform. The backend owns its proxies. ovik_status.h
 * explains their statuses and outputs.
 */
class IOvikInterface : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~IOvikInterface() override = default;

    /**
     * Initialises the backend and creates its proxies; the proxy of a missing facility is null.
     * @return true, even with facilities missing and at once when already valid; false on failure
     */
    virtual bool init() = 0;

    /// Releases the proxies and what they use. May be called at any time. @return always true
    virtual bool shutdown() = 0;

    /// True when no facility is missing.
    virtual bool isValid() const = 0;

    // Null for a missing facility.
    Q_INVOKABLE virtual ISystemInfoProxy* systemInfoProxy() = 0;
    Q_INVOKABLE virtual IBuzzerProxy* buzzerProxy() = 0;
    Q_INVOKABLE virtual IBacklightProxy* backlightProxy() = 0;
};
