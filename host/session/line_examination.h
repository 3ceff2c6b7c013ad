// Asks a station a few times, to say what is wrong with its line.
#pragma once

#include "host/line/line_diagnosis.h"
#include "host/session/session.h"

#include <optional>

namespace kmr {

// Asks `count` times, each once, and judges what came; `echo` is what the user has set, the
// session's own must be EchoMode::Auto and its retries 0. Nothing when the session is stopped.
// Replaces the session's poll plan and its observer.
std::optional<Diagnosis> askLine(Session &session, const ElementRange &element, int count,
                                 EchoMode echo);

// True for a station that answers, be it with a refusal.
bool isAnswered(Finding finding);

// For answers that come later than the timeout. `milliseconds`: the timeout that would do.
QString adviceForLate(const QString &milliseconds);

} // namespace kmr
