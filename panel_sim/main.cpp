#include "panel_sim/command_line.h"
#include "panel_sim/dbus_face.h"

#include <QCoreApplication>

#include <cstdio>

namespace
{
enum ExitStatus { NoBus = 1, BadCommandLine = 2 };

int fail(ExitStatus status, const QString& error)
{
    fprintf(stderr, "ovik_panel_sim: %s\n", qPrintable(error));
    return status;
}
} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("ovik_panel_sim");
    QCoreApplication::setApplicationVersion(OVIK_VERSION);

    const CommandLine line = readCommandLine();
    if (!line.error.isEmpty())
        return fail(BadCommandLine, line.error);

    sim::Panel panel(line.pluginSlots, line.scanDelay);
    QDBusConnection bus = QDBusConnection::systemBus();
    DBusFace face(panel, bus);
    const QString error = face.open(line.missing);
    if (!error.isEmpty())
        return fail(NoBus, error);

    // Without the bus, no client can reach the panel any more.
    bus.connect(QString(), "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local",
                "Disconnected", &application, SLOT(quit()));

    puts("ovik_panel_sim: ready");
    fflush(stdout);
    return QCoreApplication::exec();
}
