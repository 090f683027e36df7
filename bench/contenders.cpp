#include "bench/contenders.h"

#include "dbus_ovik/OVIKDBusProxy.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

const Read brightness = {"getBrightness", "/Backlight", "com.wenu.OVIK.Backlight", "getBrightness",
                         'i'};

const std::vector<Read>& cycle()
{
    static const std::vector<Read> kinds = {
        brightness,
        {"getBuzzerMode", "/Buzzer", "com.wenu.OVIK.Buzzer", "GetBuzzerMode", 'i'},
        {"getSysCounter", "/", "com.wenu.OVIK", "getSysCounter", 'i'},
        {"getAvailableMemory", "/SysStat", "com.wenu.OVIK.SysStat", "getAvailableMemory", 't'},
    };
    static const std::vector<Read> twenty = [] {
        std::vector<Read> reads;
        while (reads.size() < 20)
            reads.push_back(kinds[reads.size() % kinds.size()]);
        return reads;
    }();
    return twenty;
}

namespace
{
constexpr int patienceMs = 60000;

void check(ovik_client_error error)
{
    if (error != OVIK_CLIENT_OK)
        throw std::runtime_error(ovik_client_error_text(error));
}

void checkStatus(void* wanted, size_t, const ovik_client_answer* answer)
{
    if (answer->status != *static_cast<const int*>(wanted))
        throw std::runtime_error("a request was answered with status " +
                                 std::to_string(answer->status));
}
} // namespace

Service::Service(const std::string& path)
{
    check(ovik_client_open(&m_client, path.c_str(), patienceMs));
}

Service::~Service() { ovik_client_close(m_client); }

void Service::batch(const std::vector<const char*>& requests, int status)
{
    check(ovik_client_batch(m_client, requests.data(), requests.size(), patienceMs, checkStatus,
                            &status, nullptr));
}

std::string Service::single(const char* request)
{
    ovik_client_answer answer;
    check(ovik_client_request(m_client, request, patienceMs, &answer));
    if (answer.status != OVIK_OK)
        throw std::runtime_error(std::string(request) + " was answered with status " +
                                 std::to_string(answer.status));
    return answer.text;
}

Window::Window(const std::string& path) : m_fd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0))
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (connect(m_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("cannot connect to " + path);
}

Window::~Window() { close(m_fd); }

void Window::run(const std::string& request, int count, int outstanding)
{
    char answer[16384];
    int sent = 0;
    for (int answered = 0; answered < count; ++answered) {
        for (; sent < count && sent - answered < outstanding; ++sent) {
            if (send(m_fd, request.c_str(), request.size() + 1, MSG_NOSIGNAL) == -1)
                throw std::runtime_error(strerror(errno));
        }
        if (recv(m_fd, answer, sizeof answer, 0) <= 0)
            throw std::runtime_error("no answer");
    }
}

struct QtProgram::Clients {
    QDBusConnection bus = QDBusConnection::systemBus();
    ComWenuOVIKBacklightInterface backlight{ovikServiceName(), "/Backlight", bus};
    ComWenuOVIKBuzzerInterface buzzer{ovikServiceName(), "/Buzzer", bus};
    ComWenuOVIKGeneratedInterface ovik{ovikServiceName(), "/", bus};
    ComWenuOVIKI2CSEEPROMInterface seeprom{ovikServiceName(), "/I2CSEEPROM", bus};
    ComWenuOVIKSysStatInterface sysStat{ovikServiceName(), "/SysStat", bus};
};

namespace
{
template <class T, class... More>
T value(QDBusPendingReply<T, More...> reply)
{
    reply.waitForFinished();
    if (reply.isError())
        throw std::runtime_error(qPrintable(reply.error().message()));
    return reply.template argumentAt<0>();
}
} // namespace

QtProgram::QtProgram() : m_clients(std::make_unique<Clients>()) {}

QtProgram::~QtProgram() = default;

void QtProgram::getBrightness() { value(m_clients->backlight.getBrightness()); }

void QtProgram::readCycle()
{
    for (size_t i = 0; i < cycle().size(); i += 4) {
        value(m_clients->backlight.getBrightness());
        value(m_clients->buzzer.GetBuzzerMode());
        value(m_clients->ovik.getSysCounter());
        value(m_clients->sysStat.getAvailableMemory());
    }
}

void QtProgram::readEeprom(int length)
{
    value(m_clients->seeprom.read(0, static_cast<unsigned int>(length)));
}

void QtProgram::readDocument() { value(m_clients->ovik.getAllSystemParametersJSON()); }

SdBusProgram::SdBusProgram()
{
    if (sd_bus_open_system(&m_bus) < 0)
        throw std::runtime_error("no bus");
}

SdBusProgram::~SdBusProgram() { sd_bus_flush_close_unref(m_bus); }

void SdBusProgram::call(const Read& read)
{
    sd_bus_message* reply = nullptr;
    uint64_t value;
    const int done = sd_bus_call_method(m_bus, "com.wenu.OVIK", read.path, read.interface,
                                        read.method, nullptr, &reply, nullptr);
    if (done < 0 || sd_bus_message_read_basic(reply, read.type, &value) <= 0)
        throw std::runtime_error(std::string("sd-bus: no answer to ") + read.method);
    sd_bus_message_unref(reply);
}

void runBusctl(const Read& read)
{
    const char* const command[] = {"busctl",  "--system",     "call",      "com.wenu.OVIK",
                                   read.path, read.interface, read.method, nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid;
    int status = -1;
    const int started =
        posix_spawnp(&pid, "busctl", &actions, nullptr, const_cast<char* const*>(command), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (started != 0 || waitpid(pid, &status, 0) != pid || status != 0)
        throw std::runtime_error(std::string("busctl: no answer to ") + read.method);
}
