#include "kmr/run/script_run.h"

#include "host/session/read_once.h"
#include "kmr/outcome.h"
#include "kmr/stop_signal.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace kmr {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds
    BETWEEN_READS(20); // of a wait: limits the load of the controller

// True if the line was lost during the request, which then has neither an answer nor a fault.
bool isLineLost(const RequestResult &result)
{
    return !result.isDone() && result.failure.fault == ReplyFault::None &&
           result.failure.exceptionCode == 0 && !stopFlag();
}

StepResult failed(const QString &error, const RequestResult &result)
{
    return {stopFlag() ? StepOutcome::Stopped : StepOutcome::Failed, error, {}, isLineLost(result)};
}

StepResult runWrite(Session &session, const Assignment &assignment)
{
    const WriteResult result = writeTag(session, assignment.tag, assignment.values);
    if (result.request.isDone())
        return {};
    const QString place =
        result.stoppedAt.isEmpty() ? QString() : "stopped at " + result.stoppedAt + ": ";
    return failed(place + writeErrorText(result.request), result.request);
}

StepResult runExpect(Session &session, const Condition &condition)
{
    const Tag &tag = condition.tag;
    const Reading reading = readNow(session, {tag}).front();
    if (!reading.result.isDone())
        return failed(readErrorText(reading, tag), reading.result);
    if (holds(condition, reading.values))
        return {StepOutcome::Passed, {}, reading.values};
    const QString unit = tag.unit.isEmpty() ? QString() : ' ' + tag.unit;
    return {StepOutcome::Failed,
            QString("%1 is %2%3").arg(tag.text, formatValues(tag, reading.values), unit),
            reading.values};
}

// A condition that is met too late is not met.
StepResult tooLate(StepResult result, std::chrono::nanoseconds elapsed)
{
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(elapsed).count();
    result.outcome = StepOutcome::Failed;
    result.error = QString("the answer came after %1 ms").arg(milliseconds);
    return result;
}

// Reads until the condition holds. Only a lost line ends it early: other failures may be temporary.
StepResult runWait(Session &session, const Step &step)
{
    const auto begin = steady_clock::now();
    while (true) {
        StepResult result = runExpect(session, step.condition);
        if (stopFlag())
            result.outcome = StepOutcome::Stopped;
        const auto elapsed = steady_clock::now() - begin;
        if (result.outcome == StepOutcome::Passed && elapsed > step.time)
            result = tooLate(std::move(result), elapsed);
        if (result.outcome != StepOutcome::Failed || result.isLineLost)
            return result;
        if (elapsed >= step.time) {
            result.error = "not in time: " + result.error;
            return result;
        }
        sleepUnlessStopped(BETWEEN_READS);
    }
}

StepResult runStep(Session &session, const Step &step)
{
    if (stopFlag())
        return {StepOutcome::Stopped, "stopped before it began", {}};
    StepResult result;
    if (step.kind == StepKind::Write)
        result = runWrite(session, step.assignment);
    else if (step.kind == StepKind::Expect)
        result = runExpect(session, step.condition);
    else if (step.kind == StepKind::WaitUntil)
        result = runWait(session, step);
    else if (sleepUnlessStopped(step.time); stopFlag())
        result.outcome = StepOutcome::Stopped;
    if (result.outcome == StepOutcome::Stopped && step.kind != StepKind::Write)
        result.error = "stopped while it ran"; // a write has an error of its own
    return result;
}

// The position in the script: the next step, and its repetitions.
class Position {
public:
    explicit Position(const std::vector<Step> &steps) : m_steps(steps)
    {
        enter();
    }

    bool isAtEnd() const
    {
        return m_index == m_steps.size();
    }
    const Step &step() const
    {
        return m_steps[m_index];
    }
    std::size_t index() const
    {
        return m_index;
    }

    void advance()
    {
        ++m_index;
        enter();
    }

    QString repetition() const
    {
        QStringList texts;
        for (const Loop &loop : m_loops)
            texts.append(QString("%1/%2").arg(loop.turn).arg(m_steps[loop.repeat].times));
        return texts.join(' ');
    }

private:
    struct Loop {
        std::size_t repeat; // its step
        int turn = 1;
    };

    // Skips the beginnings and ends of repetitions.
    void enter()
    {
        for (; !isAtEnd() && !step().isReported(); ++m_index) {
            if (step().kind == StepKind::Repeat)
                m_loops.push_back({m_index});
            else if (m_loops.back().turn++ < m_steps[m_loops.back().repeat].times)
                m_index = m_loops.back().repeat;
            else
                m_loops.pop_back();
        }
    }

    const std::vector<Step> &m_steps;
    std::size_t m_index = 0;
    std::vector<Loop> m_loops;
};

bool isOver(const Step &step, const StepResult &result, bool isToGoOn)
{
    if (result.outcome == StepOutcome::Passed)
        return false;
    return !isToGoOn || step.kind == StepKind::Write || result.isLineLost ||
           result.outcome == StepOutcome::Stopped;
}

} // namespace

bool runScript(Session &session, const Script &script, bool isToGoOn, const StepObserver &observer)
{
    std::vector<bool> wasRun(script.steps.size());
    bool isPassed = true;
    for (Position position(script.steps); !position.isAtEnd(); position.advance()) {
        const Step &step = position.step();
        const auto begin = steady_clock::now();
        const StepResult result = runStep(session, step);
        wasRun[position.index()] = true;
        observer({step, position.repetition(), result, steady_clock::now() - begin});
        isPassed = isPassed && result.outcome == StepOutcome::Passed;
        if (isOver(step, result, isToGoOn))
            break;
    }
    for (std::size_t i = 0; i < script.steps.size() && !isPassed; ++i) {
        const Step &step = script.steps[i];
        if (step.isReported() && !wasRun[i])
            observer({step, {}, {StepOutcome::NotRun, "not run", {}}});
    }
    return isPassed;
}

} // namespace kmr
