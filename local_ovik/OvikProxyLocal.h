#pragma once

#include "IProxy/IOvikProxy.h"
#include "local_ovik/LocalProxy.h"

class OvikProxyLocal : public IOvikProxy
{
    Q_OBJECT
public:
    explicit OvikProxyLocal(OvikPluginFactory_getInstance_function factory)
        : m_Ovik(instance<IOVIK>(factory, "OVIK"))
    {
    }

    bool isValid() const override { return m_Ovik != nullptr; }

public Q_SLOTS:
    status_t getSysCounter(int& resp) override { return ask(m_Ovik, &IOVIK::getSysCounter, resp); }
    status_t getBackLightCounter(int& resp) override
    {
        return ask(m_Ovik, &IOVIK::getBlightCounter, resp);
    }
    status_t getVolatileParameter(const QString& key, QString& resp) override
    {
        return ask(m_Ovik, &IOVIK::getVolatileParameter, resp, key);
    }
    status_t getSystemParameter(const QString& key, QString& value) override
    {
        return ask(m_Ovik, &IOVIK::getSystemParameter, value, key);
    }
    // This backend does not support the three operations on whole sets, on purpose, although the
    // library has them.
    status_t getAllVolatileParametersJson(QString& value) override
    {
        return unsupported(m_Ovik, value);
    }
    status_t getAllSystemParametersJson(QString& value) override
    {
        return unsupported(m_Ovik, value);
    }
    status_t setVolatileParameter(const QString& key, const QString& value, int& resp) override
    {
        return ask(m_Ovik, &IOVIK::setVolatileParameter, resp, key, value);
    }
    status_t setSystemParameter(const QString& key, const QString& value, int& resp) override
    {
        constexpr bool doSync = true;
        return ask(m_Ovik, &IOVIK::setSystemParameter, resp, key, value, doSync);
    }
    status_t setSystemParametersJSON(const QString& key, const QString& json, int& resp) override
    {
        Q_UNUSED(key)
        Q_UNUSED(json)
        return unsupported(m_Ovik, resp);
    }

private:
    IOVIK* const m_Ovik; // the platform library's
};
