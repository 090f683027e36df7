#pragma once

#include "IProxy/OVIKPlatformInterface.h"
#include "IProxy/ovik_status.h"

#include <functional>
#include <utility>

// What the local proxies have in common. The platform's objects are the library's own: they are
// never deleted.

/// The library's object of that name, or null. The library is trusted to hand out the right class.
template <class Platform>
Platform* instance(OvikPluginFactory_getInstance_function factory, const char* name)
{
    return static_cast<Platform*>(factory(name));
}

/// One proxy operation: one call of the platform object, its result into @p resp.
template <class Platform, class Operation, class Result, class... Args>
status_t ask(Platform* platform, Operation operation, Result& resp, Args&&... args)
{
    if (!platform)
        return OVIK_NO_PLATFORM;
    resp = std::invoke(operation, platform, std::forward<Args>(args)...);
    return OVIK_OK;
}

/// An operation that this backend does not have.
template <class Platform, class Result>
status_t unsupported(Platform* platform, Result& resp)
{
    if (!platform)
        return OVIK_NO_PLATFORM;
    resp = Result();
    return OVIK_NOT_RUN;
}
