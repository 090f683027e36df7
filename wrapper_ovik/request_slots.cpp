// The request slots of OvikApplication. Each calls one operation of one proxy.

#include "wrapper_ovik/ovikapplication.h"

#include "IProxy/IBacklightProxy.h"
#include "IProxy/IBuzzerProxy.h"
#include "IProxy/IMainOsProxy.h"
#include "IProxy/INetworkManagerProxy.h"
#include "IProxy/IOvikProxy.h"
#include "IProxy/ISeepromProxy.h"
#include "IProxy/IServiceManagerProxy.h"
#include "IProxy/IStorageManagerProxy.h"
#include "IProxy/ISysStatProxy.h"
#include "IProxy/ISystemInfoProxy.h"
#include "dbus_ovik/HWPluginInstanceProxyDbus.h"

#include <cstdio>
#include <functional>

namespace
{
/// Asks @p proxy for a value, which @p operation writes to its last argument.
template <class Resp, class Proxy, class... Params, class... Args>
Resp forward(Proxy* proxy, status_t (Proxy::*operation)(Params...), const Args&... args)
{
    Resp resp = {OVIK_NO_PLATFORM, {}};
    if (!proxy)
        return resp;
    decltype(resp.value) value = {};
    resp.status = (proxy->*operation)(args..., value);
    if (resp.status == OVIK_OK)
        resp.value = value;
    return resp;
}

/// Like forward(), for a text that is returned as Latin-1 bytes.
template <class Proxy, class... Params, class... Args>
StatusByteArrayResp forwardLatin1(Proxy* proxy, status_t (Proxy::*operation)(Params...),
                                  const Args&... args)
{
    const auto resp = forward<StatusStringResp>(proxy, operation, args...);
    return {resp.status, resp.value.toLatin1()};
}

constexpr auto sensors = &HWPluginInstanceProxyDbus::getSensors;
constexpr auto leds = &HWPluginInstanceProxyDbus::getLeds;

/// The LED value of flashing and blinking; the requests have no argument for it.
constexpr unsigned int lit = 1;

/**
 * Asks the sensors or the LEDs of the plug-in module at @p slot. The module's own answer, even a
 * negative result, is the value of a successful request.
 */
template <class Resp, class Points, class Operation, class... Args>
Resp askPlugin(const QVector<HWPluginInstanceProxyDbus*>& instances, unsigned int slot,
               Points* (HWPluginInstanceProxyDbus::*points)(), Operation operation,
               const Args&... args)
{
    HWPluginInstanceProxyDbus* const instance = instances.value(static_cast<int>(slot));
    if (!instance)
        return {OVIK_EMPTY_SLOT, {}};
    Points* const object = (instance->*points)();
    if (!object)
        return {OVIK_NO_PLATFORM, {}};
    return {OVIK_OK, std::invoke(operation, object, args...)};
}
} // namespace

StatusIntResp OvikApplication::getBuzzerMode()
{
    return forward<StatusIntResp>(m_buzzer, &IBuzzerProxy::getBuzzerMode);
}

StatusIntResp OvikApplication::setBuzzerMode(int mode)
{
    return forward<StatusIntResp>(m_buzzer, &IBuzzerProxy::setBuzzerMode, mode);
}

StatusIntResp OvikApplication::setBuzzerUserControl(int control)
{
    return forward<StatusIntResp>(m_buzzer, &IBuzzerProxy::setBuzzerUserControl, control);
}

StatusIntResp OvikApplication::setBuzzerOnTime(int time)
{
    return forward<StatusIntResp>(m_buzzer, &IBuzzerProxy::setBuzzerOnTime, time);
}

StatusIntResp OvikApplication::setBuzzerOffTime(int time)
{
    return forward<StatusIntResp>(m_buzzer, &IBuzzerProxy::setBuzzerOffTime, time);
}

StatusIntResp OvikApplication::getBrightness()
{
    return forward<StatusIntResp>(m_backlight, &IBacklightProxy::getBrightness);
}

StatusIntResp OvikApplication::saveBrightness(int value)
{
    return forward<StatusIntResp>(m_backlight, &IBacklightProxy::saveBrightness, value);
}

SystemInfoResp OvikApplication::getSystemInfo()
{
    SystemInfoResp resp = {OVIK_NO_PLATFORM, {}};
    if (m_systemInfo)
        resp.status = m_systemInfo->getSystemInfo(resp.info);
    return resp;
}

