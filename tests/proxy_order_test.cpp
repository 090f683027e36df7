// Order of the virtual operations of the contracts and of the backends, and the names that their
// parameters have in the meta-object.

#include "dbus_ovik/BacklightProxyDbus.h"
#include "dbus_ovik/BuzzerProxyDbus.h"
#include "dbus_ovik/HWPluginInstanceProxyDbus.h"
#include "dbus_ovik/MainOsProxyDbus.h"
#include "dbus_ovik/NetworkManagerProxyDbus.h"
#include "dbus_ovik/OVIKInterfaceDbus.h"
#include "dbus_ovik/OvikProxyDbus.h"
#include "dbus_ovik/SeepromProxyDbus.h"
#include "dbus_ovik/ServiceManagerProxyDbus.h"
#include "dbus_ovik/StorageManagerProxyDbus.h"
#include "dbus_ovik/SysStatProxyDbus.h"
#include "dbus_ovik/SystemInfoProxyDbus.h"
#include "local_ovik/BacklightProxyLocal.h"
#include "local_ovik/BuzzerProxyLocal.h"
#include "local_ovik/MainOsProxyLocal.h"
#include "local_ovik/NetworkManagerProxyLocal.h"
#include "local_ovik/OVIKInterfaceLocal.h"
#include "local_ovik/OvikProxyLocal.h"
#include "local_ovik/SeepromProxyLocal.h"
#include "local_ovik/StorageManagerProxyLocal.h"
#include "local_ovik/SysStatProxyLocal.h"
#include "local_ovik/SystemInfoProxyLocal.h"

#include "tests/support/virtual_slot.h"

#include <gtest/gtest.h>

#include <QMetaMethod>

#include <string>
#include <vector>

