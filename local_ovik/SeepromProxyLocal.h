#pragma once

#include "IProxy/ISeepromProxy.h"
#include "local_ovik/LocalProxy.h"

class SeepromProxyLocal : public LocalProxy<ISeepromProxy, II2CSEEPROM>
{
    Q_OBJECT
public:
    explicit SeepromProxyLocal(OvikPluginFactory_getInstance_function factory)
        : LocalProxy("I2CSEEPROM", factory)
    {
    }

public Q_SLOTS:
    status_t read(unsigned char addr, unsigned int length, QByteArray& arr, int& resp) override
    {
        return ask(m_platformObject, &Platform::read, resp, addr, length, arr);
    }
    status_t readSlave(unsigned char slaveAddr, unsigned char addr, unsigned int length,
                       QByteArray& arr, int& resp) override
    {
        return ask(m_platformObject, &Platform::readSlvAddr, resp, slaveAddr, addr, length, arr);
    }
};
