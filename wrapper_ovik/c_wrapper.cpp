#include "wrapper_ovik/ovik_c.h"

#include "wrapper_ovik/ovikapplication.h"

#include <QByteArray>
#include <QMetaObject>
#include <QMetaType>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>
#include <pthread.h>
#include <unistd.h>

namespace
{
/// Null unless requests can be served. Written by the application thread only.
std::atomic<OvikApplication*> ovikApp{nullptr};
/// Number of requests that use the application object, or are about to use it.
std::atomic<int> requestsUnderWay{0};

enum class Thread {
    None,
    Started,
    Ended ///< the event loop has returned; not joined yet
};
std::atomic<Thread> qMainState{Thread::None};
pthread_t qMainId;
thread_local bool onApplicationThread = false;

/**
 * The application object, or null; keeps the object alive.
 *
 * The event loop can end at any time: a platform library or a callback may call
 * QCoreApplication::quit(). A request counts itself before it reads ovikApp, and endRequests()
 * clears ovikApp before it reads the count. So either the request reads null, or endRequests()
 * waits for it.
 */
class ApplicationUse
{
public:
    ApplicationUse()
    {
        // Counting calls without an application would let busy callers block endRequests().
        if (!ovikApp)
            return;
        ++requestsUnderWay;
        m_app = ovikApp;
        if (!m_app)
            --requestsUnderWay;
    }
    ~ApplicationUse()
    {
        if (m_app)
            --requestsUnderWay;
    }
    ApplicationUse(const ApplicationUse&) = delete;
    ApplicationUse& operator=(const ApplicationUse&) = delete;

