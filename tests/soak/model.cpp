#include "tests/soak/model.h"

#include "panel_sim/platform_devices.h"
#include "panel_sim/platform_services.h"
#include "protocol/command_table.h"

#include <QCoreApplication>

#include <algorithm>
#include <stdexcept>

using std::to_string;

/// The fields of a request as the service understands them.
class Request
{
public:
    explicit Request(const QString& text) : m_fields(text.split(';')) {}

    int count() const { return m_fields.size(); }
    QString word() const { return m_fields.first(); }
    int number(int field) const { return m_fields[field].toInt(); }
    uint index() const { return static_cast<uint>(number(2)); }
    bool isScan() const
    {
        return word() == "serviceCommand" && m_fields[1] == "wifi" && m_fields[2] == "scan";
    }
    /// As it reaches the panel.
    QString text(int field) const { return asCarried(asCarried(m_fields[field])); }

    /// As it arrives where it is carried to as UTF-8: a byte order mark in front is lost.
    static QString asCarried(const QString& text) { return QString::fromUtf8(text.toUtf8()); }

private:
    QStringList m_fields;
};

namespace
{
constexpr size_t bufferSize = 5000;
constexpr size_t longestAnswer = 9999;
constexpr size_t longestParameter = 99;
constexpr int longestRead = 65535;
constexpr int settable = 2;
constexpr auto resultsStay = 10s;

struct Call {
    sim::Panel& panel;
    int slot; ///< of the module; not of other commands
    const Request& in;
};

enum class Kind {
    Plain,
    Bytes,         ///< an EEPROM read, whose last argument is its length
    SystemCounter, //
    BacklightCounter,
    ServiceCommand,
    Point,          ///< of a module
    PointValue,     ///< read: a missing one is no digit
    PointIfSettable ///< written only when its mode allows it
};

struct Row {
    const char* word;
    int arguments;
    const char* object; ///< of the panel that serves it
    Kind kind;
    std::string (*ask)(const Call&); ///< the answer behind its "0 "
};

std::string number(int value) { return to_string(value); }
/// Values of the devices are told without a sign.
std::string natural(int value) { return to_string(static_cast<unsigned int>(value)); }
std::string text(const QByteArray& bytes) { return bytes.constData(); }
std::string utf8(const QString& value) { return text(Request::asCarried(value).toUtf8()); }
std::string latin1(const QString& value) { return text(Request::asCarried(value).toLatin1()); }
std::string parameter(const QString& value) { return utf8(value).substr(0, longestParameter); }

std::string hex(QByteArray bytes, int length)
{
    bytes = bytes.leftJustified(length, '\0', true);
    return bytes.toHex(',').toUpper().toStdString();
}

std::string eeprom(const Call& c)
{
    QByteArray data;
    SimSeeprom(c.panel).read(static_cast<uchar>(c.in.number(1)), static_cast<uint>(c.in.number(2)),
                             data);
    return hex(data, c.in.number(2));
}

std::string eepromSlave(const Call& c)
{
    QByteArray data;
    SimSeeprom(c.panel).readSlvAddr(static_cast<uchar>(c.in.number(1)),
                                    static_cast<uchar>(c.in.number(2)),
                                    static_cast<uint>(c.in.number(3)), data);
    return hex(data, c.in.number(3));
}

std::string systemInformation(const Call& c)
{
    const systemInfo& info = c.panel.identity();
    const auto* name = reinterpret_cast<const char*>(info.moduleName);
    return std::string(name, strnlen(name, sizeof info.moduleName)) + ',' + number(info.hwCode) +
           ',' + number(info.manufactureCode[0] + 256 * info.manufactureCode[1]);
}

std::string readPoint(const Call& c)
{
    const QByteArray digit = SimSensors(c.panel, c.slot).readIo(c.in.index(), 1);
    return number((digit.isEmpty() ? 0 : digit[0]) - '0');
}

std::string writePoint(const Call& c)
{
    const QByteArray digit(1, static_cast<char>('0' + static_cast<uint>(c.in.number(3))));
    return number(SimSensors(c.panel, c.slot).writeIo(c.in.index(), digit));
}

/// As the panel does it, without the end of the flash; see Model::differences().
std::string flash(const Call& c)
{
    return number(c.in.number(3) < 0 ? sim::Refused : c.panel.lightLed(c.slot, c.in.index(), 1));
}

template <int (SimBuzzer::*set)(int)>
std::string buzzer(const Call& c)
{
    return natural((SimBuzzer(c.panel).*set)(c.in.number(1)));
}

template <auto operation>
std::string service(const Call& c)
{
    return number((SimServiceManager(c.panel).*operation)(c.in.text(1)));
}

template <int (SimLeds::*set)(uint, int)>
std::string led(const Call& c)
{
    return number((SimLeds(c.panel, c.slot).*set)(c.in.index(), c.in.number(3)));
}

// clang-format off
const Row rows[] = {
    {"quit",                         0, nullptr,          Kind::Plain,            nullptr},
    {"getAvailableMemory",           0, "SysStat",        Kind::Plain,            [](const Call& c) { return to_string(c.panel.availableMemory()); }},
    {"getSysCounter",                0, "OVIK",           Kind::SystemCounter,    nullptr},
    {"getBacklightCounter",          0, "OVIK",           Kind::BacklightCounter, nullptr},
    {"getBrightness",                0, "Backlight",      Kind::Plain,            [](const Call& c) { return natural(SimBacklight(c.panel).getBrightness()); }},
    {"saveBrightness",               1, "Backlight",      Kind::Plain,            [](const Call& c) { return natural(SimBacklight(c.panel).saveBrightness(c.in.number(1))); }},
    {"getBuzzerMode",                0, "Buzzer",         Kind::Plain,            [](const Call& c) { return natural(SimBuzzer(c.panel).GetBuzzerMode()); }},
    {"setBuzzerMode",                1, "Buzzer",         Kind::Plain,            buzzer<&SimBuzzer::SetBuzzerMode>},
    {"setBuzzerUserControl",         1, "Buzzer",         Kind::Plain,            buzzer<&SimBuzzer::SetBuzzerUserControl>},
    {"setBuzzerOnTime",              1, "Buzzer",         Kind::Plain,            buzzer<&SimBuzzer::SetBuzzerOnTime>},
    {"setBuzzerOffTime",             1, "Buzzer",         Kind::Plain,            buzzer<&SimBuzzer::SetBuzzerOffTime>},
    {"getSystemInfo",                0, "SystemInfo",     Kind::Plain,            systemInformation},
    {"getStorageInfoJson",           1, "StorageMgr",     Kind::Plain,            [](const Call& c) { return latin1(SimStorageManager(c.panel).getStorageInfoJSON(c.in.text(1))); }},
    {"getNetworkConfigJson",         0, "NetworkManager", Kind::Plain,            [](const Call& c) { return latin1(SimNetworkManager(c.panel).getConfigJSON()); }},
    {"setInterfaceConfigJson",       2, "NetworkManager", Kind::Plain,            [](const Call& c) { return number(SimNetworkManager(c.panel).setInterfaceConfigJSON(c.in.text(1), c.in.text(2))); }},
    {"applyNewConfiguration",        0, "NetworkManager", Kind::Plain,            [](const Call& c) { return number(SimNetworkManager(c.panel).applyNewConfiguration()); }},
    {"mainOsVersion",                0, "MainOSInfo",     Kind::Plain,            [](const Call& c) { return std::string(reinterpret_cast<const char*>(c.panel.mainOs().version)); }},
    {"seepromRead",                  2, "I2CSEEPROM",     Kind::Bytes,            eeprom},
    {"seepromReadSlave",             3, "I2CSEEPROM",     Kind::Bytes,            eepromSlave},
    {"getVolatileParameter",         1, "OVIK",           Kind::Plain,            [](const Call& c) { return parameter(SimOvik(c.panel).getVolatileParameter(c.in.text(1))); }},
    {"getSystemParameter",           1, "OVIK",           Kind::Plain,            [](const Call& c) { return parameter(SimOvik(c.panel).getSystemParameter(c.in.text(1))); }},
    {"getAllVolatileParametersJson", 0, "OVIK",           Kind::Plain,            [](const Call& c) { return utf8(SimOvik(c.panel).getAllVolatileParametersJSON()); }},
    {"getAllSystemParametersJson",   0, "OVIK",           Kind::Plain,            [](const Call& c) { return utf8(SimOvik(c.panel).getAllSystemParametersJSON()); }},
    {"setVolatileParameter",         2, "OVIK",           Kind::Plain,            [](const Call& c) { return number(SimOvik(c.panel).setVolatileParameter(c.in.text(1), c.in.text(2))); }},
    {"setSystemParameter",           2, "OVIK",           Kind::Plain,            [](const Call& c) { return number(SimOvik(c.panel).setSystemParameter(c.in.text(1), c.in.text(2))); }},
    {"setSystemParametersJson",      2, "OVIK",           Kind::Plain,            [](const Call& c) { return number(SimOvik(c.panel).setSystemParametersJSON(c.in.text(1), c.in.text(2))); }},
    {"getHWPluginIoMode",            2, "Sensors",        Kind::Point,            [](const Call& c) { return number(SimSensors(c.panel, c.slot).getIoMode(c.in.index())); }},
    {"getHWPluginIO",                2, "Sensors",        Kind::PointValue,       readPoint},
    {"setHWPluginIO",                3, "Sensors",        Kind::PointIfSettable,  writePoint},
    {"getHWPluginLedMode",           2, "Leds",           Kind::Point,            [](const Call& c) { return number(SimLeds(c.panel, c.slot).GetLedMode(c.in.index())); }},
    {"setHWPluginLedUserControl",    3, "Leds",           Kind::PointIfSettable,  led<&SimLeds::SetLedUserControl>},
    {"setHWPluginLedValue",          3, "Leds",           Kind::PointIfSettable,  [](const Call& c) { return number(SimLeds(c.panel, c.slot).SetLedValue(c.in.index(), static_cast<uint>(c.in.number(3)))); }},
    {"setHWPluginLedOnTime",         3, "Leds",           Kind::PointIfSettable,  led<&SimLeds::SetLedOnTime>},
    {"setHWPluginLedOffTime",        3, "Leds",           Kind::PointIfSettable,  led<&SimLeds::SetLedOffTime>},
    {"setHWPluginLedFlash",          3, "Leds",           Kind::PointIfSettable,  flash},
    {"setHWPluginLedBlink",          4, "Leds",           Kind::PointIfSettable,  [](const Call& c) { return number(SimLeds(c.panel, c.slot).blink(c.in.index(), 1, c.in.number(3), c.in.number(4))); }},
    {"serviceStart",                 1, "ServiceManager", Kind::Plain,            service<&SimServiceManager::start>},
    {"serviceStop",                  1, "ServiceManager", Kind::Plain,            service<&SimServiceManager::stop>},
    {"serviceRestart",               1, "ServiceManager", Kind::Plain,            service<&SimServiceManager::restart>},
    {"serviceReload",                1, "ServiceManager", Kind::Plain,            service<&SimServiceManager::reload>},
    {"serviceEnable",                1, "ServiceManager", Kind::Plain,            service<&SimServiceManager::enable>},
    {"serviceDisable",               1, "ServiceManager", Kind::Plain,            service<&SimServiceManager::disable>},
    {"serviceEnabled",               1, "ServiceManager", Kind::Plain,            service<&SimServiceManager::enabled>},
    {"serviceApply",                 1, "ServiceManager", Kind::Plain,            service<&SimServiceManager::apply>},
    {"serviceControlled",            1, "ServiceManager", Kind::Plain,            service<&SimServiceManager::controlled>},
    {"serviceState",                 1, "ServiceManager", Kind::Plain,            service<&SimServiceManager::state>},
    {"serviceCommand",               3, "ServiceManager", Kind::ServiceCommand,   nullptr},
};
// clang-format on

const Row* findRow(const QString& word)
{
    const auto found = std::find_if(std::begin(rows), std::end(rows), [&](const Row& row) {
        return word == QLatin1String(row.word);
    });
    return found == std::end(rows) ? nullptr : found;
}

Expected only(const std::string& answer) { return {{answer}, {}, {}, false}; }

/// An EEPROM read is cut after a whole byte, a text anywhere.
std::string success(const std::string& value, Kind kind = Kind::Plain)
{
    std::string answer = value.empty() && kind == Kind::Bytes ? "0" : "0 " + value;
    if (answer.size() > longestAnswer)
        answer.resize(kind == Kind::Bytes ? 1 + (longestAnswer - 1) / 3 * 3 : longestAnswer);
    return answer;
}

/// What the panel says of a command at once, and its later result; empty when it refuses.
struct CommandResult {
    int status;
    QString json;
};

CommandResult commandResult(const QString& service, const QString& command, const QString& options)
{
    static sim::Panel scratch({}, 0);
    QString json;
    const auto connection =
        QObject::connect(&scratch, &sim::Panel::commandFinished,
                         [&](const QString&, const QString&, const QString& text) { json = text; });
    const int status = scratch.command(service, command, options);
    while (status == sim::Done && json.isEmpty())
        QCoreApplication::processEvents();
    QObject::disconnect(connection);
    return {status, json};
}

/// As a result's texts come through: as Latin-1 bytes that are read as UTF-8.
std::string asResult(const QString& text)
{
    return QString::fromUtf8(Request::asCarried(text).toLatin1().constData())
        .toUtf8()
        .toStdString();
}
} // namespace

