#include "panel_sim/command_line.h"

#include "panel_sim/dbus_face.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace
{
QStringList listed(const QString& text) { return text.isEmpty() ? QStringList() : text.split(','); }

QString badValue(const QString& option, const QString& value)
{
    return QString("bad value for --%1: \"%2\"").arg(option, value);
}

void readSlots(CommandLine& line, const QString& value)
{
    for (const QString& text : listed(value)) {
        bool isNumber = false;
        const int slot = text.toInt(&isNumber);
        if (!isNumber || slot < 0 || slot >= sim::Panel::slotCount)
            line.error = badValue("slots", text);
        line.pluginSlots.insert(slot);
    }
}

void readScanDelay(CommandLine& line, const QString& value)
{
    bool isNumber = false;
    line.scanDelay = value.toInt(&isNumber);
    if (!isNumber || line.scanDelay < 0)
        line.error = badValue("scan-delay", value);
}

void readMissing(CommandLine& line, const QString& value)
{
    line.missing = listed(value);
    for (const QString& name : qAsConst(line.missing)) {
        if (!DBusFace::objectNames().contains(name))
            line.error = badValue("missing", name);
    }
}
} // namespace

CommandLine readCommandLine()
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "A simulated panel: offers com.wenu.OVIK on the system bus, with a state behind it.");
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions({
        {"slots", "Slots (0 to 3) that hold a plug-in module; empty for none.", "list", "0,2"},
        {"scan-delay", "How long a service command takes, such as a Wi-Fi scan.", "ms", "300"},
        {"missing", "Objects that are not offered, of: " + DBusFace::objectNames().join(", ") + ".",
         "list"},
    });

    CommandLine line;
    if (!parser.parse(QCoreApplication::arguments())) {
        line.error = parser.errorText();
        return line;
    }
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();
    if (!parser.positionalArguments().isEmpty())
        line.error = "unexpected argument: " + parser.positionalArguments().first();
    readSlots(line, parser.value("slots"));
    readScanDelay(line, parser.value("scan-delay"));
    readMissing(line, parser.value("missing"));
    return line;
}
