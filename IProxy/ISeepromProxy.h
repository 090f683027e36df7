#pragma once

#include "IProxy/ovik_status.h"

#include <QByteArray>
#include <QObject>

/**
 * The serial EEPROMs: the panel's own, and slaves by their bus address. Addresses are byte offsets,
 * @p length counts bytes; the platform may return fewer.
 */
class ISeepromProxy : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~ISeepromProxy() override = default;

    /// True when there is a platform object to call.
    virtual bool isValid() const = 0;

public Q_SLOTS:
    virtual status_t read(unsigned char addr, unsigned int length, QByteArray& data, int& resp) = 0;
    virtual status_t readSlave(unsigned char slaveAddr, unsigned char addr, unsigned int length,
                               QByteArray& data, int& resp) = 0;
};
