// Runs a test script on a controller, step by step.
#pragma once

#include "host/session/session.h"
#include "kmr/run/script.h"

#include <QString>

#include <chrono>
#include <functional>
#include <optional>

namespace kmr {

enum class StepOutcome {
    Passed,
    Failed,
    Stopped, // by the user, while it ran or before it began
    NotRun   // because of a step that failed or was stopped before
};

struct StepResult {
    StepOutcome outcome = StepOutcome::Passed;
    QString error;                // why it did not pass
    std::optional<Values> values; // the values read last
    bool isLineLost = false;      // no further step can run
};

// One run of a step. Steps that were not run come at the end, as NotRun.
struct StepReport {
    const Step &step;
    QString repetition; // "3/10", for a repetition within another "3/10 1/2"; empty outside
    StepResult result;
    std::chrono::nanoseconds duration{0};
};

using StepObserver = std::function<void(const StepReport &report)>;

// Ends at the first step that does not pass. `isToGoOn`: continues after an expectation that fails,
// but not after a write that is not confirmed. Returns whether all steps passed.
bool runScript(Session &session, const Script &script, bool isToGoOn, const StepObserver &observer);

} // namespace kmr
