#pragma once

#include "IProxy/OVIKPlatformInterface.h"
#include "IProxy/ovik_status.h"

#include <functional>
#include <utility>

/// One proxy operation: one call of the platform, its answer into @p resp.
template <class Platform, class Operation, class Result, class... Args>
status_t ask(Platform* object, Operation operation, Result& resp, Args&&... args)
{
    if (!object)
        return OVIK_NO_PLATFORM;
    resp = std::invoke(operation, object, std::forward<Args>(args)...);
    return OVIK_OK;
}

/// An operation that this backend does not have.
template <class Platform, class Result>
status_t unsupported(Platform* object, Result& resp)
{
    if (!object)
        return OVIK_NO_PLATFORM;
    resp = Result();
    return OVIK_NOT_RUN;
}

/**
 * What every proxy has in common: the library's object of its name, or null without that. The
 * library is trusted to hand out the right class, and keeps the object: it is never deleted here.
 */
template <class Interface, class PlatformClass>
class LocalProxy : public Interface
{
public:
    bool isValid() const override { return m_platformObject != nullptr; }

protected:
    using Platform = PlatformClass;

    LocalProxy(const char* name, OvikPluginFactory_getInstance_function factory)
        : m_platformObject(static_cast<Platform*>(factory(name)))
    {
    }

    Platform* const m_platformObject;
};
