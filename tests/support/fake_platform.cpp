#include "tests/support/fake_platform.h"

#include "tests/support/process.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace
{
const char* const serviceName = "com.wenu.OVIK";

void check(int result, const char* what)
{
    if (result < 0)
        throw std::runtime_error(std::string(what) + " failed");
}

std::string hex(const void* data, size_t size)
{
    std::string text = "[";
    for (size_t i = 0; i < size; ++i) {
        char digits[4];
        snprintf(digits, sizeof digits, "%s%02x", i ? " " : "",
                 static_cast<const unsigned char*>(data)[i]);
        text += digits;
    }
    return text + "]";
}

template <class Value>
std::string number(sd_bus_message* message, char type)
{
    Value value = {};
    check(sd_bus_message_read_basic(message, type, &value), "read");
    std::ostringstream text;
    text << +value;
    return text.str();
}

std::string oneValue(sd_bus_message* message, char type, const char* contents)
{
    switch (type) {
    case 's':
    case 'o': {
        const char* text = nullptr;
        check(sd_bus_message_read_basic(message, type, &text), "read");
        return '"' + std::string(text) + '"';
    }
    case 'b':
    case 'i':
        return number<int32_t>(message, type);
    case 'n':
        return number<int16_t>(message, type);
    case 'u':
        return number<uint32_t>(message, type);
    case 't':
        return number<uint64_t>(message, type);
    case 'y':
        return number<uint8_t>(message, type);
    case 'd':
        return number<double>(message, type);
    case 'a': {
        const void* bytes = nullptr;
        size_t size = 0;
        check(sd_bus_message_read_array(message, 'y', &bytes, &size), "read");
        return hex(bytes, size);
    }
    case 'r': {
        check(sd_bus_message_enter_container(message, type, contents), "enter");
        const std::string fields = valuesOf(message);
        check(sd_bus_message_exit_container(message), "exit");
        return "(" + fields + " )";
    }
    default:
        throw std::runtime_error("a type that no test expects");
    }
}

std::string lastComponent(const std::string& interface)
{
    return interface.substr(interface.rfind('.') + 1);
}
} // namespace

std::string valuesOf(sd_bus_message* message)
{
    std::string text;
    char type = 0;
    const char* contents = nullptr;
    while (sd_bus_message_peek_type(message, &type, &contents) > 0)
        text += ' ' + oneValue(message, type, contents);
    return text;
}

Reply replyText(const std::string& text)
{
    return
        [=](sd_bus_message* call) { return sd_bus_reply_method_return(call, "s", text.c_str()); };
}

Reply replyFilledBy(std::function<void(sd_bus_message*)> fill)
{
    return [=](sd_bus_message* call) {
        sd_bus_message* reply = nullptr;
        check(sd_bus_message_new_method_return(call, &reply), "reply");
        fill(reply);
        const int sent = sd_bus_send(nullptr, reply, nullptr);
        sd_bus_message_unref(reply);
        return sent;
    };
}

void appendBytes(sd_bus_message* reply, const std::string& bytes)
{
    check(sd_bus_message_append_array(reply, 'y', bytes.data(), bytes.size()), "append");
}

Reply replyBytes(const std::string& bytes)
{
    return replyFilledBy([=](sd_bus_message* reply) { appendBytes(reply, bytes); });
}

Reply replyResultAndBytes(int result, const std::string& bytes)
{
    return replyFilledBy([=](sd_bus_message* reply) {
        check(sd_bus_message_append(reply, "i", result), "append");
        appendBytes(reply, bytes);
    });
}

Reply replySystemInfo(const std::string& serialNo, const std::string& moduleName,
                      const std::string& manufactureCode)
{
    return replyFilledBy([=](sd_bus_message* reply) {
        check(sd_bus_message_open_container(reply, 'r', "yyyayayyyayy"), "open");
        check(sd_bus_message_append(reply, "yyy", 1, 2, 26), "append");
        appendBytes(reply, serialNo);
        appendBytes(reply, moduleName);
        check(sd_bus_message_append(reply, "yy", 17, 3), "append");
        appendBytes(reply, manufactureCode);
        check(sd_bus_message_append(reply, "y", 9), "append");
        check(sd_bus_message_close_container(reply), "close");
    });
}

