#include "client/ovikctl/connection.h"
#include "client/ovikctl/output.h"
#include "client/ovikctl/verbs.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>

namespace
{
std::string timeOfDay()
{
    const time_t now = time(nullptr);
    tm parts = {};
    char text[16] = "";
    if (localtime_r(&now, &parts))
        strftime(text, sizeof text, "%H:%M:%S", &parts);
    return text;
}

/// Cuts the text to one terminal line of @p width bytes, without control characters.
std::string cutTo(std::string text, size_t width)
{
    text = withoutControls(std::move(text));
    if (text.size() <= width)
        return text;
    const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; };
    while (width > 0 && continues(text[width]))
        --width;
    return text.substr(0, width);
}

/// The values of one round, or the reason why there are none.
struct Round {
    std::vector<std::string> values;
    std::vector<std::string> objects; ///< the same as JSON
    std::string failure;
};

class Watch
{
public:
    Watch(const Settings& settings, std::vector<Request> requests)
        : m_settings(settings), m_requests(std::move(requests))
    {
        for (const Request& request : m_requests) {
            m_bound += request.bound();
            m_names.push_back(withoutSecrets(request));
            m_width = std::max(m_width, m_names.back().size());
        }
    }

    /// Opens a new connection each time, so that other clients are served in between.
    Round ask()
    {
        Round round;
        try {
            const Deadline deadline(m_settings.bound(m_bound));
            Connection connection(m_settings, deadline);
            for (const Request& request : m_requests) {
                const ovik_client_answer answer = connection.ask(request, deadline);
                round.values.push_back(answer.status == OVIK_OK ? answer.text
                                                                : statusInWords(answer.status));
                round.objects.push_back(jsonOf(request, answer));
            }
        } catch (const Failure& failure) {
            round.failure = failure.what();
        }
        return round;
    }

    void printLines(const Round& round) const
    {
        const std::string time = timeOfDay();
        for (size_t i = 0; i < round.values.size(); ++i)
            printLine(m_settings.json ? round.objects[i]
                                      : time + " " + m_names[i] + " " + round.values[i]);
        if (!round.failure.empty())
            complain(time + " " + round.failure);
    }

    void draw(const Round& round)
    {
        winsize size = {};
        ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
        const size_t width = size.ws_col > 1 ? size.ws_col - 1u : 79;
        const size_t height = size.ws_row > 2 ? size.ws_row - 2u : 22;

        std::string picture = m_drawn > 0 ? "\033[" + std::to_string(m_drawn) + "A\r\033[J" : "";
        picture += cutTo(timeOfDay() + "  Ctrl-C ends  " + round.failure, width) + "\n";
        const size_t rows = std::min(m_requests.size(), height);
        for (size_t i = 0; i < rows; ++i) {
            const std::string value = i < round.values.size() ? round.values[i] : "";
            std::string row = m_names[i];
            row.resize(m_width + 2, ' ');
            row += value;
            const std::string line = cutTo(std::move(row), width);
            const bool isNew = i < m_last.size() && m_last[i] != value;
            picture += (isNew ? paint(Style::Bold, line) : line) + "\n";
        }
        fputs(picture.c_str(), stdout);
        fflush(stdout);
        m_drawn = rows + 1;
        m_last = round.values;
    }

private:
    const Settings& m_settings;
    std::vector<Request> m_requests;
    std::vector<std::string> m_names; ///< the requests without secrets, for display
    Milliseconds m_bound{0};
    size_t m_width = 0;
    size_t m_drawn = 0; ///< number of lines to overwrite in the next round
    std::vector<std::string> m_last;
};
} // namespace

int runWatch(const Settings& settings, const std::vector<std::string>& lines, double interval)
{
    std::vector<Request> requests;
    requests.reserve(lines.size());
    for (const std::string& line : lines)
        requests.push_back(requestOfLine(line));
    Watch watch(settings, std::move(requests));
    const bool isLive = isatty(STDOUT_FILENO) && !settings.json;
    for (;;) {
        const Deadline next(Milliseconds(static_cast<Milliseconds::rep>(interval * 1000)));
        const Round round = watch.ask();
        isLive ? watch.draw(round) : watch.printLines(round);
        std::this_thread::sleep_for(Milliseconds(next.left()));
    }
}