std::string Expected::text() const
{
    std::string all;
    for (const std::string& answer : right)
        all += (all.empty() ? "" : " or ") + answer;
    if (counterBase)
        all += "seconds since " + to_string(*counterBase);
    for (const std::string& answer : ifGone)
        all += ", without the panel " + answer;
    return all;
}

void Model::checkCommands()
{
    for (const Command& command : commandTable) {
        const Row* const row = findRow(command.word);
        if (!row || row->arguments != command.argumentCount())
            throw std::runtime_error(std::string("the soak does not know this form of ") +
                                     command.word);
    }
}

void Model::serviceStarts()
{
    m_adopted = false;
    m_view = {};
    m_view.modules.clear();
    m_buffer.assign(bufferSize, '\0');
    m_mayWait = false;
    m_results.clear();
}

void Model::serviceAdopts()
{
    m_adopted = true;
    m_view = m_panel.options();
    if (m_view.missing.contains("HWPlugin"))
        m_view.modules.clear();
}

QString Model::receive(const std::string& message)
{
    // What an earlier message left behind stays, and counts when this one has no NUL.
    const size_t received = std::min(message.size(), bufferSize);
    m_buffer.replace(0, received, message, 0, received);
    m_buffer.back() = '\0';
    return QString::fromUtf8(m_buffer.c_str());
}

