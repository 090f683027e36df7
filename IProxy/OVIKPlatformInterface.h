/* The services of the platform library, as the objects that its factory hands out. */
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
 * table. The order of the operations therefore is the contract: a new one may only be appended at
 * the end of its interface, anywhere else it makes every library already built answer the wrong
 * call. Data members are part of the objects the library creates, so the same holds for them.
 *
 * The library creates and owns every object; nobody here deletes one or takes it as a child. None
 * of them is thread safe. An int result is the platform's own status or value and means what the
 * platform says.
 */

/** The library's factory: the object of an instance name, or null when it has no such object. */
typedef QObject* (*OvikPluginFactory_getInstance_function)(const char* instanceName);

#endif
