#pragma once

#include <QObject>

class IBacklightProxy;
class IBuzzerProxy;
class ISystemInfoProxy;

/**
 * A backend: one way to reach the panel's platform. It owns the proxies that it hands out; what
 * their statuses and outputs mean is in ovik_status.h.
 */
class IOvikInterface : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~IOvikInterface() override = default;

    /**
     * Brings the backend up and creates its proxies; at once true when it is valid already.
     * A facility that the platform lacks leaves its proxy null and does not make this fail.
     */
    virtual bool init() = 0;

    /// Releases the proxies and what they stand on. Always true; may be called at any time.
    virtual bool shutdown() = 0;

    /// True when no facility is missing.
    virtual bool isValid() const = 0;

    // Null for a facility that is missing.
    Q_INVOKABLE virtual ISystemInfoProxy* systemInfoProxy() = 0;
    Q_INVOKABLE virtual IBuzzerProxy* buzzerProxy() = 0;
    Q_INVOKABLE virtual IBacklightProxy* backlightProxy() = 0;
};
