#pragma once

#include "IProxy/ovik_status.h"

#include <QObject>
#include <QString>

/// The panel's system services by name.
class IServiceManagerProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~IServiceManagerProxy() override = default;

    /// True when there is a platform object to call.
    virtual bool isValid() const = 0;

public Q_SLOTS:
    virtual status_t start(const QString& service, int& resp) = 0;
    virtual status_t stop(const QString& service, int& resp) = 0;
    virtual status_t restart(const QString& service, int& resp) = 0;
    virtual status_t reload(const QString& service, int& resp) = 0;
    virtual status_t enable(const QString& service, int& resp) = 0;
    virtual status_t disable(const QString& service, int& resp) = 0;
    virtual status_t enabled(const QString& service, bool& resp) = 0;
    virtual status_t apply(const QString& service, int& resp) = 0;
    virtual status_t controlled(const QString& service, bool& resp) = 0;
    virtual status_t state(const QString& service, int& resp) = 0;

    /**
     * Starts a command whose result the platform reports later, see onCommandResult().
     * @param fnCallback a function taking three const char* (service, command, result text);
     *                   replaces the callback of any earlier command
     */
    virtual status_t command(const QString& service, const QString& command, const QString& opts,
                             void* fnCallback, int& resp) = 0;

    /**
     * Receives a result from the platform: calls the callback, unless null, with the three texts as
     * Latin-1, which are valid during the callback only.
     */
    virtual void onCommandResult(const QString& service, const QString& command,
                                 const QString& json) = 0;
};
