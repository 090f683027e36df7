#pragma once

#include "ComWenuOVIKGeneratedInterface.h" // generated from interfaces/com.wenu.OVIK.xml

/**
 * Client of the service's base interface. Three of its calls are virtual, so that a class derived
 * from it can answer them; generated calls are not. Their order is that of the virtual table, and
 * stays.
 */
class ComWenuOVIKInterface : public ComWenuOVIKGeneratedInterface
{
    Q_OBJECT
public:
    using ComWenuOVIKGeneratedInterface::ComWenuOVIKGeneratedInterface;

public Q_SLOTS:
    virtual QDBusPendingReply<QString> getAllSystemParametersJSON();
    virtual QDBusPendingReply<QString> getVolatileParameter(const QString& name);
    virtual QDBusPendingReply<QString> getAllVolatileParametersJSON();
};
