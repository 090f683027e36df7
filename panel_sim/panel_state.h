#pragma once

#include "IProxy/OVIKPlatformRecords.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <vector>

/// What a panel is made of, as plain values. An operation answers Done or Refused, and what it
/// refuses it leaves as it was.
namespace sim
{

constexpr int Done = 0;
constexpr int Refused = -1;

/// The object in @p text; false when it is not a JSON object.
bool readJson(const QString& text, QJsonObject& object);
QString writeJson(const QJsonObject& object);

struct Buzzer {
    int mode = 0;
    int userControl = 0;
    int onTime = 500;
    int offTime = 500;
    int frequency = 440;
};

/// The level that shows and the level that a restart would bring back.
struct Backlight {
    static constexpr int highest = 255;

    int level = 200;
    int saved = 200;
    QMap<QString, int> timeouts;
};

/// Seconds that go on from a base, as an hour meter does.
class Counter
{
public:
    explicit Counter(int base) : m_base(base) { m_running.start(); }

    int seconds() const { return m_base + static_cast<int>(m_running.elapsed() / 1000); }
    void clear() { *this = Counter(0); }

private:
    int m_base;
    QElapsedTimer m_running;
};

/// A serial EEPROM of 256 bytes. A read ends at the last byte; a write fits or is refused.
class Memory
{
public:
    static constexpr int size = 256;

    /// Cell by cell counts up from @p first, so that every cell of a new memory can be told apart.
    explicit Memory(int first = 0);

    QByteArray read(int address, uint length) const;
    int write(int address, const QByteArray& data);

private:
    QByteArray m_cells;
};

/// Named texts, such as the settings of the system.
class Parameters
{
public:
    Parameters() = default;
    explicit Parameters(const QMap<QString, QString>& values) : m_values(values) {}

    QString value(const QString& name) const { return m_values.value(name); }
    void set(const QString& name, const QString& value) { m_values[name] = value; }
    QString json() const;

private:
    QMap<QString, QString> m_values;
};

/// The network configuration in use and the one being prepared.
class Network
{
public:
    Network();

    /// The whole configuration in use, or its member @p key.
    QString json(const QString& key) const;
    QString interfaceJson(const QString& interface) const;
    int prepareInterface(const QString& interface, const QString& config);
    /// Prepares the members of @p config, or of them only @p key when it is not empty.
    int prepare(const QString& config, const QString& key);
    void apply() { m_current = m_prepared; }

private:
    QJsonObject m_current;
    QJsonObject m_prepared;
};

struct Storage {
    QString name;
    QString mountPoint;
    int deviceType;
    quint64 totalSpace;
    quint64 freeSpace;
    quint32 accessFlag;
    bool removable;

    ovikStorageInfo record() const;
    QJsonObject json() const;
};

struct Service {
    bool enabled;
    bool running;
    /// The panel may change it; the others only show.
    bool controlled;
    bool hasCommands;

    int start();
    int stop();
    int restart() { return start(); }
    /// There is nothing to tell a service that does not run.
    int reload() { return running ? Done : Refused; }
    int enable();
    int disable();
    /// Makes the service run when it is enabled and stop when it is not.
    int apply() { return enabled ? start() : stop(); }
};

/// The mode of an LED or I/O point: fixed ones follow the module, settable ones the caller.
enum PointMode { Fixed = 1, Settable = 2 };

struct Led {
    int mode;
    int userControl = 0;
    int onTime = 0;
    int offTime = 0;
    uint value = 0;
};

struct IoPoint {
    int mode;
    bool on = false;
};

/// A plug-in module: 8 LEDs and 8 I/O points, fixed and settable in turn.
struct Plugin {
    explicit Plugin(int slot);

    /// The signature, which the EEPROM starts with.
    sSEEModule signature() const;

    /// Null when there is no such LED or point.
    const Led* led(uint id) const { return id < leds.size() ? &leds[id] : nullptr; }
    const IoPoint* io(uint id) const { return id < ios.size() ? &ios[id] : nullptr; }

    /// Null when there is no such LED or it is fixed.
    Led* settableLed(uint id);
    int setLedMode(uint id, int mode);
    int setIoMode(uint id, int mode);
    /// '0' or '1' for each of @p count points from @p id on, as far as there are points.
    QByteArray readIo(uint id, uint count) const;
    /// Sets the points from @p id on; refused as a whole when one of them may not be set.
    int writeIo(uint id, const QByteArray& values);

    Memory eeprom;
    std::vector<Led> leds;
    std::vector<IoPoint> ios;
};

} // namespace sim
