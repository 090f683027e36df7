#include "fuzz/platform_bus.h"

#include "fuzz/check.h"
#include "fuzz/draw_message.h"

#include <QDirIterator>
#include <QXmlStreamReader>

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{
const char* const driver = "org.freedesktop.DBus";
const char* const introspectable = "org.freedesktop.DBus.Introspectable";
const char* const clientName = ":1.0";
const char* const platformName = ":1.1";

/// The result types of every method, from the interface files.
std::map<std::string, std::string> replySignatures()
{
    std::map<std::string, std::string> signatures;
    QDirIterator files(OVIK_DBUS_INTERFACE_DIR, {"*.xml"});
    while (files.hasNext()) {
        QFile file(files.next());
        check(file.open(QIODevice::ReadOnly), "an interface file can be read");
        QXmlStreamReader xml(&file);
        std::string interface, method;
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            const auto text = [&](const char* attribute) {
                return xml.attributes().value(QLatin1String(attribute)).toString().toStdString();
            };
            if (xml.name() == QLatin1String("interface"))
                interface = text("name");
            else if (xml.name() == QLatin1String("method"))
                signatures[method = interface + "." + text("name")] = "";
            else if (xml.name() == QLatin1String("arg") && text("direction") == "out")
                signatures[method] += text("type");
        }
    }
    check(!signatures.empty(), "there are interface files");
    return signatures;
}

std::string listOf(const std::map<std::string, std::string>& methods)
{
    std::string xml = "<node>";
    for (const auto& [method, signature] : methods)
        xml += "<interface name=\"" + method.substr(0, method.rfind('.')) + "\"/>";
    return xml + "</node>";
}

std::string drawErrorName(FuzzedDataProvider& input)
{
    const char* const names[] = {
        "org.freedesktop.DBus.Error.UnknownObject", "org.freedesktop.DBus.Error.UnknownInterface",
        "org.freedesktop.DBus.Error.UnknownMethod", "org.freedesktop.DBus.Error.InvalidSignature",
        "org.freedesktop.DBus.Error.NoReply",       "org.freedesktop.DBus.Error.ServiceUnknown",
        "org.freedesktop.DBus.Error.Disconnected",  "com.wenu.OVIK.Failed"};
    const size_t choice = input.ConsumeIntegralInRange<size_t>(0, std::size(names));
    if (choice < std::size(names))
        return names[choice];
    return "a." + std::string(input.ConsumeIntegralInRange<size_t>(1, 200), 'b');
}

sd_bus_message* newReply(sd_bus_message* call)
{
    sd_bus_message* reply = nullptr;
    check(sd_bus_message_new_method_return(call, &reply) >= 0, "a reply can be made");
    return reply;
}

sd_bus_message* newError(sd_bus_message* call, const std::string& name)
{
    sd_bus_message* reply = nullptr;
    check(sd_bus_message_new_method_errorf(call, &reply, name.c_str(), "drawn") >= 0,
          "an error can be made");
    return reply;
}

void sendAndForget(sd_bus_message* message)
{
    if (message)
        check(sd_bus_send(nullptr, message, nullptr) >= 0, "a message can be sent");
    sd_bus_message_unref(message);
}

bool is(const char* text, const char* other) { return text && strcmp(text, other) == 0; }
} // namespace

