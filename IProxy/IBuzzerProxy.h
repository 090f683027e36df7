#pragma once

#include "IProxy/ovik_status.h"

#include <QObject>

/// The buzzer; modes, controls and times are the platform's.
class IBuzzerProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~IBuzzerProxy() override = default;

    /// True when there is a platform object to call.
    virtual bool isValid() const = 0;

public Q_SLOTS:
    virtual status_t setBuzzerMode(int mode, int& resp) = 0;
    virtual status_t getBuzzerMode(int& resp) = 0;
    virtual status_t setBuzzerUserControl(int control, int& resp) = 0;
    virtual status_t setBuzzerOnTime(int time, int& resp) = 0;
    virtual status_t setBuzzerOffTime(int time, int& resp) = 0;
};
