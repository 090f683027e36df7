#include "bench/bench.h"
#include "bench/contenders.h"
#include "bench/counter.h"

#include <array>
#include <cxxabi.h>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <sstream>
#include <sys/mman.h>
#include <unistd.h>

namespace
{
constexpr const char* threadNames[] = {"main", "application", "bus"};

using Counts = std::array<double, THREAD_KINDS>;

/// What the counter that is loaded into the service tells.
class Counter
{
public:
    Counter() : m_countsPath(m_dir.path("counts")), m_stacksPath(m_dir.path("stacks"))
    {
        const int file = open(m_countsPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        void* mapped = MAP_FAILED;
        if (ftruncate(file, sizeof(counter)) == 0)
            mapped = mmap(nullptr, sizeof(counter), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        close(file);
        if (mapped == MAP_FAILED)
            throw std::runtime_error("no memory to share");
        m_counter = static_cast<counter*>(mapped);
    }

    /// What the service is to be run under.
    std::vector<std::string> prefix() const
    {
        return {"env", "LD_PRELOAD=" OVIK_BENCH_COUNTER_PATH, "OVIK_BENCH_COUNTER=" + m_countsPath,
                "OVIK_BENCH_STACKS=" + m_stacksPath};
    }

    Counts counts() const
    {
        Counts all;
        for (size_t i = 0; i < all.size(); ++i)
            all[i] = static_cast<double>(m_counter->allocations[i]);
        return all;
    }

    /// The callers of each allocation during @p work, as backtrace_symbols_fd() writes them.
    std::ifstream stacksDuring(const std::function<void()>& work)
    {
        if (truncate(m_stacksPath.c_str(), 0) != 0)
            throw std::runtime_error("the allocation counter writes no callers");
        m_counter->recording = 1;
        work();
        m_counter->recording = 0;
        return std::ifstream(m_stacksPath);
    }

private:
    const TempDir m_dir;
    const std::string m_countsPath;
    const std::string m_stacksPath;
    counter* m_counter;
};
/// One caller, as "/path/object(function+0x12) [0x7f12]" or "/path/object(+0x12) [0x7f12]".
struct Frame {
    explicit Frame(const std::string& line)
    {
        const size_t open = line.find('(');
        const size_t plus = line.find('+', open);
        object = line.substr(0, open);
        object = object.substr(object.rfind('/') + 1);
        if (plus == std::string::npos)
            return;
        function = line.substr(open + 1, plus - open - 1);
        offset = line.substr(plus + 1, line.find(')') - plus - 1);
        int status = -1;
        char* const name = abi::__cxa_demangle(function.c_str(), nullptr, nullptr, &status);
        if (status == 0)
            function = name;
        free(name);
    }
    std::string object;
    std::string function;
    std::string offset;
};

/// Where our own code, seen from the allocation, comes in.
struct Origin {
    int thread = 0;
    std::string entered; ///< the function of a library that our code has called; "" for none
    std::string offset;  ///< of the calling place in our program
};

std::vector<Origin> originsIn(std::istream& stacks)
{
    const std::string program = std::filesystem::path(OVIK_SERVER_PATH).filename();
    std::vector<Origin> origins;
    std::string below; // the function called by the one in the line
    bool found = true;
    for (std::string line; std::getline(stacks, line);) {
        if (line.rfind("thread ", 0) == 0) {
            origins.push_back({line.back() - '0', "", ""});
            below = "malloc";
            found = false;
            continue;
        }
        const Frame frame(line);
        if (!found && frame.object == program) {
            origins.back().entered = below;
            origins.back().offset = frame.offset;
            found = true;
        }
        below = frame.function.empty() ? frame.object : frame.function;
    }
    return origins;
}

/// The functions of our program at these offsets.
std::map<std::string, std::string> functionsAt(const std::vector<Origin>& origins)
{
    std::vector<std::string> command = {"addr2line", "-fCe", OVIK_SERVER_PATH};
    std::map<std::string, std::string> functions;
    for (const Origin& origin : origins)
        functions[origin.offset] = "";
    functions.erase("");
    for (const auto& [offset, function] : functions)
        command.push_back(offset);
    Process process(command);
    if (process.wait() != 0)
        throw std::runtime_error("addr2line failed: " + process.errors());
    std::istringstream lines(process.output());
    std::string place;
    for (auto& [offset, function] : functions)
        std::getline(lines, function) && std::getline(lines, place);
    return functions;
}

/// Who an allocation is to be put down to. A QVariant is an argument that a generated client passes
/// on.
std::string classOf(const Origin& origin, const std::string& function)
{
    const auto calls = [&](const char* name) { return origin.entered.rfind(name, 0) == 0; };
    const auto is = [&](const char* name) { return function.find(name) != std::string::npos; };
    if (origin.entered.empty())
        return "Qt D-Bus, its thread";
    if (calls("QMetaObject::invokeMethod") || calls("QCoreApplication::exec") ||
        is("qt_metacall") || is("qt_static_metacall"))
        return "hand-over to the application thread";
    if (calls("QDBus") || is("QDBus") || is("ComWenuOVIK") || is("QVariant"))
        return "Qt D-Bus, a call";
    if (calls("QString") || calls("QByteArray") || calls("QtPrivate::QStringList") ||
        calls("QList"))
        return "Qt's strings";
    if (calls("malloc"))
        return "the EEPROM buffer";
    return "ours";
}

void measureRequest(Report& report, Counter& counter, Service& service, const std::string& request,
                    std::ostream& details)
{
    constexpr int many = 1000;
    const auto ask = [&](int count) {
        service.batch(std::vector<const char*>(static_cast<size_t>(count), request.c_str()),
                      request == "-8" ? OVIK_NOT_RUN : OVIK_OK);
    };
    ask(100);
    const Counts before = counter.counts();
    ask(many);
    const Counts after = counter.counts();
    double sum = 0;
    std::string byThread;
    for (size_t i = 0; i < after.size(); ++i) {
        const double each = (after[i] - before[i]) / many;
        sum += each;
        byThread += format("%s%s %.1f", i == 0 ? "" : ", ", threadNames[i], each);
    }

    std::ifstream stacks = counter.stacksDuring([&] { ask(1); });
    const auto origins = originsIn(stacks);
    const auto functions = functionsAt(origins);
    std::map<std::string, int> classes = {{"ours", 0}};
    std::map<std::string, int> places;
    for (const Origin& origin : origins) {
        const std::string function = origin.offset.empty() ? "" : functions.at(origin.offset);
        const std::string kind = classOf(origin, function);
        ++classes[kind];
        ++places[kind + '\t' + threadNames[origin.thread] + '\t' + function + '\t' +
                 origin.entered];
    }
    for (const auto& [place, count] : places)
        details << request << '\t' << count << '\t' << place << '\n';

    const auto all = static_cast<double>(origins.size());
    report.row(request + ": ours", "all its allocations", {classes["ours"] / all},
               format("%d / %.0f; threads: ", classes["ours"], all) + byThread, Goal::AtMost, 0);
    for (const auto& [kind, count] : classes) {
        if (kind != "ours")
            report.row(request + ": " + kind, "all its allocations", {count / all},
                       format("%d / %.0f", count, all));
    }
}
} // namespace

void measureAllocations(Report& report, const Effort&)
{
    Counter counter;
    const ReadyServer server(counter.prefix());
    Service service;
    auto details = report.points("allocations");
    report.part("Allocations per request");
    for (const char* request : {"-8", "getBrightness", "seepromRead;0;16"})
        measureRequest(report, counter, service, request, details);
}