PlatformBus::PlatformBus() : m_signatures(replySignatures()), m_introspection(listOf(m_signatures))
{
    const char* const place = getenv("TMPDIR");
    m_directory = std::string(place ? place : "/tmp") + "/ovik_fuzz_XXXXXX";
    check(mkdtemp(m_directory.data()), "a temporary directory can be made");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = m_directory + "/bus";
    strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    m_listening = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    check(bind(m_listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
              listen(m_listening, 1) == 0,
          "the bus can listen");
    setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
    m_thread = std::thread(&PlatformBus::run, this);
}

PlatformBus::~PlatformBus()
{
    m_stop = true;
    shutdown(m_listening, SHUT_RDWR);
    shutdown(m_connection, SHUT_RDWR);
    m_thread.join();
    close(m_listening);
    unlink((m_directory + "/bus").c_str());
    rmdir(m_directory.c_str());
}

/// Serves the single connection that Qt makes.
void PlatformBus::run()
{
    m_connection = accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    sd_bus* bus = nullptr;
    sd_id128_t id = {};
    id.bytes[0] = 1;
    check(sd_bus_new(&bus) >= 0 && sd_bus_set_fd(bus, m_connection, m_connection) >= 0 &&
              sd_bus_set_server(bus, true, id) >= 0 && sd_bus_set_sender(bus, platformName) >= 0 &&
              sd_bus_add_filter(bus, nullptr, onMessage, this) >= 0 && sd_bus_start(bus) >= 0,
          "the bus starts");
    for (int result = 0; result >= 0;) {
        result = sd_bus_process(bus, nullptr);
        if (result == 0)
            result = sd_bus_wait(bus, UINT64_MAX);
    }
    check(m_stop, "nothing that the platform sends ends the connection");
    sd_bus_close_unref(bus);
}

int PlatformBus::onMessage(sd_bus_message* message, void* self, sd_bus_error*)
{
    if (sd_bus_message_is_method_call(message, nullptr, nullptr))
        static_cast<PlatformBus*>(self)->serve(message);
    return 1;
}

void PlatformBus::serve(sd_bus_message* call)
{
    const bool toDriver = is(sd_bus_message_get_destination(call), driver);
    // The data must be read first: after the reply, the other thread uses the input.
    sd_bus_message* signal = nullptr;
    bool afterReply = false;
    if (m_input && !toDriver && is(sd_bus_message_get_member(call), "command"))
        signal = drawCommandResult(call, afterReply);

    if (!afterReply)
        sendAndForget(signal);
    sd_bus_message* const answer = toDriver ? driverReply(call) : reply(call);
    if (!toDriver)
        m_hasFailed = sd_bus_message_is_method_error(answer, nullptr) > 0;
    sendAndForget(answer);
    if (afterReply)
        sendAndForget(signal);
}

/// Replies to Qt's calls to the bus itself; empty for all calls that need no value.
sd_bus_message* PlatformBus::driverReply(sd_bus_message* call) const
{
    const char* const member = sd_bus_message_get_member(call);
    sd_bus_message* const answer = newReply(call);
    sd_bus_message_set_sender(answer, driver);
    if (is(member, "Hello"))
        sd_bus_message_append(answer, "s", clientName);
    else if (is(member, "GetNameOwner"))
        sd_bus_message_append(answer, "s", platformName);
    else if (is(member, "NameHasOwner"))
        sd_bus_message_append(answer, "b", 1);
    return answer;
}

sd_bus_message* PlatformBus::reply(sd_bus_message* call)
{
    FuzzedDataProvider none(nullptr, 0);
    FuzzedDataProvider* const drawn = m_input;
    FuzzedDataProvider& input = drawn ? *drawn : none;
    const std::string interface = sd_bus_message_get_interface(call);
    if (interface == introspectable && input.ConsumeIntegralInRange(0, 7) < 6)
        return introspection(call);
    if (input.ConsumeIntegralInRange(0, 7) == 7)
        return newError(call, drawErrorName(input));

    const auto expected = m_signatures.find(interface + "." + sd_bus_message_get_member(call));
    const std::string signature =
        drawSignature(input, expected == m_signatures.end() ? "s" : expected->second);
    sd_bus_message* const answer = newReply(call);
    check(appendValues(input, answer, signature), "values of a valid signature are sent");
    return answer;
}

sd_bus_message* PlatformBus::introspection(sd_bus_message* call)
{
    FuzzedDataProvider* const input = m_input;
    const std::string path = sd_bus_message_get_path(call);
    std::string xml = m_introspection;
    if (!input && (path == "/HWPlugin/1" || path == "/HWPlugin/3"))
        return newError(call, "org.freedesktop.DBus.Error.UnknownObject");
    if (input && input->ConsumeBool()) {
        const auto bytes = QByteArray::fromStdString(input->ConsumeRandomLengthString());
        xml = QString::fromUtf8(bytes.constData()).toStdString(); // D-Bus texts must be valid UTF-8
    }
    sd_bus_message* const answer = newReply(call);
    if (sd_bus_message_append_basic(answer, 's', xml.c_str()) >= 0)
        return answer;
    sd_bus_message_unref(answer);
    return newError(call, "org.freedesktop.DBus.Error.Failed");
}

/// May return null: no signal.
sd_bus_message* PlatformBus::drawCommandResult(sd_bus_message* call, bool& afterReply)
{
    FuzzedDataProvider& input = *m_input.load();
    afterReply = input.ConsumeBool();
    if (input.ConsumeIntegralInRange(0, 7) == 7)
        return nullptr;
    sd_bus_message* signal = nullptr;
    check(sd_bus_message_new_signal(sd_bus_message_get_bus(call), &signal, "/ServiceManager",
                                    "com.wenu.OVIK.ServiceManager", "commandResult") >= 0 &&
              appendValues(input, signal, drawSignature(input, "sss")),
          "a signal can be made");
    return signal;
}
