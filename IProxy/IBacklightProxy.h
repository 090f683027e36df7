#pragma once

#include "IProxy/ovik_status.h"

#include <QObject>

/// The display's backlight; the brightness scale is the platform's.
class IBacklightProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~IBacklightProxy() override = default;

    /// True when there is a platform object to call.
    virtual bool isValid() const = 0;

public Q_SLOTS:
    virtual status_t getBrightness(int& resp) = 0;
    virtual status_t saveBrightness(int value, int& resp) = 0;
};