Reply replyStorageInfo(const std::string& mountPoint)
{
    return replyFilledBy([=](sd_bus_message* reply) {
        check(sd_bus_message_open_container(reply, 'r', "ayittu"), "open");
        appendBytes(reply, mountPoint);
        check(sd_bus_message_append(reply, "ittu", -2, uint64_t(1) << 40, uint64_t(5), 7),
              "append");
        check(sd_bus_message_close_container(reply), "close");
    });
}

Reply replyEcho()
{
    return [](sd_bus_message* call) {
        check(sd_bus_message_rewind(call, true), "rewind");
        return replyFilledBy([=](sd_bus_message* reply) {
            check(sd_bus_message_copy(reply, call, true), "copy");
        })(call);
    };
}

int appendDescriptor(sd_bus_message* message)
{
    const int fd = open("/dev/null", O_RDWR | O_CLOEXEC);
    const int result = sd_bus_message_append(message, "h", fd); // duplicates fd
    close(fd);
    return result;
}

Reply replyError(const std::string& name)
{
    return [=](sd_bus_message* call) {
        return sd_bus_reply_method_errorf(call, name.c_str(), "as the test asked for");
    };
}

Reply silence()
{
    return [](sd_bus_message*) { return 1; };
}

std::map<std::string, std::string> FakePlatform::wholePanel()
{
    const std::string base = serviceName;
    return {
        {"/", base},
        {"/Backlight", base + ".Backlight"},
        {"/Buzzer", base + ".Buzzer"},
        {"/HWPlugin/0", base + ".HWPluginInstance"},
        {"/HWPlugin/0/Leds", base + ".Leds"},
        {"/HWPlugin/0/Sensors", base + ".Sensors"},
        {"/HWPlugin/2", base + ".HWPluginInstance"},
        {"/HWPlugin/2/Leds", base + ".Leds"},
        {"/HWPlugin/2/Sensors", base + ".Sensors"},
        {"/I2CSEEPROM", base + ".I2CSEEPROM"},
        {"/MainOSInfo", base + ".PartitionInfo"},
        {"/NetworkManager", base + ".NetworkManager"},
        {"/ServiceManager", base + ".ServiceManager"},
        {"/StorageMgr", base + ".StorageMgr"},
        {"/SysStat", base + ".SysStat"},
        {"/SystemInfo", base + ".SystemInfo"},
    };
}

namespace
{
/// The bus may still list a previous owner that has already gone.
void own(sd_bus* bus)
{
    int result = 0;
    waitUntil([&] { return (result = sd_bus_request_name(bus, serviceName, 0)) != -EEXIST; });
    check(result, "sd_bus_request_name");
}
} // namespace

FakePlatform::FakePlatform(std::map<std::string, std::string> objects, bool ownNameAtOnce)
    : m_objects(std::move(objects)), m_wakeup(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    check(sd_bus_new(&m_bus), "sd_bus_new");
    check(sd_bus_set_address(m_bus, getenv("DBUS_SYSTEM_BUS_ADDRESS")), "sd_bus_set_address");
    check(sd_bus_set_bus_client(m_bus, true), "sd_bus_set_bus_client");
    check(sd_bus_add_filter(m_bus, nullptr, onMessage, this), "sd_bus_add_filter");
    check(sd_bus_start(m_bus), "sd_bus_start");
    if (ownNameAtOnce)
        own(m_bus);
    m_thread = std::thread(&FakePlatform::run, this);
}

FakePlatform::~FakePlatform()
{
    onThread([this] { m_stop = true; });
    m_thread.join();
    // After a mere close, the name keeps its owner until the bus notices.
    sd_bus_release_name(m_bus, serviceName);
    sd_bus_flush_close_unref(m_bus);
    close(m_wakeup);
}

void FakePlatform::run()
{
    while (!m_stop) {
        while (!m_isFrozen && sd_bus_process(m_bus, nullptr) > 0) {
        }
        pollfd events[] = {{sd_bus_get_fd(m_bus), POLLIN, 0}, {m_wakeup, POLLIN, 0}};
        events[0].events = static_cast<short>(sd_bus_get_events(m_bus));
        if (m_isFrozen)
            events[0].fd = -1; // poll() ignores negative descriptors
        poll(events, 2, -1);
        uint64_t ignored;
        (void)!read(m_wakeup, &ignored, sizeof ignored);

        std::unique_lock lock(m_mutex);
        while (!m_tasks.empty()) {
            auto task = std::move(m_tasks.front());
            m_tasks.pop_front();
            lock.unlock();
            task();
            lock.lock();
        }
    }
}

