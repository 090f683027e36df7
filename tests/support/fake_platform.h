#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <deque>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// The values of a message as text, each after a blank.
std::string valuesOf(sd_bus_message* message);

/// How the fake platform replies to a call; the functions below make such replies.
using Reply = std::function<int(sd_bus_message* call)>;

/// A reply of the given signature; values as for sd_bus_message_append().
template <class... Values>
Reply replyWith(const char* signature, Values... values)
{
    return [=](sd_bus_message* call) {
        return sd_bus_reply_method_return(call, signature, values...);
    };
}
Reply replyFilledBy(std::function<void(sd_bus_message*)> fill);
Reply replyText(const std::string& text);
Reply replyBytes(const std::string& bytes);
Reply replyResultAndBytes(int result, const std::string& bytes);
/// Manufactured on 1.2.26, hardware code 17.3, display 9.
Reply replySystemInfo(const std::string& serialNo, const std::string& moduleName,
                      const std::string& manufactureCode);
/// A device of type -2 with 2^40 bytes, 5 of them free, and flags 7.
Reply replyStorageInfo(const std::string& mountPoint);
Reply replyEcho();
Reply replyError(const std::string& name);
Reply silence();
/// Appends a new descriptor of /dev/null.
int appendDescriptor(sd_bus_message* message);

/**
 * The platform's service, written with sd-bus instead of Qt, so it shares no code with the product.
 *
 * It runs in a thread of its own, and records each call before it replies.
 */
class FakePlatform
{
public:
    /// Every object path with its interface: a complete panel with modules in slots 0 and 2.
    static std::map<std::string, std::string> wholePanel();

    explicit FakePlatform(std::map<std::string, std::string> objects = wholePanel(),
                          bool ownNameAtOnce = true);
    ~FakePlatform();

    /// Sets the reply to "Interface.Member"; "Interface" is the last component of its name.
    void answer(const std::string& member, Reply reply);
    /// Sets the reply to Introspect at a path; overrides wholePanel().
    void answerIntrospection(const std::string& path, Reply reply);

    /// The calls since the previous takeCalls(), each as "path interface.member(signature) values";
    /// without introspection.
    std::vector<std::string> takeCalls();
    int introspections() const { return m_introspections; }
    bool waitForCall(const std::string& text);

    void emitCommandResult(const std::string& service, const std::string& command,
                           const std::string& json);
    /// Emits the signal with the arguments that @p fill appends.
    void emitCommandResult(const std::function<void(sd_bus_message*)>& fill);

    void ownName();
    void releaseName();

    /// Stops reading the bus, so that calls wait for resume().
    void freeze();
    void resume();

private:
    static int onMessage(sd_bus_message* message, void* self, sd_bus_error* error);
    int handle(sd_bus_message* message);
    int introspect(sd_bus_message* message, const std::string& path);
    void run();
    void onThread(const std::function<void()>& task);

    const std::map<std::string, std::string> m_objects;
    sd_bus* m_bus = nullptr;
    int m_wakeup = -1;
    std::atomic<bool> m_stop{false};
    bool m_isFrozen = false; ///< used by the thread only
    std::atomic<int> m_introspections{0};
    std::mutex m_mutex;
    std::map<std::string, Reply> m_answers;
    std::map<std::string, Reply> m_introspectionAnswers;
    std::vector<std::string> m_calls;
    std::deque<std::packaged_task<void()>> m_tasks;
    std::thread m_thread;
};
