/* The services of the platform library, as the objects that its factory returns. */
#ifndef OVIK_PLATFORM_INTERFACE_H
#define OVIK_PLATFORM_INTERFACE_H

#include "IProxy/OVIKPlatformDevices.h"
#include "IProxy/OVIKPlatformInfo.h"
#include "IProxy/OVIKPlatformPlugins.h"
#include "IProxy/OVIKPlatformProcesses.h"
#include "IProxy/OVIKPlatformRecords.h"
#include "IProxy/OVIKPlatformServices.h"

/*
 * The platform library is built against the same declarations and is called through the virtual
 * table, so the order of the operations is the contract. Append new operations at the end of an
 * interface only: with any other order, existing libraries would run the wrong operation. The same
 * applies to data members, as the library creates the objects.
 *
 * The library creates and owns every object: never delete one or make it a child. No object is
 * thread safe. An int result is the platform's own status or value; the platform defines its
 * meaning.
 */

/** The library's factory. @return the object of an instance name, or null when it does not exist */
typedef QObject* (*OvikPluginFactory_getInstance_function)(const char* instanceName);

#endif