    OvikApplication* app() const { return m_app; }

private:
    OvikApplication* m_app = nullptr;
};

/**
 * Refuses new requests and ends those that the event loop did not run.
 *
 * Deleting the event of a blocking call releases its caller, with the result still OVIK_NOT_RUN. A
 * request that has read ovikApp may post its event later, so repeat until no request is left.
 */
void endRequests(OvikApplication& app)
{
    qMainState = Thread::Ended;
    ovikApp = nullptr;
    while (requestsUnderWay != 0) {
        QCoreApplication::removePostedEvents(&app);
        usleep(1000);
    }
}

void join()
{
    pthread_join(qMainId, nullptr);
    qMainState = Thread::None;
}

void* qMain(void* arg)
{
    onApplicationThread = true;
    int argc = 1; // QCoreApplication keeps a reference
    OvikApplication app(argc, nullptr);

    const auto mode = static_cast<int>(reinterpret_cast<intptr_t>(arg));
    switch (mode) {
    case OVIK_MODE_LOCAL_THEN_DBUS:
        app.setMode(OVIK_MODE_LOCAL);
        QTimer::singleShot(10000, &app, SLOT(checkDbus()));
        break;
    case OVIK_MODE_NONE_THEN_DBUS:
        app.setMode(OVIK_MODE_NONE);
        QTimer::singleShot(1, &app, SLOT(checkDbus()));
        break;
    default:
        app.setMode(mode);
    }
    // Published only now, so that no request runs before the start mode is set.
    ovikApp = &app;
    OvikApplication::exec();
    endRequests(app);
    return nullptr;
}

template <class T>
const char* typeName()
{
    return QMetaType::typeName(qMetaTypeId<T>());
}

/**
 * Runs the slot of that name on the application thread and waits for its result.
 *
 * @return OVIK_OK, with @p result unchanged when the loop ended before the slot ran; @p absent
 *         without an application; OVIK_NOT_RUN on the application thread, where the call would wait
 *         for itself.
 */
template <class Result, class... Args>
status_t invoke(status_t absent, const char* slot, Result& result, const Args&... args)
{
    const ApplicationUse use;
    if (!use.app())
        return absent;
    if (onApplicationThread)
        return OVIK_NOT_RUN;
    QMetaObject::invokeMethod(use.app(), slot, Qt::BlockingQueuedConnection,
                              QReturnArgument<Result>(typeName<Result>(), result),
                              QArgument<Args>(typeName<Args>(), args)...);
    return OVIK_OK;
}

/// @return the slot's result; OVIK_NO_APPLICATION or OVIK_NOT_RUN when the slot did not run
template <class Resp, class... Args>
Resp request(const char* slot, const Args&... args)
{
    Resp resp = {OVIK_NOT_RUN, {}};
    if (const status_t refused = invoke(OVIK_NO_APPLICATION, slot, resp, args...))
        return {refused, {}};
    return resp;
}

/// A request for one value of the type that @p out points to.
template <class Resp, class Value, class... Args>
status_t valueFunc(const char* slot, Value* out, const Args&... args)
{
    const auto resp = request<Resp>(slot, args...);
    if (resp.status == OVIK_OK)
        *out = resp.value;
    return resp.status;
}

/// The size of a caller's buffer: a negative length counts as 0.
size_t bufferSize(int length) { return static_cast<size_t>(std::max(length, 0)); }

/// Writes the whole @p buffer: as many of @p bytes as fit, then zero bytes.
void fill(void* buffer, size_t size, const char* bytes, size_t available)
{
    const size_t copied = std::min(size, available);
    memcpy(buffer, bytes, copied);
    memset(static_cast<char*>(buffer) + copied, 0, size - copied);
}

/// Like strncpy(), but the bytes need no NUL: a platform library may send none.
void copyText(char* buffer, int length, const QByteArray& bytes)
{
    fill(buffer, bufferSize(length), bytes.constData(),
         strnlen(bytes.constData(), static_cast<size_t>(bytes.size())));
}

QByteArray utf8(const QByteArray& bytes) { return bytes; }
QByteArray utf8(const QString& text) { return text.toUtf8(); }

/// A request for a text, cut and terminated as described at the top of ovik_c.h.
template <class Resp, class... Args>
status_t textFunc(const char* slot, char* buffer, int length, const Args&... args)
{
    const auto resp = request<Resp>(slot, args...);
    if (resp.status == OVIK_OK)
        copyText(buffer, length, utf8(resp.value));
    return resp.status;
}

/// A request for @p count bytes, padded with zero bytes.
template <class... Args>
status_t bytesFunc(const char* slot, unsigned char* out, size_t count, const Args&... args)
{
    const auto resp = request<StatusByteArrayResp>(slot, args...);
    if (resp.status == OVIK_OK)
        fill(out, count, resp.value.constData(), static_cast<size_t>(resp.value.size()));
    return resp.status;
}

template <class... Args>
status_t intFunc(const char* slot, int* value, const Args&... args)
{
    return valueFunc<StatusIntResp>(slot, value, args...);
}

// The commonest forms, as plain functions: wrong arguments fail to compile, while the templates
// would only fail to find a slot at run time.
status_t noParamFunc(const char* method, int* value) { return intFunc(method, value); }

status_t oneIntFunc(const char* method, int arg, int* value) { return intFunc(method, value, arg); }

status_t getStringFunc(const char* method, char* buffer, int length)
{
    return textFunc<StatusByteArrayResp>(method, buffer, length);
}

QString text(const char* utf8) { return QString::fromUtf8(utf8); }
} // namespace

status_t ovik_init(int mode)
{
    if (ovikApp)
        return OVIK_OK;
    if (onApplicationThread)
        return OVIK_NOT_RUN;
    if (qMainState == Thread::Ended)
        join();
    // When an earlier call timed out, wait for its thread again instead of starting a second one.
    if (qMainState == Thread::None) {
        qMainState = Thread::Started;
        if (pthread_create(&qMainId, nullptr, qMain, reinterpret_cast<void*>(intptr_t(mode))) !=
            0) {
            qMainState = Thread::None;
            return OVIK_NO_THREAD;
        }
    }
    for (int sleeps = 0; !ovikApp; ++sleeps) {
        if (sleeps == 1000 || qMainState == Thread::Ended)
            return OVIK_NO_APPLICATION;
        usleep(10000);
    }
    return OVIK_OK;
}

status_t ovik_setMode(int mode)
{
    int result = OVIK_NOT_RUN;
    const status_t refused = invoke(OVIK_NOT_STARTED, "setMode", result, mode);
    return refused ? refused : result;
}

status_t ovik_shutdown()
{
    // No proxy may be in use when the loop stops.
    const status_t status = ovik_setMode(OVIK_MODE_NONE);
    if (status == OVIK_OK) {
        const ApplicationUse use;
        if (use.app())
            QMetaObject::invokeMethod(use.app(), "quit", Qt::BlockingQueuedConnection);
    } else if (onApplicationThread || qMainState != Thread::Ended) {
        return status;
    }
    join();
    return status == OVIK_OK ? OVIK_OK : OVIK_NOT_STARTED;
}

