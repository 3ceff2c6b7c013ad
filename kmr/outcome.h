// The outcomes of requests, as exit codes and in words.
#pragma once

#include "host/session/read_once.h"
#include "host/session/session.h"
#include "kmr/exit_code.h"

#include <QString>

namespace kmr {

// The exit code for one request, and its outcome in words: "no answer".
ExitCode exitCodeOf(const RequestResult &result);
QString toText(const RequestResult &result);

// Why a tag could not be read: "not asked: station 1 did not answer D100".
QString readErrorText(const Reading &reading, const Tag &tag);

// What was wrong with an answer, and the options that may help.
QString toTextWithHint(const Failure &failure);

// One word for records: "done", "refused", "no answer", "not sent" or "unknown".
QString outcomeName(const RequestResult &result);

// The present time as in records.
QString now();

// Combines exit codes: that of the failed items if all failed alike, else ItemFailed.
class ExitCodes {
public:
    void add(ExitCode code);
    ExitCode total() const
    {
        return m_total;
    }

private:
    ExitCode m_total = ExitCode::Ok;
};

} // namespace kmr
