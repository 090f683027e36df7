#include "tests/support/qt_fixture.h"

#include "IProxy/log_ovik.h"

#include <QCoreApplication>
#include <QEvent>

#include <mutex>
#include <utility>

namespace
{
std::mutex mutex;
std::vector<std::string> warnings;
std::vector<std::string> diagnostics;

void keepWarning(QtMsgType, const QMessageLogContext&, const QString& text)
{
    const std::lock_guard lock(mutex);
    warnings.push_back(text.toStdString());
}
} // namespace

/// Replaces the library's own function, which discards the texts.
void logOVIKErrors(char* err)
{
    const std::lock_guard lock(mutex);
    diagnostics.emplace_back(err);
}

PrivateBus& theBus()
{
    static PrivateBus bus;
    return bus;
}

std::vector<std::string> takeWarnings()
{
    qInstallMessageHandler(keepWarning);
    const std::lock_guard lock(mutex);
    return std::exchange(warnings, {});
}

std::vector<std::string> takeDiagnostics()
{
    const std::lock_guard lock(mutex);
    return std::exchange(diagnostics, {});
}

bool spinUntil(const std::function<bool()>& condition)
{
    return waitUntil([&] {
        QCoreApplication::processEvents();
        return condition();
    });
}

void settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