int ovik_doSomething()
{
    int result = 0;
    invoke(OVIK_NOT_STARTED, "doSomething", result);
    return result;
}

status_t ovik_getBuzzerMode(int* pMode) { return noParamFunc("getBuzzerMode", pMode); }

status_t ovik_getBrightness(int* pResp) { return noParamFunc("getBrightness", pResp); }

status_t ovik_getSysCounter(int* pResp) { return noParamFunc("getSysCounter", pResp); }

status_t ovik_getBackLightCounter(int* pResp) { return noParamFunc("getBackLightCounter", pResp); }

status_t ovik_applyNewConfiguration(int* pResp)
{
    return noParamFunc("applyNewConfiguration", pResp);
}

status_t ovik_setBuzzerMode(int mode, int* pResp)
{
    return oneIntFunc("setBuzzerMode", mode, pResp);
}

status_t ovik_setBuzzerUserControl(int control, int* pResp)
{
    return oneIntFunc("setBuzzerUserControl", control, pResp);
}

status_t ovik_setBuzzerOnTime(int time, int* pResp)
{
    return oneIntFunc("setBuzzerOnTime", time, pResp);
}

status_t ovik_setBuzzerOffTime(int time, int* pResp)
{
    return oneIntFunc("setBuzzerOffTime", time, pResp);
}

status_t ovik_saveBrightness(int value, int* pResp)
{
    return oneIntFunc("saveBrightness", value, pResp);
}

status_t ovik_mainOsVersion(char* version, int maxLen)
{
    return getStringFunc("mainOsVersion", version, maxLen);
}

status_t ovik_getNetworkConfigJson(char* json, int maxLen)
{
    return getStringFunc("getNetworkConfigJson", json, maxLen);
}

status_t ovik_getStorageInfoJson(const char* name, char* pJson, int maxLen)
{
    return textFunc<StatusByteArrayResp>("getStorageInfoJson", pJson, maxLen, text(name));
}

status_t ovik_getVolatileParameter(const char* key, char* pResp, int maxLength)
{
    return textFunc<StatusStringResp>("getVolatileParameter", pResp, maxLength, text(key));
}

status_t ovik_getSystemParameter(const char* key, char* pResp, int maxLength)
{
    return textFunc<StatusStringResp>("getSystemParameter", pResp, maxLength, text(key));
}

status_t ovik_getAllVolatileParametersJson(char* pResp, int maxLength)
{
    return textFunc<StatusStringResp>("getAllVolatileParametersJson", pResp, maxLength);
}

status_t ovik_getAllSystemParametersJson(char* pResp, int maxLength)
{
    return textFunc<StatusStringResp>("getAllSystemParametersJson", pResp, maxLength);
}

status_t ovik_setVolatileParameter(const char* key, const char* value, int* pResp)
{
    return intFunc("setVolatileParameter", pResp, text(key), text(value));
}

status_t ovik_setSystemParameter(const char* key, const char* value, int* pResp)
{
    return intFunc("setSystemParameter", pResp, text(key), text(value));
}

status_t ovik_setSystemParametersJson(const char* key, const char* json, int* pResp)
{
    return intFunc("setSystemParametersJson", pResp, text(key), text(json));
}

status_t ovik_setInterfaceConfigJson(const char* interface, const char* config, int* pResp)
{
    return intFunc("setInterfaceConfigJson", pResp, text(interface), text(config));
}

status_t ovik_seepromRead(int offset, int len, unsigned char* pData)
{
    return bytesFunc("seepromRead", pData, bufferSize(len), offset, len);
}

status_t ovik_seepromReadSlave(int slaveAddr, int offset, int len, unsigned char* pData)
{
    return bytesFunc("seepromReadSlave", pData, bufferSize(len), slaveAddr, offset, len);
}

status_t ovik_getHWPluginIO(unsigned int slot, unsigned int index, unsigned char* input,
                            unsigned int count)
{
    return bytesFunc("getHWPluginIO", input, count, slot, index, static_cast<int>(count));
}

status_t ovik_getHWPluginIOMode(unsigned int slot, unsigned int index, int* mode)
{
    return intFunc("getHWPluginIOMode", mode, slot, index);
}

