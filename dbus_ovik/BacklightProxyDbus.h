#pragma once

#include "IProxy/IBacklightProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

class BacklightProxyDbus : public IBacklightProxy
{
    Q_OBJECT
    using Client = ComWenuOVIKBacklightInterface;

public:
    explicit BacklightProxyDbus(QDBusConnection& connection)
        : m_dbusObject(makeClient<Client>(QStringLiteral("/Backlight"), connection))
    {
    }

    bool isValid() const override { return m_dbusObject && m_dbusObject->isValid(); }

public Q_SLOTS:
    status_t getBrightness(int& resp) override
    {
        return ask(m_dbusObject, &Client::getBrightness, resp);
    }
    status_t saveBrightness(int value, int& resp) override
    {
        return ask(m_dbusObject, &Client::saveBrightness, resp, value);
    }

private:
    std::unique_ptr<Client> m_dbusObject;
};
