#pragma once

#include "client/ovik_client.h"

#include <memory>
#include <string>
#include <vector>

/// A request that reads, and the call of the platform that it comes to.
struct Read {
    const char* request;
    const char* path;
    const char* interface;
    const char* method;
    char type; ///< of its answer, as D-Bus writes it
};

extern const Read brightness;
/// A control cycle's reads.
const std::vector<Read>& cycle();

/// The service, or what serves the same way, through the client library.
class Service
{
public:
    explicit Service(const std::string& path = OVIK_CLIENT_SOCKET);
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    /// Sends them back to back; each answer must have the status.
    void batch(const std::vector<const char*>& requests, int status = OVIK_OK);
    /// The answer's text.
    std::string single(const char* request);

private:
    ovik_client* m_client;
};

/// A client that keeps a number of requests under way.
class Window
{
public:
    explicit Window(const std::string& path = OVIK_CLIENT_SOCKET);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void run(const std::string& request, int count, int outstanding);

private:
    int m_fd;
};

/// What a program in Qt does instead: blocking calls with the clients that qdbusxml2cpp makes.
class QtProgram
{
public:
    QtProgram();
    ~QtProgram();
    void getBrightness();
    /// The calls that cycle() comes to.
    void readCycle();
    void readEeprom(int length);
    /// All system parameters.
    void readDocument();

private:
    struct Clients;
    const std::unique_ptr<Clients> m_clients;
};

/// What a program without Qt does instead: blocking calls with libsystemd.
class SdBusProgram
{
public:
    SdBusProgram();
    ~SdBusProgram();
    SdBusProgram(const SdBusProgram&) = delete;
    SdBusProgram& operator=(const SdBusProgram&) = delete;
    void call(const Read& read);

private:
    struct sd_bus* m_bus = nullptr;
};

/// What a script does instead: a process for the request.
void runBusctl(const Read& read);