void FakePlatform::onThread(const std::function<void()>& task)
{
    std::packaged_task<void()> packaged(task);
    auto done = packaged.get_future();
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(packaged));
    }
    const uint64_t one = 1;
    (void)!write(m_wakeup, &one, sizeof one);
    done.get();
}

int FakePlatform::onMessage(sd_bus_message* message, void* self, sd_bus_error*)
{
    if (!sd_bus_message_is_method_call(message, nullptr, nullptr))
        return 0;
    return static_cast<FakePlatform*>(self)->handle(message);
}

int FakePlatform::handle(sd_bus_message* message)
{
    const std::string path = sd_bus_message_get_path(message);
    const char* const interfaceName = sd_bus_message_get_interface(message);
    const std::string interface = interfaceName ? interfaceName : "";
    const std::string member = sd_bus_message_get_member(message);

    if (interface == "org.freedesktop.DBus.Introspectable")
        return introspect(message, path);
    if (interface.rfind(serviceName, 0) != 0)
        return 0;

    const char* const signature = sd_bus_message_get_signature(message, true);
    std::string call = path;
    call += ' ' + interface + '.' + member + '(' + signature + ')' + valuesOf(message);

    Reply reply;
    {
        const std::lock_guard lock(m_mutex);
        m_calls.push_back(call);
        const auto found = m_answers.find(lastComponent(interface) + '.' + member);
        if (found != m_answers.end())
            reply = found->second;
    }
    return reply
               ? reply(message)
               : sd_bus_reply_method_errorf(message, SD_BUS_ERROR_UNKNOWN_METHOD, "no answer set");
}

int FakePlatform::introspect(sd_bus_message* message, const std::string& path)
{
    ++m_introspections;
    Reply reply;
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_introspectionAnswers.find(path);
        if (found != m_introspectionAnswers.end())
            reply = found->second;
    }
    if (reply)
        return reply(message);

    const auto object = m_objects.find(path);
    if (object == m_objects.end())
        return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_UNKNOWN_OBJECT, "no such object");
    const std::string xml = "<node><interface name=\"" + object->second + "\"/></node>";
    return sd_bus_reply_method_return(message, "s", xml.c_str());
}

void FakePlatform::answer(const std::string& member, Reply reply)
{
    const std::lock_guard lock(m_mutex);
    m_answers[member] = std::move(reply);
}

void FakePlatform::answerIntrospection(const std::string& path, Reply reply)
{
    const std::lock_guard lock(m_mutex);
    m_introspectionAnswers[path] = std::move(reply);
}

std::vector<std::string> FakePlatform::takeCalls()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_calls, {});
}

bool FakePlatform::waitForCall(const std::string& text)
{
    return waitUntil([&] {
        const std::lock_guard lock(m_mutex);
        for (const std::string& call : m_calls) {
            if (call.find(text) != std::string::npos)
                return true;
        }
        return false;
    });
}

void FakePlatform::emitCommandResult(const std::string& service, const std::string& command,
                                     const std::string& json)
{
    emitCommandResult([&](sd_bus_message* signal) {
        check(sd_bus_message_append(signal, "sss", service.c_str(), command.c_str(), json.c_str()),
              "append");
    });
}

void FakePlatform::emitCommandResult(const std::function<void(sd_bus_message*)>& fill)
{
    onThread([&] {
        sd_bus_message* signal = nullptr;
        check(sd_bus_message_new_signal(m_bus, &signal, "/ServiceManager",
                                        "com.wenu.OVIK.ServiceManager", "commandResult"),
              "signal");
        fill(signal);
        check(sd_bus_send(m_bus, signal, nullptr), "emit");
        sd_bus_message_unref(signal);
        check(sd_bus_flush(m_bus), "flush");
    });
}

void FakePlatform::ownName()
{
    onThread([this] { own(m_bus); });
}

void FakePlatform::releaseName()
{
    onThread([this] { check(sd_bus_release_name(m_bus, serviceName), "release name"); });
}

void FakePlatform::freeze()
{
    onThread([this] { m_isFrozen = true; });
}

void FakePlatform::resume()
{
    onThread([this] { m_isFrozen = false; });
}
