#pragma once

#include "IProxy/ISeepromProxy.h"
#include "local_ovik/LocalProxy.h"

class SeepromProxyLocal : public ISeepromProxy
{
    Q_OBJECT
public:
    explicit SeepromProxyLocal(OvikPluginFactory_getInstance_function factory)
        : m_seeprom(instance<II2CSEEPROM>(factory, "I2CSEEPROM"))
    {
    }

    bool isValid() const override { return m_seeprom != nullptr; }

public Q_SLOTS:
    status_t read(unsigned char addr, unsigned int length, QByteArray& arr, int& resp) override
    {
        return ask(m_seeprom, &II2CSEEPROM::read, resp, addr, length, arr);
    }
    status_t readSlave(unsigned char slaveAddr, unsigned char addr, unsigned int length,
                       QByteArray& arr, int& resp) override
    {
        return ask(m_seeprom, &II2CSEEPROM::readSlvAddr, resp, slaveAddr, addr, length, arr);
    }

private:
    II2CSEEPROM* const m_seeprom; // the platform library's
};