Expected Model::expect(const std::string& message)
{
    const Request in(receive(message));
    const Row* const row = findRow(in.word());
    if (!row || in.count() <= row->arguments)
        return only("-8");
    if (!row->object)
        return only("0");
    if (row->kind == Kind::Bytes) {
        const int length = in.number(row->arguments);
        if (length < 0 || length > longestRead)
            return only("-3");
    }

    Expected expected;
    int slot = -1;
    const bool isPoint = row->kind >= Kind::Point;
    if (isPoint) {
        const auto place = static_cast<uint>(in.number(1));
        if (place >= static_cast<uint>(m_view.modules.size()))
            return only("-10");
        slot = m_view.modules[static_cast<int>(place)];
    } else if (in.isScan()) {
        m_mayWait = true;
    }

    const QString object = row->object;
    const bool knows = m_adopted && !m_view.missing.contains(object);
    const bool offers = isPoint ? m_panel.offers(object, slot) : m_panel.offers(object);
    switch (row->kind) {
    case Kind::Point:
        if (!knows)
            return only("0 -1");
        expected.ifGone = {"0 0"};
        break;
    case Kind::PointValue:
        expected.ifGone = {"0 -48"};
        if (!knows)
            return only("0 -48");
        break;
    case Kind::PointIfSettable:
        expected.ifGone = {"-12"};
        if (!knows)
            return only("-12");
        break;
    default:
        expected.ifGone = {"-4"};
        if (!knows)
            return only("-1");
    }
    if (!offers) {
        std::swap(expected.right, expected.ifGone);
        return expected;
    }

    const Call call{m_panel.twin(), slot, in};
    switch (row->kind) {
    case Kind::SystemCounter:
        expected.counterBase = m_panel.systemBase();
        break;
    case Kind::BacklightCounter:
        expected.counterBase = m_panel.backlightBase();
        break;
    case Kind::ServiceCommand:
        expectCommand(in, expected);
        break;
    case Kind::PointIfSettable: {
        const int mode = object == "Leds" ? SimLeds(call.panel, slot).GetLedMode(in.index())
                                          : SimSensors(call.panel, slot).getIoMode(in.index());
        if (mode != settable)
            return only("-12");
        expected.ifGone.push_back("0 0"); // between the query of the mode and the write
        if (row->ask == flash && in.number(3) >= 0)
            m_panel.flashed.emplace(slot, in.index());
        expected.right = {success(row->ask(call))};
        break;
    }
    default:
        expected.right = {success(row->ask(call), row->kind)};
    }
    return expected;
}

