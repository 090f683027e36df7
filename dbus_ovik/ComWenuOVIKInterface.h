#pragma once

#include "ComWenuOVIKGeneratedInterface.h" // generated from interfaces/com.wenu.OVIK.xml

/**
 * Client of the service's base interface. Three calls are virtual, unlike generated calls, so that
 * a derived class can override them. Keep their order: it is the order of the virtual table.
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
