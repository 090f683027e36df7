#pragma once

#include "tests/soak/random.h"
#include "tests/support/commands.h"

/// A message, and the known row that says what must come of it.
struct Request {
    std::string message;
    /// What the panel is asked and the response when the panel works. A row without calls has the
    /// same response in every state.
    CommandRow row;
};

/// A request that the service answers by itself.
Request fixedRequest(const std::string& message, const std::string& response);
/// A scan; its @p options end up in its outcome, so that outcomes differ.
Request scanRequest(const std::string& options);

/// Makes every known row work, and the replies that differ from the table's: some calls get their
/// own arguments back, so that each response can be told from the others.
void answerRequests(FakePlatform& platform);

/// Makes requests of known rows, with proper and odd messages.
class Requests
{
public:
    explicit Requests(Random& random);

    /// About @p count requests, as many as can wait in a socket. @p scans: with Wi-Fi scans.
    std::vector<Request> some(int count, bool scans);
    /// Each row once, with the longest messages and responses.
    std::vector<Request> allRows() const;

private:
    CommandRow anyRow(bool scans);
    CommandRow numbered();
    CommandRow named();
    void add(std::vector<Request>& requests, bool scans);

    Random& m_random;
    std::vector<CommandRow> m_rows;
    int m_number = 0; ///< makes requests differ
};
