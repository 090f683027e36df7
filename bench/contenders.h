#pragma once

#include "bench/timing.h"
#include "client/ovik_client.h"

#include "ComWenuOVIKBacklightInterface.h"
#include "ComWenuOVIKBuzzerInterface.h"
#include "ComWenuOVIKGeneratedInterface.h"
#include "ComWenuOVIKSysStatInterface.h"

#include <string>
#include <vector>

/// A client of the service, or of a server with the same protocol.
class ServiceClient
{
public:
    explicit ServiceClient(const std::string& path = OVIK_CLIENT_SOCKET);
    ~ServiceClient() { ovik_client_close(m_client); }
    ServiceClient(const ServiceClient&) = delete;
    ServiceClient& operator=(const ServiceClient&) = delete;

    /// Sends @p requests back to back. Throws unless every answer has @p status.
    void batch(const std::vector<const char*>& requests, int status = OVIK_OK);

private:
    ovik_client* m_client;
};

/// Sends @p count equal requests in one batch.
Contender batch(ServiceClient& client, const char* request, int count, int status = OVIK_OK);

/// A Qt program that calls the platform directly: blocking calls with generated clients.
class DirectProgram
{
public:
    void getBrightness();
    /// Calls getBrightness, getBuzzerMode, getSysCounter and getAvailableMemory.
    void readFour();

private:
    const QString m_service = "com.wenu.OVIK";
    const QDBusConnection m_bus = QDBusConnection::systemBus();
    ComWenuOVIKBacklightInterface m_backlight{m_service, "/Backlight", m_bus};
    ComWenuOVIKBuzzerInterface m_buzzer{m_service, "/Buzzer", m_bus};
    ComWenuOVIKGeneratedInterface m_ovik{m_service, "/", m_bus};
    ComWenuOVIKSysStatInterface m_sysStat{m_service, "/SysStat", m_bus};
};

/// Runs getBrightness as a script would: one busctl process.
void runBusctl();
