#pragma once

#include "IProxy/IBuzzerProxy.h"
#include "local_ovik/LocalProxy.h"

class BuzzerProxyLocal : public IBuzzerProxy
{
    Q_OBJECT
public:
    explicit BuzzerProxyLocal(OvikPluginFactory_getInstance_function factory)
        : m_buzzer(instance<IBuzzer>(factory, "Buzzer"))
    {
    }

    bool isValid() const override { return m_buzzer != nullptr; }

public Q_SLOTS:
    status_t setBuzzerMode(int mode, int& resp) override
    {
        return ask(m_buzzer, &IBuzzer::SetBuzzerMode, resp, mode);
    }
    status_t getBuzzerMode(int& resp) override
    {
        return ask(m_buzzer, &IBuzzer::GetBuzzerMode, resp);
    }
    status_t setBuzzerUserControl(int control, int& resp) override
    {
        return ask(m_buzzer, &IBuzzer::SetBuzzerUserControl, resp, control);
    }
    status_t setBuzzerOnTime(int time, int& resp) override
    {
        return ask(m_buzzer, &IBuzzer::SetBuzzerOnTime, resp, time);
    }
    status_t setBuzzerOffTime(int time, int& resp) override
    {
        return ask(m_buzzer, &IBuzzer::SetBuzzerOffTime, resp, time);
    }

private:
    IBuzzer* const m_buzzer; // the platform library's
};
