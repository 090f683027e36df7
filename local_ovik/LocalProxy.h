#pragma once

#include "IProxy/OVIKPlatformInterface.h"
#include "IProxy/ovik_status.h"

#include <functional>
#include <utility>

// Common parts of the local proxies. The library owns the platform's objects; never delete them.

/// @return the library's object of that name, or null; the object's class is not checked
template <class Platform>
Platform* instance(OvikPluginFactory_getInstance_function factory, const char* name)
{
    return static_cast<Platform*>(factory(name));
}

/// One proxy operation: calls the platform object once and writes the result to @p resp.
template <class Platform, class Operation, class Result, class... Args>
status_t ask(Platform* platform, Operation operation, Result& resp, Args&&... args)
{
    if (!platform)
        return OVIK_NO_PLATFORM;
    resp = std::invoke(operation, platform, std::forward<Args>(args)...);
    return OVIK_OK;
}

/// An operation that this backend does not support.
template <class Platform, class Result>
status_t unsupported(Platform* platform, Result& resp)
{
    if (!platform)
        return OVIK_NO_PLATFORM;
    resp = Result();
    return OVIK_NOT_RUN;
}
