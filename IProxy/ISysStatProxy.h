#pragma once

#include "IProxy/ovik_status.h"

#include <QObject>

/// System statistics.
class ISysStatProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~ISysStatProxy() override = default;

    /// True when there is a platform object to call.
    virtual bool isValid() const = 0;

public Q_SLOTS:
    virtual status_t availableMemory(qulonglong& available) = 0;
};
