#pragma once

#include "IProxy/OVIKPlatformRecords.h"
#include "IProxy/ovik_status.h"

#include <QObject>
#include <QString>

/// Storage devices by name, as a record or as the platform's JSON document.
class IStorageManagerProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~IStorageManagerProxy() override = default;

    /// True when there is a platform object to call.
    virtual bool isValid() const = 0;

public Q_SLOTS:
    virtual status_t getStorageInfo(const QString& name, ovikStorageInfo& info) = 0;
    virtual status_t getStorageInfoJson(const QString& name, QString& json) = 0;
};
