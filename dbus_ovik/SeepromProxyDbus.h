#pragma once

#include "IProxy/ISeepromProxy.h"
#include "dbus_ovik/OVIKDBusProxy.h"

#include "ComWenuOVIKI2CSEEPROMInterface.h"

class SeepromProxyDbus : public DbusProxy<ISeepromProxy, ComWenuOVIKI2CSEEPROMInterface>
{
    Q_OBJECT
public:
    static QString path() { return QStringLiteral("/I2CSEEPROM"); }

    explicit SeepromProxyDbus(QDBusConnection& connection, const PlatformIntrospection& known = {})
        : DbusProxy(path(), connection, known)
    {
    }

public Q_SLOTS:
    status_t read(unsigned char addr, unsigned int length, QByteArray& data, int& resp) override
    {
        return askTwo(&Client::read, data, resp, addr, length);
    }
    status_t readSlave(unsigned char slaveAddr, unsigned char addr, unsigned int length,
                       QByteArray& data, int& resp) override
    {
        return askTwo(&Client::readSlvAddr, data, resp, slaveAddr, addr, length);
    }

private:
    /// Like ask(), for a reply of two values; an error reply is not printed to standard output.
    template <class... Params>
    status_t askTwo(QDBusPendingReply<int, QByteArray> (Client::*method)(Params...),
                    QByteArray& data, int& resp, Params... args)
    {
        if (!m_dbusObject)
            return OVIK_NO_PLATFORM;
        QDBusPendingReply<int, QByteArray> reply = (m_dbusObject.get()->*method)(args...);
        reply.waitForFinished();
        if (isTypeMismatch(reply)) {
            resp = 0;
            data.clear();
            return OVIK_OK;
        }
        if (reply.isError()) {
            warnIfBusLost(m_dbusObject->connection());
            return OVIK_REPLY_ERROR;
        }
        resp = qdbus_cast<int>(reply.argumentAt(0));
        data = qdbus_cast<QByteArray>(reply.argumentAt(1));
        return OVIK_OK;
    }
};
