#pragma once

#include <QObject>

#include <memory>
#include <utility>
#include <vector>

/**
 * Creates the proxies of a backend, and keeps those that a repeated start has replaced.
 *
 * Somebody may still hold the pointer of a replaced proxy, so it lives until release().
 */
class ProxyKeeper
{
public:
    /// Puts a new proxy into @p member, or null with @p warning if it has no platform object.
    template <class Proxy, class... Args>
    void create(std::unique_ptr<Proxy>& member, const char* warning, Args&... args)
    {
        keep(member);
        member = std::make_unique<Proxy>(args...);
        if (!member->isValid()) {
            qWarning("%s", warning);
            member.reset();
        }
    }

    /// Takes over the proxy in @p member, if there is one.
    template <class Proxy>
    void keep(std::unique_ptr<Proxy>& member)
    {
        if (member)
            m_replaced.push_back(std::move(member));
    }

    void release() { m_replaced.clear(); }

private:
    std::vector<std::unique_ptr<QObject>> m_replaced;
};
