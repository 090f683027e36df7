/* The plain records that this program and the platform library exchange. */
#ifndef OVIK_PLATFORM_RECORDS_H
#define OVIK_PLATFORM_RECORDS_H

#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <cstddef>

/*
 * The platform library is built against the same records and fills them in place, so the order and
 * the types of the fields are fixed. The records have no default initialisers: they are plain data
 * and may be copied or cleared as bytes (except systemSpecs, which owns strings).
 *
 * The asserted layouts are those of 64-bit systems and of ARM, which align 64-bit integers to 8
 * bytes. 32-bit x86 aligns them to 4, in the platform library as well.
 */

/** Identity of the panel as stored in its serial EEPROM; the values are the manufacturer's. */
typedef struct _systemInfo {
    quint8 day;
    quint8 month;
    quint8 year;
    quint8 serialNo[3];
    quint8 moduleName[5];
    quint8 hwCode;
    quint8 hwSubCode;
    quint8 manufactureCode[2];
    quint8 hwDispID;
} systemInfo;
static_assert(sizeof(systemInfo) == 16 && alignof(systemInfo) == 1 &&
                  offsetof(systemInfo, day) == 0 && offsetof(systemInfo, month) == 1 &&
                  offsetof(systemInfo, year) == 2 && offsetof(systemInfo, serialNo) == 3 &&
                  offsetof(systemInfo, moduleName) == 6 && offsetof(systemInfo, hwCode) == 11 &&
                  offsetof(systemInfo, hwSubCode) == 12 &&
                  offsetof(systemInfo, manufactureCode) == 13 &&
                  offsetof(systemInfo, hwDispID) == 15,
              "systemInfo must match the platform library's record");

/** Kind, build date and version of one software partition. */
typedef struct _bootldrInfo {
    quint8 type;
    quint8 day;
    quint8 month;
    quint8 year;
    quint8 version[20];
} bootldrInfo;
static_assert(sizeof(bootldrInfo) == 24 && alignof(bootldrInfo) == 1 &&
                  offsetof(bootldrInfo, type) == 0 && offsetof(bootldrInfo, day) == 1 &&
                  offsetof(bootldrInfo, month) == 2 && offsetof(bootldrInfo, year) == 3 &&
                  offsetof(bootldrInfo, version) == 4,
              "bootldrInfo must match the platform library's record");

/** The record's metatype name. */
typedef struct _bootldrInfo partitionInfo;

/** One storage device; mountPoint is NUL-terminated, kinds and flags are the platform's. */
typedef struct _ovikStorageInfo {
    char mountPoint[200];
    int deviceType;
    quint64 totalSpace;
    quint64 freeSpace;
    quint32 accessFlag;
} ovikStorageInfo;
static_assert(offsetof(ovikStorageInfo, mountPoint) == 0 &&
                  offsetof(ovikStorageInfo, deviceType) == 200,
              "ovikStorageInfo must match the platform library's record");
#if !defined(__i386__)
static_assert(sizeof(ovikStorageInfo) == 232 && alignof(ovikStorageInfo) == 8 &&
                  offsetof(ovikStorageInfo, totalSpace) == 208 &&
                  offsetof(ovikStorageInfo, freeSpace) == 216 &&
                  offsetof(ovikStorageInfo, accessFlag) == 224,
              "ovikStorageInfo must match the platform library's record");
#endif

/** Time zone rules: when standard (std) and daylight-saving (dls) time begin and their offsets. */
typedef struct _timeZoneInfo {
    quint8 stdMonth;
    quint8 stdWeek;
    quint8 stdDay;
    quint8 stdHour;
    quint8 stdMinute;
    qint16 stdOffset;
    quint8 dlsMonth;
    quint8 dlsWeek;
    quint8 dlsDay;
    quint8 dlsHour;
    quint8 dlsMinute;
    qint16 dlsOffset;
    quint8 mode;
} timeZoneInfo;

/** Position of the splash image on the screen. */
typedef struct _splashImageInfo {
    quint32 x;
    quint32 y;
} splashImageInfo;

/** Signature of a plug-in module as stored in the module's serial EEPROM. */
typedef struct sSEEModule {
    quint8 Name[16];
    quint8 Hcode;
    quint8 Hsubcode;
    quint8 Xcode;
    quint8 Xsubcode;
    quint8 FunctArea[16];
} sSEEModule;

/** One sensor reading; status is true when the reading is valid. */
typedef struct _sensorData {
    qint32 value;
    bool status;
} sensorData;

/** Acceleration along the panel's axes. */
typedef struct accelerometerAxisData {
    double accel_x;
    double accel_y;
    double accel_z;
} accelerometerAxisData;

/** Inclination of the panel in its planes. */
typedef struct accelerometerAngleData {
    double angle_xy;
    double angle_xz;
    double angle_yz;
} accelerometerAngleData;

/** One acceleration reading; status is true when the reading is valid. */
typedef struct accelAxisData {
    accelerometerAxisData axes;
    bool status;
} accelAxisData;

/** One inclination reading; status is true when the reading is valid. */
typedef struct accelAngleData {
    accelerometerAngleData angles;
    bool status;
} accelAngleData;

/** Colour saturation of the screen. */
typedef struct screenSaturationInfo {
    qint32 red;
    qint32 green;
    qint32 blue;
} screenSaturationInfo;

/** The manufacturer's name of the panel's model. */
typedef struct PanelModel {
    QString family_id;
    QString disp_size;
    QString subfamily_id;
    QString hw_revision;
} PanelModel;

/** Hardware capabilities of the panel. */
typedef struct SystemSpecs {
    QString type;
    struct Cpu {
        QString name;
        bool isImx;
    } cpu;
    struct Part {
        struct XLoader {
        } xloader;
        struct BootLoader {
        } bootloader;
        struct Fpga {
            int length;
        } fpga;
        bool hasXloader;
        bool hasFPGA;
        bool isPortable;
    } part;
    struct Video {
        bool hasGammaCorrection;
        bool hasColorCorrection;
        bool hasAutoCalibration;
        bool hasOrientation;
    } video;
    struct Net {
        int ethNum;
        struct Bridge {
            bool disabled;
        } bridge;
        struct HwSwitch {
            bool isManaged;
            QStringList interfaces;
            QString port;
            QString mac;
        } hwSwitch;
        struct Wifi {
            bool internalDisabled;
            bool hasAntennaMode;
            int antennaMode;
        } wifi;
    } net;
    struct Sensors {
        bool hasTemperature;
        bool hasTemperatureOffset;
        bool hasHumidity;
        bool hasHumidityOffset;
        bool hasPressure;
        bool hasVoltage;
        bool hasCurrent;
        bool hasAccelerometer;
    } sensors;
    PanelModel panelModel;
} systemSpecs;

Q_DECLARE_METATYPE(systemInfo)
Q_DECLARE_METATYPE(partitionInfo)
Q_DECLARE_METATYPE(ovikStorageInfo)
Q_DECLARE_METATYPE(timeZoneInfo)
Q_DECLARE_METATYPE(splashImageInfo)
Q_DECLARE_METATYPE(sSEEModule)
Q_DECLARE_METATYPE(accelerometerAxisData)
Q_DECLARE_METATYPE(accelerometerAngleData)
Q_DECLARE_METATYPE(sensorData)
Q_DECLARE_METATYPE(accelAxisData)
Q_DECLARE_METATYPE(accelAngleData)
Q_DECLARE_METATYPE(screenSaturationInfo)
Q_DECLARE_METATYPE(systemSpecs)

#endif
