#pragma once

#include "IProxy/OVIKPlatformRecords.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <vector>

/// The parts of a panel, as plain values. Operations return Done or Refused; a refused operation
/// changes nothing.
namespace sim
{

constexpr int Done = 0;
constexpr int Refused = -1;

/// Reads the JSON object in @p text; false when @p text is not a JSON object.
bool readJson(const QString& text, QJsonObject& object);
QString writeJson(const QJsonObject& object);

struct Buzzer {
    int mode = 0;
    int userControl = 0;
    int onTime = 500;
    int offTime = 500;
    int frequency = 440;
};

/// The current level, and the level that a restart would restore.
struct Backlight {
    static constexpr int highest = 255;

    int level = 200;
    int saved = 200;
    QMap<QString, int> timeouts;
};

/// Counts seconds from a start value, like an hour meter.
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

/// A serial EEPROM of 256 bytes. A read ends at the last byte; a write beyond it is refused.
class Memory
{
public:
    static constexpr int size = 256;

    /// The cells count up from @p first, so that every cell of a new memory differs.
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
    /// The panel may change the service; other services are read-only.
    bool controlled;
    bool hasCommands;

    int start();
    int stop();
    int restart() { return start(); }
    /// A service that does not run cannot reload.
    int reload() { return running ? Done : Refused; }
    int enable();
    int disable();
    /// Starts the service when enabled, else stops it.
    int apply() { return enabled ? start() : stop(); }
};

/// The mode of an LED or I/O point: the module sets fixed ones, the caller sets settable ones.
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

/// A plug-in module: 8 LEDs and 8 I/O points, alternately fixed and settable.
struct Plugin {
    explicit Plugin(int slot);

    /// The signature, at the start of the EEPROM.
    sSEEModule signature() const;

    /// Null when there is no such LED or point.
    const Led* led(uint id) const { return id < leds.size() ? &leds[id] : nullptr; }
    const IoPoint* io(uint id) const { return id < ios.size() ? &ios[id] : nullptr; }

    /// Null when there is no such LED or it is fixed.
    Led* settableLed(uint id);
    int setLedMode(uint id, int mode);
    int setIoMode(uint id, int mode);
    /// '0' or '1' for each of @p count points from @p id on, up to the last point.
    QByteArray readIo(uint id, uint count) const;
    /// Sets the points from @p id on; refused without any change when one may not be set.
    int writeIo(uint id, const QByteArray& values);

    Memory eeprom;
    std::vector<Led> leds;
    std::vector<IoPoint> ios;
};

} // namespace sim