namespace
{
struct Order {
    std::string name;
    std::vector<std::size_t> places; ///< in the virtual table
};

void PrintTo(const Order& order, std::ostream* out) { *out << order.name; }

template <class Class, class... Operations>
Order order(Operations... operations)
{
    return {Class::staticMetaObject.className(), {virtualSlot(operations)...}};
}

std::vector<Order> orders()
{
    using Services = IServiceManagerProxy;
    using Dbus = OVIKInterfaceDbus;
    using Local = OVIKInterfaceLocal;
    using Base = ComWenuOVIKInterface;
    return {
        order<ISystemInfoProxy>(&ISystemInfoProxy::isValid, &ISystemInfoProxy::getSystemInfo),
        order<IBuzzerProxy>(&IBuzzerProxy::isValid, &IBuzzerProxy::setBuzzerMode,
                            &IBuzzerProxy::getBuzzerMode, &IBuzzerProxy::setBuzzerUserControl,
                            &IBuzzerProxy::setBuzzerOnTime, &IBuzzerProxy::setBuzzerOffTime),
        order<IBacklightProxy>(&IBacklightProxy::isValid, &IBacklightProxy::getBrightness,
                               &IBacklightProxy::saveBrightness),
        order<ISeepromProxy>(&ISeepromProxy::isValid, &ISeepromProxy::read,
                             &ISeepromProxy::readSlave),
        order<IOvikProxy>(
            &IOvikProxy::isValid, &IOvikProxy::getSysCounter, &IOvikProxy::getBackLightCounter,
            &IOvikProxy::getVolatileParameter, &IOvikProxy::getSystemParameter,
            &IOvikProxy::getAllVolatileParametersJson, &IOvikProxy::getAllSystemParametersJson,
            &IOvikProxy::setVolatileParameter, &IOvikProxy::setSystemParameter,
            &IOvikProxy::setSystemParametersJSON),
        order<IMainOsProxy>(&IMainOsProxy::isValid, &IMainOsProxy::version),
        order<IStorageManagerProxy>(&IStorageManagerProxy::isValid,
                                    &IStorageManagerProxy::getStorageInfo,
                                    &IStorageManagerProxy::getStorageInfoJson),
        order<ISysStatProxy>(&ISysStatProxy::isValid, &ISysStatProxy::availableMemory),
        order<INetworkManagerProxy>(&INetworkManagerProxy::isValid,
                                    &INetworkManagerProxy::getConfigJson,
                                    &INetworkManagerProxy::setInterfaceConfigJson,
                                    &INetworkManagerProxy::applyNewConfiguration),
        order<Services>(&Services::isValid, &Services::start, &Services::stop, &Services::restart,
                        &Services::reload, &Services::enable, &Services::disable,
                        &Services::enabled, &Services::apply, &Services::controlled,
                        &Services::state, &Services::command, &Services::onCommandResult),
        order<IHWPluginInstanceProxy>(&IHWPluginInstanceProxy::isValid,
                                      &IHWPluginInstanceProxy::getLeds,
                                      &IHWPluginInstanceProxy::getSensors),
        order<IOvikInterface>(&IOvikInterface::init, &IOvikInterface::shutdown,
                              &IOvikInterface::isValid, &IOvikInterface::systemInfoProxy,
                              &IOvikInterface::buzzerProxy, &IOvikInterface::backlightProxy),
        order<Dbus>(&Dbus::init, &Dbus::shutdown, &Dbus::isValid, &Dbus::systemInfoProxy,
                    &Dbus::buzzerProxy, &Dbus::backlightProxy, &Dbus::seepromProxy,
                    &Dbus::ovikProxy, &Dbus::mainOsProxy, &Dbus::storageManagerProxy,
                    &Dbus::sysStatProxy, &Dbus::networkManagerProxy, &Dbus::HWPluginInstanceProxy,
                    &Dbus::serviceManagerProxy),
        // Without seepromProxy(), which is not virtual.
        order<Local>(&Local::init, &Local::shutdown, &Local::isValid, &Local::systemInfoProxy,
                     &Local::buzzerProxy, &Local::backlightProxy, &Local::ovikProxy,
                     &Local::mainOsProxy, &Local::storageManagerProxy, &Local::sysStatProxy,
                     &Local::networkManagerProxy),
        order<Base>(&Base::getAllSystemParametersJSON, &Base::getVolatileParameter,
                    &Base::getAllVolatileParametersJSON),
    };
}

class ProxyOrder : public testing::TestWithParam<Order>
{
};

INSTANTIATE_TEST_SUITE_P(Each, ProxyOrder, testing::ValuesIn(orders()),
                         [](const auto& test) { return test.param.name; });

TEST_P(ProxyOrder, OperationsStandWithoutGapsBehindThoseOfQObject)
{
    std::vector<std::size_t> expected;
    for (std::size_t i = 0; i < GetParam().places.size(); ++i)
        expected.push_back(ObjectBase::slotAfter() + i);
    EXPECT_EQ(GetParam().places, expected);
}

template <class... Classes>
void expectNamedParameters()
{
    for (const QMetaObject* meta : {&Classes::staticMetaObject...}) {
        ASSERT_LT(meta->methodOffset(), meta->methodCount()) << meta->className();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            EXPECT_FALSE(meta->method(i).parameterNames().contains(QByteArray()))
                << meta->className() << ": " << meta->method(i).methodSignature().constData();
    }
}

TEST(ProxyNames, EveryParameterOfASlotHasOne)
{
    expectNamedParameters<ISystemInfoProxy, IBuzzerProxy, IBacklightProxy, ISeepromProxy,
                          IOvikProxy, IMainOsProxy, IStorageManagerProxy, ISysStatProxy,
                          INetworkManagerProxy, IServiceManagerProxy>();
    expectNamedParameters<SystemInfoProxyDbus, BuzzerProxyDbus, BacklightProxyDbus,
                          SeepromProxyDbus, OvikProxyDbus, MainOsProxyDbus, StorageManagerProxyDbus,
                          SysStatProxyDbus, NetworkManagerProxyDbus, ServiceManagerProxyDbus>();
    expectNamedParameters<SystemInfoProxyLocal, BuzzerProxyLocal, BacklightProxyLocal,
                          SeepromProxyLocal, OvikProxyLocal, MainOsProxyLocal,
                          StorageManagerProxyLocal, SysStatProxyLocal, NetworkManagerProxyLocal>();
}
} // namespace
