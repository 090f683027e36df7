#include "bench/bench.h"
#include "bench/contenders.h"
#include "bench/counter.h"

#include <array>
#include <cmath>
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
    Counter()
        : m_countsPath(m_dir.path("counts")), m_stacksPath(m_dir.path("stacks")),
          m_modulePath(m_dir.path("counter.so"))
    {
        // LD_PRELOAD ends a path at a blank or colon, as the one of the build may have.
        std::filesystem::create_symlink(OVIK_BENCH_COUNTER_PATH, m_modulePath);
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
        return {"env", "LD_PRELOAD=" + m_modulePath, "OVIK_BENCH_COUNTER=" + m_countsPath,
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
    const std::string m_modulePath;
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

/// Its name with its classes, but without the type that it returns and its arguments.
std::string nameOf(const std::string& function)
{
    size_t begin = 0;
    int depth = 0;
    for (size_t i = 0; i < function.size(); ++i) {
        if (function.compare(i, 21, "(anonymous namespace)") == 0)
            i += 20;
        else if (function[i] == '<')
            ++depth;
        else if (function[i] == '>')
            --depth;
        else if (depth == 0 && function[i] == ' ')
            begin = i + 1;
        else if (depth == 0 && function[i] == '(')
            return function.substr(begin, i - begin);
    }
    return function;
}

/// Who an allocation is to be put down to. Qt's templates and the generated clients are part of our
/// program; a QVariant is an argument that such a client passes on.
std::string classOf(const Origin& origin, const std::string& function)
{
    const std::string name = nameOf(function);
    const auto calls = [&](const char* begin) { return origin.entered.rfind(begin, 0) == 0; };
    const auto isOf = [&](const char* begin) { return name.rfind(begin, 0) == 0; };
    const auto is = [&](const char* part) { return name.find(part) != std::string::npos; };
    if (origin.entered.empty())
        return origin.thread == BUS_THREAD ? "Qt D-Bus, its thread" : "ours";
    const bool clientOfQt = isOf("QDBus") || isOf("ComWenuOVIK") || isOf("QList<QVariant>");
    if ((calls("malloc") || calls("operator new")) && !clientOfQt)
        return "ours";
    if (calls("QMetaObject::invokeMethod") || calls("QCoreApplication::exec") ||
        is("qt_metacall") || is("qt_static_metacall"))
        return "hand-over to the application thread";
    if (calls("QDBus") || clientOfQt)
        return "Qt D-Bus, a call";
    if (calls("QString") || calls("QByteArray") || calls("QtPrivate::QStringList") ||
        calls("QList"))
        return "Qt's strings";
    return "ours";
}

void measureRequest(Report& report, Counter& counter, Service& service, const std::string& request,
                    std::ostream& details)
{
    const std::string shown = request == "-8" ? "unknown word" : request;
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

    std::vector<Origin> origins;
    double all = -1;
    // A thread that lags behind allocates before it or after it.
    for (int tries = 0; tries < 20 && all != std::round(sum); ++tries) {
        std::ifstream stacks = counter.stacksDuring([&] { ask(1); });
        origins = originsIn(stacks);
        all = static_cast<double>(origins.size());
    }
    if (all != std::round(sum))
        throw std::runtime_error(
            format("%s: %.0f allocations with callers, %.2f counted", shown.c_str(), all, sum));
    const auto functions = functionsAt(origins);
    // The one allocation that the service makes by itself. The function may be part of its caller.
    int buffers = request.rfind("seepromRead;", 0) == 0 ? 1 : 0;
    std::map<std::string, int> classes = {{"ours", 0}};
    std::map<std::string, int> places;
    for (const Origin& origin : origins) {
        const std::string function = origin.offset.empty() ? "" : functions.at(origin.offset);
        std::string kind = classOf(origin, function);
        const std::string name = nameOf(function);
        if (buffers > 0 && origin.entered == "malloc" &&
            (name.find("::readBytes") != std::string::npos ||
             name == "(anonymous namespace)::seepromRead")) {
            kind = "the EEPROM buffer";
            --buffers;
        }
        ++classes[kind];
        std::ostringstream place;
        place << kind << '\t' << threadNames[origin.thread] << '\t' << function << '\t'
              << origin.entered;
        ++places[place.str()];
    }
    for (const auto& [place, count] : places)
        details << shown << '\t' << count << '\t' << place << '\n';

    report.row(shown + ": ours", "all its allocations", {classes["ours"] / all},
               format("%d / %.0f; threads: ", classes["ours"], all) + byThread, Goal::AtMost, 0);
    for (const auto& [kind, count] : classes) {
        if (kind != "ours")
            report.row(format("%s: %s", shown.c_str(), kind.c_str()), "all its allocations",
                       {count / all}, format("%d / %.0f", count, all));
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