void Model::expectCommand(const Request& in, Expected& expected)
{
    const int status = commandResult(in.text(1), in.text(2), in.text(3)).status;
    if (status == sim::Done)
        resultDue(in.text(1), in.text(2), in.text(3));
    expected.endsWait = true;
    if (!in.isScan()) {
        expected.right = {success(number(status))};
        return;
    }
    expected.right = possibleOutcomes();
}

void Model::resultDue(const QString& service, const QString& command, const QString& options)
{
    m_results.push_back({';' + asResult(service) + ';' + asResult(command) + ';' +
                             asResult(commandResult(service, command, options).json),
                         Clock::now()});
}

void Model::resultsDelayed()
{
    for (Result& result : m_results)
        result.due = Clock::now();
}

std::vector<std::string> Model::possibleOutcomes() const
{
    std::vector<std::string> answers;
    for (const Result& result : m_results) {
        if (Clock::now() - result.due < resultsStay)
            answers.push_back(success(number(sim::Done) + result.text));
    }
    return answers;
}

void Model::answered(const Expected& expected)
{
    if (!expected.endsWait)
        return;
    m_mayWait = false;
    const auto isOld = [](const Result& result) { return Clock::now() - result.due > resultsStay; };
    m_results.erase(std::remove_if(m_results.begin(), m_results.end(), isOld), m_results.end());
}

