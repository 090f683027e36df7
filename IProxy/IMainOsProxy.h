#pragma once

#include "IProxy/ovik_status.h"

#include <QByteArray>
#include <QObject>

/// The main operating system.
class IMainOsProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~IMainOsProxy() override = default;

    /// True when there is a platform object to call.
    virtual bool isValid() const = 0;

public Q_SLOTS:
    /// The platform's whole version field: 20 bytes, trailing zero bytes included.
    virtual status_t version(QByteArray& version) = 0;
};
