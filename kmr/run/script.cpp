#include "kmr/run/script.h"

#include "host/project/csv.h"
#include "kmr/duration_text.h"

#include <QRegularExpression>

#include <algorithm>

namespace kmr {

namespace {

constexpr int MOST_TIMES = 1000000;

int parseTimes(const QString &text)
{
    static const QRegularExpression TIMES("^([0-9]+)(\\s+times)?$");
    bool isNumber = false;
    const int times = TIMES.match(text).captured(1).toInt(&isNumber);
    if (!isNumber || times < 1 || times > MOST_TIMES) {
        throw Error(ErrorKind::Usage, QString("bad repetition \"%1\": expected a number from 1 to "
                                              "%2, for example repeat 10")
                                          .arg(text)
                                          .arg(MOST_TIMES));
    }
    return times;
}

void parseWait(const QString &text, const NamedTagReader &reader, Step &step)
{
    static const QRegularExpression WAIT("^until\\s+(.+?)\\s+within\\s+(.+)$");
    const QRegularExpressionMatch match = WAIT.match(text);
    if (!match.hasMatch()) {
        throw Error(ErrorKind::Usage, "bad wait: expected a condition and the longest time, for "
                                      "example wait until X0=1 within 5s");
    }
    step.condition = parseCondition(match.captured(1), reader);
    step.time = parseTime(match.captured(2));
}

// Blanks around the '=' are allowed.
Assignment parseWrite(const QString &text, const NamedTagReader &reader)
{
    static const QRegularExpression EQUALS("^([^=]*?)\\s*=\\s*");
    return parseAssignment(QString(text).replace(EQUALS, "\\1="), reader);
}

Step parseStep(const QString &text, const NamedTagReader &reader)
{
    static const QRegularExpression BLANKS("\\s+");
    const QString word = text.section(BLANKS, 0, 0);
    const QString rest = text.mid(word.size()).trimmed();
    Step step;
    step.text = text;
    if (word == "write") {
        step.kind = StepKind::Write;
        step.assignment = parseWrite(rest, reader);
    } else if (word == "expect") {
        step.kind = StepKind::Expect;
        step.condition = parseCondition(rest, reader);
    } else if (word == "wait") {
        step.kind = StepKind::WaitUntil;
        parseWait(rest, reader, step);
    } else if (word == "pause") {
        step.kind = StepKind::Pause;
        step.time = parseTime(rest);
    } else if (word == "repeat") {
        step.kind = StepKind::Repeat;
        step.times = parseTimes(rest);
    } else if (text == "end") {
        step.kind = StepKind::End;
    } else {
        throw Error(ErrorKind::Usage, QString("unknown step \"%1\": expected write, expect, wait "
                                              "until, pause, repeat or end")
                                          .arg(text));
    }
    return step;
}

} // namespace

Script parseScript(const QString &text, const QString &file, const NamedTagReader &reader)
{
    static const QRegularExpression COMMENT("\\s+#.*$");
    Script script{file, {}};
    std::vector<int> open; // lines of repetitions that have no end yet
    const auto read = [&](const QString &line, int number) {
        // A bad repetition counts, so that its end is not also reported.
        if (line.startsWith("repeat"))
            open.push_back(number);
        Step step = parseStep(QString(line).remove(COMMENT), reader);
        step.line = number;
        if (step.kind == StepKind::End && open.empty())
            throw Error(ErrorKind::Usage, "this end has no repeat before it");
        if (step.kind == StepKind::End)
            open.pop_back();
        script.steps.push_back(std::move(step));
    };
    QStringList faults = readLines(text, file, "#", read);
    for (const int line : open)
        faults.append(QString("%1:%2: this repeat has no end").arg(file).arg(line));
    if (faults.isEmpty() && std::none_of(script.steps.begin(), script.steps.end(),
                                         [](const Step &step) { return step.isReported(); }))
        faults.append(file + ": no step in it");
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
    return script;
}

} // namespace kmr
