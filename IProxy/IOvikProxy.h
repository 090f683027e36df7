#pragma once

#include "IProxy/ovik_status.h"

#include <QObject>
#include <QString>

/// Operating counters, and the volatile and system parameters.
class IOvikProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~IOvikProxy() override = default;

    /// True when there is a platform object to call.
    virtual bool isValid() const = 0;

public Q_SLOTS:
    virtual status_t getSysCounter(int& resp) = 0;
    virtual status_t getBackLightCounter(int& resp) = 0;
    virtual status_t getVolatileParameter(const QString& key, QString& value) = 0;
    virtual status_t getSystemParameter(const QString& key, QString& value) = 0;
    virtual status_t getAllVolatileParametersJson(QString& value) = 0;
    virtual status_t getAllSystemParametersJson(QString& value) = 0;
    virtual status_t setVolatileParameter(const QString& key, const QString& value, int& resp) = 0;
    virtual status_t setSystemParameter(const QString& key, const QString& value, int& resp) = 0;
    virtual status_t setSystemParametersJSON(const QString& key, const QString& json,
                                             int& resp) = 0;
};