std::string Model::differences()
{
    std::string found;
    const auto compare = [&](const std::string& what, std::optional<int> asked, int twin,
                             bool mayBeDark = false) {
        if (asked != twin && !(mayBeDark && asked == 0))
            found += what + " is " + (asked ? to_string(*asked) : "not told") + " and should be " +
                     to_string(twin) + "\n";
    };

    if (m_panel.offers("Buzzer")) {
        const sim::Buzzer& buzzer = m_panel.twin().buzzer();
        const auto asked = [&](const char* member) {
            return m_panel.ask("/Buzzer", "Buzzer", member);
        };
        compare("buzzer mode", asked("GetBuzzerMode"), buzzer.mode);
        compare("buzzer control", asked("GetBuzzerUserControl"), buzzer.userControl);
        compare("buzzer on time", asked("GetBuzzerOnTime"), buzzer.onTime);
        compare("buzzer off time", asked("GetBuzzerOffTime"), buzzer.offTime);
    }
    for (int slot : m_panel.options().modules) {
        if (!m_panel.offers("Leds", slot))
            continue;
        const std::string path = "/HWPlugin/" + to_string(slot) + "/Leds";
        for (unsigned int id = 1; const sim::Led* led = m_panel.twin().plugin(slot)->led(id);
             id += 2) {
            const std::string name = path + ' ' + to_string(id);
            const auto asked = [&](const char* member) {
                return m_panel.ask(path, "Leds", member, id);
            };
            compare(name + " control", asked("GetLedUserControl"), led->userControl);
            compare(name + " on time", asked("GetLedOnTime"), led->onTime);
            compare(name + " off time", asked("GetLedOffTime"), led->offTime);
            // A flash that was asked for makes the LED dark at its end, whatever came meanwhile.
            compare(name + " value", asked("GetLedValue"), static_cast<int>(led->value),
                    m_panel.flashed.count({slot, id}) != 0);
        }
    }
    return found;
}