status_t ovik_getHWPluginLedMode(unsigned int slot, unsigned int index, int* mode)
{
    return intFunc("getHWPluginLedMode", mode, slot, index);
}

status_t ovik_setHWPluginIO(unsigned int slot, unsigned int index, unsigned char* output,
                            unsigned int count, int* pResp)
{
    const auto size = static_cast<int>(std::min<unsigned int>(count, INT_MAX));
    return intFunc("setHWPluginIO", pResp, slot, index,
                   QByteArray(reinterpret_cast<const char*>(output), size));
}

status_t ovik_setHWPluginLedUserControl(unsigned int slot, unsigned int index, int control,
                                        int* pResp)
{
    return intFunc("setHWPluginLedUserControl", pResp, slot, index, control);
}

status_t ovik_setHWPluginLedValue(unsigned int slot, unsigned int index, unsigned int value,
                                  int* pResp)
{
    return intFunc("setHWPluginLedValue", pResp, slot, index, value);
}

status_t ovik_setHWPluginLedOnTime(unsigned int slot, unsigned int index, int onTime, int* pResp)
{
    return intFunc("setHWPluginLedOnTime", pResp, slot, index, onTime);
}

status_t ovik_setHWPluginLedOffTime(unsigned int slot, unsigned int index, int offTime, int* pResp)
{
    return intFunc("setHWPluginLedOffTime", pResp, slot, index, offTime);
}

status_t ovik_setHWPluginLedFlash(unsigned int slot, unsigned int index, int time, int* pResp)
{
    return intFunc("setHWPluginLedFlash", pResp, slot, index, time);
}

status_t ovik_setHWPluginLedBlink(unsigned int slot, unsigned int index, int onTime, int offTime,
                                  int* pResp)
{
    return intFunc("setHWPluginLedBlink", pResp, slot, index, onTime, offTime);
}

status_t ovik_serviceStart(const char* service, int* pResp)
{
    return intFunc("serviceStart", pResp, text(service));
}

status_t ovik_serviceStop(const char* service, int* pResp)
{
    return intFunc("serviceStop", pResp, text(service));
}

status_t ovik_serviceRestart(const char* service, int* pResp)
{
    return intFunc("serviceRestart", pResp, text(service));
}

status_t ovik_serviceReload(const char* service, int* pResp)
{
    return intFunc("serviceReload", pResp, text(service));
}

status_t ovik_serviceEnable(const char* service, int* pResp)
{
    return intFunc("serviceEnable", pResp, text(service));
}

status_t ovik_serviceDisable(const char* service, int* pResp)
{
    return intFunc("serviceDisable", pResp, text(service));
}

status_t ovik_serviceEnabled(const char* service, bool* pResp)
{
    return valueFunc<StatusBoolResp>("serviceEnabled", pResp, text(service));
}

status_t ovik_serviceApply(const char* service, int* pResp)
{
    return intFunc("serviceApply", pResp, text(service));
}

status_t ovik_serviceControlled(const char* service, bool* pResp)
{
    return valueFunc<StatusBoolResp>("serviceControlled", pResp, text(service));
}

status_t ovik_serviceState(const char* service, int* pResp)
{
    return intFunc("serviceState", pResp, text(service));
}

status_t ovik_serviceCommand(const char* service, const char* cmd, const char* opts,
                             void* fnCallback, int* pResp)
{
    return intFunc("serviceCommand", pResp, text(service), text(cmd), text(opts), fnCallback);
}

status_t ovik_getSystemInfo(char* moduleName, int maxLen, unsigned char* hwCode,
                            unsigned short* manufactureCode)
{
    const auto resp = request<SystemInfoResp>("getSystemInfo");
    if (resp.status != OVIK_OK)
        return resp.status;
    const systemInfo& info = resp.info;
    // The record's field need not be terminated, so its size also limits the copy.
    copyText(moduleName, maxLen,
             QByteArray(reinterpret_cast<const char*>(info.moduleName), sizeof info.moduleName));
    *hwCode = info.hwCode;
    *manufactureCode =
        static_cast<unsigned short>(info.manufactureCode[0] | info.manufactureCode[1] << 8);
    return OVIK_OK;
}

status_t ovik_getAvailableMemory(uint64_t* pSize)
{
    return valueFunc<StatusUint64Resp>("getAvailableMemory", pSize);
}