StatusByteArrayResp OvikApplication::seepromRead(int addr, int len)
{
    StatusByteArrayResp resp = {OVIK_NO_PLATFORM, {}};
    int ignored = 0;
    if (m_seeprom)
        resp.status = m_seeprom->read(static_cast<unsigned char>(addr),
                                      static_cast<unsigned int>(len), resp.value, ignored);
    return resp;
}

StatusByteArrayResp OvikApplication::seepromReadSlave(int slaveAddr, int addr, int len)
{
    StatusByteArrayResp resp = {OVIK_NO_PLATFORM, {}};
    int ignored = 0;
    if (m_seeprom)
        resp.status = m_seeprom->readSlave(static_cast<unsigned char>(slaveAddr),
                                           static_cast<unsigned char>(addr),
                                           static_cast<unsigned int>(len), resp.value, ignored);
    return resp;
}

StatusIntResp OvikApplication::getSysCounter()
{
    return forward<StatusIntResp>(m_ovik, &IOvikProxy::getSysCounter);
}

StatusIntResp OvikApplication::getBackLightCounter()
{
    return forward<StatusIntResp>(m_ovik, &IOvikProxy::getBackLightCounter);
}

StatusStringResp OvikApplication::getVolatileParameter(const QString& key)
{
    return forward<StatusStringResp>(m_ovik, &IOvikProxy::getVolatileParameter, key);
}

StatusStringResp OvikApplication::getAllVolatileParametersJson()
{
    return forward<StatusStringResp>(m_ovik, &IOvikProxy::getAllVolatileParametersJson);
}

StatusStringResp OvikApplication::getSystemParameter(const QString& key)
{
    return forward<StatusStringResp>(m_ovik, &IOvikProxy::getSystemParameter, key);
}

StatusStringResp OvikApplication::getAllSystemParametersJson()
{
    return forward<StatusStringResp>(m_ovik, &IOvikProxy::getAllSystemParametersJson);
}

StatusIntResp OvikApplication::setVolatileParameter(const QString& key, const QString& value)
{
    return forward<StatusIntResp>(m_ovik, &IOvikProxy::setVolatileParameter, key, value);
}

StatusIntResp OvikApplication::setSystemParameter(const QString& key, const QString& value)
{
    return forward<StatusIntResp>(m_ovik, &IOvikProxy::setSystemParameter, key, value);
}

StatusIntResp OvikApplication::setSystemParametersJson(const QString& key, const QString& json)
{
    return forward<StatusIntResp>(m_ovik, &IOvikProxy::setSystemParametersJSON, key, json);
}

StatusByteArrayResp OvikApplication::mainOsVersion()
{
    return forward<StatusByteArrayResp>(m_mainOs, &IMainOsProxy::version);
}

StatusByteArrayResp OvikApplication::getStorageInfoJson(const QString& name)
{
    return forwardLatin1(m_storageManager, &IStorageManagerProxy::getStorageInfoJson, name);
}

StatusUint64Resp OvikApplication::getAvailableMemory()
{
    return forward<StatusUint64Resp>(m_sysStat, &ISysStatProxy::availableMemory);
}

StatusByteArrayResp OvikApplication::getNetworkConfigJson()
{
    return forwardLatin1(m_networkManager, &INetworkManagerProxy::getConfigJson);
}

StatusIntResp OvikApplication::setInterfaceConfigJson(const QString& interface,
                                                      const QString& config)
{
    return forward<StatusIntResp>(m_networkManager, &INetworkManagerProxy::setInterfaceConfigJson,
                                  interface, config);
}

StatusIntResp OvikApplication::applyNewConfiguration()
{
    return forward<StatusIntResp>(m_networkManager, &INetworkManagerProxy::applyNewConfiguration);
}

StatusIntResp OvikApplication::getHWPluginIOMode(unsigned int slot, unsigned int index)
{
    return askPlugin<StatusIntResp>(m_HWPluginInstances, slot, sensors, &IPluginSensors::getIoMode,
                                    index);
}

StatusByteArrayResp OvikApplication::getHWPluginIO(unsigned int slot, unsigned int index, int count)
{
    const auto resp =
        askPlugin<StatusByteArrayResp>(m_HWPluginInstances, slot, sensors, &IPluginSensors::readIo,
                                       index, static_cast<unsigned int>(count));
    if (resp.status == OVIK_NO_PLATFORM)
        printf("OAPP: getHWPluginInput error %d\n", resp.status);
    return resp;
}

