#pragma once

#include "tests/soak/random.h"
#include "tests/support/commands.h"

/// A message, and the known row with its expected effect.
struct Request {
    std::string message;
    /// The panel's calls, and the response when the panel works. A row without calls has the same
    /// response in every state.
    CommandRow row;
};

/// A request that never reaches the panel.
Request fixedRequest(const std::string& message, const std::string& response);
/// A scan; its @p options become its outcome, so outcomes differ.
Request scanRequest(const std::string& options);

/// Configures the panel for every known row. Some calls return their own arguments, which makes
/// each response distinguishable.
void answerRequests(FakePlatform& platform);

/// Makes requests of known rows, both proper and odd messages.
class Requests
{
public:
    explicit Requests(Random& random);

    /// About @p count requests, within what a socket can buffer. @p scans: with Wi-Fi scans.
    std::vector<Request> some(int count, bool scans);
    /// Each row once, with messages and responses of maximum length.
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
