#pragma once

#include "IProxy/ovik_status.h"

#include <QObject>
#include <QString>

/**
 * The network configuration as the platform's JSON documents. Changes are stored per interface and
 * take effect with applyNewConfiguration().
 */
class INetworkManagerProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~INetworkManagerProxy() override = default;

    /// True when there is a platform object to call.
    virtual bool isValid() const = 0;

public Q_SLOTS:
    virtual status_t getConfigJson(QString& json) = 0;
    virtual status_t setInterfaceConfigJson(const QString& interface, const QString& config,
                                            int& resp) = 0;
    virtual status_t applyNewConfiguration(int& resp) = 0;
};