StatusIntResp OvikApplication::setHWPluginIO(unsigned int slot, unsigned int index,
                                             QByteArray output)
{
    return askPlugin<StatusIntResp>(m_HWPluginInstances, slot, sensors, &IPluginSensors::writeIo,
                                    index, output);
}

StatusIntResp OvikApplication::getHWPluginLedMode(unsigned int slot, unsigned int index)
{
    return askPlugin<StatusIntResp>(m_HWPluginInstances, slot, leds, &IPluginLeds::GetLedMode,
                                    index);
}

StatusIntResp OvikApplication::setHWPluginLedUserControl(unsigned int slot, unsigned int index,
                                                         int control)
{
    return askPlugin<StatusIntResp>(m_HWPluginInstances, slot, leds,
                                    &IPluginLeds::SetLedUserControl, index, control);
}

StatusIntResp OvikApplication::setHWPluginLedValue(unsigned int slot, unsigned int index,
                                                   unsigned int value)
{
    return askPlugin<StatusIntResp>(m_HWPluginInstances, slot, leds, &IPluginLeds::SetLedValue,
                                    index, value);
}

StatusIntResp OvikApplication::setHWPluginLedOnTime(unsigned int slot, unsigned int index,
                                                    int onTime)
{
    return askPlugin<StatusIntResp>(m_HWPluginInstances, slot, leds, &IPluginLeds::SetLedOnTime,
                                    index, onTime);
}

StatusIntResp OvikApplication::setHWPluginLedOffTime(unsigned int slot, unsigned int index,
                                                     int offTime)
{
    return askPlugin<StatusIntResp>(m_HWPluginInstances, slot, leds, &IPluginLeds::SetLedOffTime,
                                    index, offTime);
}

StatusIntResp OvikApplication::setHWPluginLedFlash(unsigned int slot, unsigned int index, int time)
{
    return askPlugin<StatusIntResp>(m_HWPluginInstances, slot, leds, &IPluginLeds::flash, index,
                                    lit, time);
}

StatusIntResp OvikApplication::setHWPluginLedBlink(unsigned int slot, unsigned int index,
                                                   int onTime, int offTime)
{
    return askPlugin<StatusIntResp>(m_HWPluginInstances, slot, leds, &IPluginLeds::blink, index,
                                    lit, onTime, offTime);
}

StatusIntResp OvikApplication::serviceStart(QString service)
{
    return forward<StatusIntResp>(m_serviceManager, &IServiceManagerProxy::start, service);
}

StatusIntResp OvikApplication::serviceStop(QString service)
{
    return forward<StatusIntResp>(m_serviceManager, &IServiceManagerProxy::stop, service);
}

StatusIntResp OvikApplication::serviceRestart(QString service)
{
    return forward<StatusIntResp>(m_serviceManager, &IServiceManagerProxy::restart, service);
}

StatusIntResp OvikApplication::serviceReload(QString service)
{
    return forward<StatusIntResp>(m_serviceManager, &IServiceManagerProxy::reload, service);
}

StatusIntResp OvikApplication::serviceEnable(QString service)
{
    return forward<StatusIntResp>(m_serviceManager, &IServiceManagerProxy::enable, service);
}

StatusIntResp OvikApplication::serviceDisable(QString service)
{
    return forward<StatusIntResp>(m_serviceManager, &IServiceManagerProxy::disable, service);
}

StatusBoolResp OvikApplication::serviceEnabled(QString service)
{
    return forward<StatusBoolResp>(m_serviceManager, &IServiceManagerProxy::enabled, service);
}

StatusIntResp OvikApplication::serviceApply(QString service)
{
    return forward<StatusIntResp>(m_serviceManager, &IServiceManagerProxy::apply, service);
}

StatusBoolResp OvikApplication::serviceControlled(QString service)
{
    return forward<StatusBoolResp>(m_serviceManager, &IServiceManagerProxy::controlled, service);
}

StatusIntResp OvikApplication::serviceState(QString service)
{
    return forward<StatusIntResp>(m_serviceManager, &IServiceManagerProxy::state, service);
}

StatusIntResp OvikApplication::serviceCommand(QString service, QString cmd, QString opts,
                                              void* fnCallback)
{
    return forward<StatusIntResp>(m_serviceManager, &IServiceManagerProxy::command, service, cmd,
                                  opts, fnCallback);
}
