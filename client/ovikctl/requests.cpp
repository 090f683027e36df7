// The verbs that send requests: a single command, raw, batch.

#include "client/ovikctl/connection.h"
#include "client/ovikctl/output.h"
#include "client/ovikctl/verbs.h"

namespace
{
bool hasValue(const Request& request)
{
    return !request.command || request.command->shape != Shape::Status;
}

/// Prints one of several answers; false when its status is a failure.
bool report(const Settings& settings, const Request& request, const ovik_client_answer& answer)
{
    printLine(settings.json ? jsonOf(request, answer) : lineOf(request, answer));
    if (answer.status != OVIK_OK) // only the word, as an argument may be a secret
        complain(commandWordOf(request.text) + ": " + statusInWords(answer.status));
    return answer.status == OVIK_OK;
}

void tellAsJson(const Settings& settings, const Request& request, const Failure& failure)
{
    if (settings.json)
        printLine(jsonOf(request, failure.what()));
}

/// Sends requests one after the other on one connection.
class RawRequests
{
public:
    explicit RawRequests(const Settings& settings) : m_settings(settings) {}

    void send(const std::string& text)
    {
        const Request request = rawRequest(text);
        const Deadline deadline(m_settings.bound(request.bound()));
        try {
            if (!m_connection)
                m_connection.emplace(m_settings, deadline);
            if (!report(m_settings, request, m_connection->ask(request, deadline)))
                m_result = refused;
        } catch (const Failure& failure) {
            tellAsJson(m_settings, request, failure);
            throw;
        }
    }
    int result() const { return m_result; }

private:
    const Settings& m_settings;
    std::optional<Connection> m_connection;
    int m_result = allDone;
};

struct Batch {
    const Settings& settings;
    const std::vector<Request>& requests;
    int result = allDone;
    bool hasQuit = false;

    static void onAnswer(void* self, size_t index, const ovik_client_answer* answer)
    {
        Batch& batch = *static_cast<Batch*>(self);
        if (!report(batch.settings, batch.requests[index], *answer))
            batch.result = refused;
        else if (commandWordOf(batch.requests[index].text) == "quit")
            batch.hasQuit = true;
    }

    /// "3 (getBrightness) to 5 (getBuzzerMode)", counted from 1.
    std::string range(size_t begin, size_t end) const
    {
        const auto name = [this](size_t index) {
            return std::to_string(index + 1) + " (" + commandWordOf(requests[index].text) + ")";
        };
        if (begin == end)
            return "none";
        return begin + 1 == end ? name(begin) : name(begin) + " to " + name(end - 1);
    }

    void tellHowFar(const ovik_client_progress& progress) const
    {
        const std::string unanswered =
            hasQuit ? "sent behind quit, not done" : "sent, perhaps done";
        complain("answered: " + range(0, progress.answered));
        complain(unanswered + ": " + range(progress.answered, progress.sent));
        complain("never left, not done: " + range(progress.sent, requests.size()));
        for (size_t i = progress.answered; settings.json && i < requests.size(); ++i)
            printLine(jsonOf(requests[i], i < progress.sent ? unanswered : "never left, not done"));
    }
};

Milliseconds boundOfAll(const std::vector<Request>& requests)
{
    Milliseconds sum(0);
    for (const Request& request : requests)
        sum += request.bound();
    return sum;
}
} // namespace

int runRequest(const Settings& settings, const Request& request)
{
    try {
        const Deadline deadline(settings.bound(request.bound()));
        Connection connection(settings, deadline);
        const ovik_client_answer answer = connection.ask(request, deadline);
        if (settings.json)
            printLine(jsonOf(request, answer));
        else if (answer.status == OVIK_OK && hasValue(request))
            printLine(answer.text);
        if (answer.status == OVIK_OK)
            return allDone;
        complain(statusInWords(answer.status));
        return refused;
    } catch (const Failure& failure) {
        tellAsJson(settings, request, failure);
        throw;
    }
}

int runRaw(const Settings& settings, const std::vector<std::string>& texts)
{
    RawRequests requests(settings);
    for (const std::string& text : texts)
        requests.send(text);
    if (texts.empty())
        forEachLine("-", [&](const std::string& line) { requests.send(line); });
    return requests.result();
}

int runBatch(const Settings& settings, const std::string& file)
{
    const std::vector<Request> requests = requestsOfFile(file);
    std::vector<const char*> texts;
    texts.reserve(requests.size());
    for (const Request& request : requests)
        texts.push_back(request.text.c_str());

    const Deadline deadline(settings.bound(boundOfAll(requests)));
    std::optional<Connection> connection;
    try {
        connection.emplace(settings, deadline);
        for (const Request& request : requests)
            connection->requireMaySend(request);
    } catch (const Failure& failure) {
        for (const Request& request : requests)
            tellAsJson(settings, request, failure);
        throw;
    }
    Batch batch{settings, requests};
    ovik_client_progress progress = {};
    const ovik_client_error error =
        ovik_client_batch(connection->client(), texts.data(), texts.size(), deadline.left(),
                          Batch::onAnswer, &batch, &progress);
    if (error == OVIK_CLIENT_OK)
        return batch.result;
    const Failure failure = failureOf(error, settings.socket);
    batch.tellHowFar(progress);
    throw failure;
}
