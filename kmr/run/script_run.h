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
    std::optional<Values> values; // that it read last
    bool isLineLost = false;      // so that no further step can run
};

// One time that a step was run. Steps that were never run come at the end, as NotRun.
struct StepReport {
    const Step &step;
    QString repetition; // "3/10", and of repetitions within another "3/10 1/2"; empty outside
    StepResult result;
    std::chrono::nanoseconds duration{0};
};

using StepObserver = std::function<void(const StepReport &report)>;

// Ends at the first step that does not pass. `isToGoOn`: goes on after an expectation that fails,
// but never after a write that is not confirmed. Returns whether all steps passed.
bool runScript(Session &session, const Script &script, bool isToGoOn, const StepObserver &observer);

} // namespace kmr
