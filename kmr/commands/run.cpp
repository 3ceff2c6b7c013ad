// kmr run: an acceptance test from a file.
#include "host/project/text_file.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/run/junit_report.h"
#include "kmr/run/script.h"
#include "kmr/run/script_run.h"

#include <QFileInfo>

#include <optional>

namespace kmr {

namespace {

const char *const HELP =
    R"(The file holds a step in each line. They run in this order:
  # the mixer starts and keeps its temperature
  write M5=1
  wait until X0=1 within 5s
  repeat 10
    expect boiler.temp 20..25   # a comment begins with #, after a blank
    pause 500ms
  end

Steps:
  write TAG=VALUE                 as 'kmr write': a write that is not confirmed fails
  expect TAG=VALUE                also != < <= > >=, or TAG LOW..HIGH with both ends
  wait until TAG=VALUE within 5s  reads until the condition holds, as for expect; the answer
                                  must come within the time
  pause 500ms                     times are in ms, s or min
  repeat 10                       repeats the steps up to its end
  end

Tags and values are typed as for 'kmr read' and 'kmr write', see their help, with the names of
--names. Values are compared as they are shown, exactly. What is not a number, such as the
0x7FC00000 of a broken sensor's float, is in no range. All bad lines are reported before anything
is sent. The first step that fails ends the script. Ctrl-C also ends it, and the report says which
step was running.

Exit codes: 0 all steps passed, 1 a step failed or the script was stopped, others as for
every command: 2 a bad file, 3 the link could not be opened, 7 no driver library.
)";
const char *const EXAMPLES = R"(
Examples:
  kmr run mixer.test --link tcp://192.168.0.10:8888
  kmr run mixer.test --keep-going --junit report.xml --link serial:///dev/ttyUSB0
  kmr run mixer.test --check)";

struct RunOptions {
    std::string file;
    std::string junit;      // file for the report; empty: none
    bool keepGoing = false; // continue after an expectation that fails
    bool check = false;     // read the file and send nothing
};

QString outcomeName(StepOutcome outcome)
{
    switch (outcome) {
    case StepOutcome::Passed:
        return "passed";
    case StepOutcome::Failed:
        return "failed";
    case StepOutcome::Stopped:
        return "stopped";
    case StepOutcome::NotRun:
        break;
    }
    return "not run";
}

// Counts the outcomes of the steps, and reports each step.
class Reporter {
public:
    Reporter(Format format, const Script &script)
        : m_script(script),
          m_records(format, "run",
                    {"time", "line", "repetition", "step", "outcome", "values", "error"}, true,
                    print),
          m_junit(script)
    {
    }

    void add(const StepReport &report)
    {
        const StepResult &result = report.result;
        m_junit.add(report);
        ++m_counts[result.outcome];
        const QString turn =
            report.repetition.isEmpty() ? QString() : " (" + report.repetition + ')';
        const QString outcome = outcomeName(result.outcome);
        const bool isPlain =
            result.outcome == StepOutcome::Passed || result.outcome == StepOutcome::NotRun;
        const QString error = isPlain ? QString() : ": " + result.error;
        m_records.add(QString("%1:%2: %3%4 %5%6")
                          .arg(m_script.file)
                          .arg(report.step.line)
                          .arg(report.step.text, turn, outcome, error),
                      {now(), std::int64_t(report.step.line), textField(report.repetition),
                       report.step.text, outcome, valuesField(report), textField(result.error)});
    }

    void end()
    {
        m_records.end();
        printError(QString("%1: %2 passed, %3 failed, %4 stopped, %5 not run")
                       .arg(m_script.file)
                       .arg(m_counts[StepOutcome::Passed])
                       .arg(m_counts[StepOutcome::Failed])
                       .arg(m_counts[StepOutcome::Stopped])
                       .arg(m_counts[StepOutcome::NotRun]));
    }

    const JUnitReport &junit() const
    {
        return m_junit;
    }

private:
    static Field valuesField(const StepReport &report)
    {
        if (!report.result.values)
            return {};
        return interpret(report.step.condition.tag, *report.result.values);
    }

    const Script &m_script;
    RecordWriter m_records;
    JUnitReport m_junit;
    std::map<StepOutcome, int> m_counts;
};

// An early check for a late write, which must not replace the script.
void requireReport(const QString &junit, const QString &file)
{
    const QString report = QFileInfo(junit).canonicalFilePath(); // empty for a new file
    if (!report.isEmpty() && report == QFileInfo(file).canonicalFilePath()) {
        throw Error(ErrorKind::Usage,
                    QString("--junit %1 would replace the script: name another file").arg(junit));
    }
    requireWritable(junit);
}

ExitCode runRun(const Options &options, const RunOptions &run)
{
    Connection connection(options);
    const QString file = toQString(run.file);
    const Script script = parseScript(readTextFile(file), file, connection.tags());
    if (run.check)
        return ExitCode::Ok;
    const QString junit = toQString(run.junit);
    if (!junit.isEmpty())
        requireReport(junit, file);
    Session &session = connection.open();
    Reporter reporter(options.format, script);
    const bool isPassed = runScript(session, script, run.keepGoing,
                                    [&](const StepReport &report) { reporter.add(report); });
    reporter.end();
    if (!junit.isEmpty())
        writeTextFile(junit, reporter.junit().text());
    return isPassed ? ExitCode::Ok : ExitCode::ItemFailed;
}

} // namespace

void addRun(CLI::App &app, Command &chosen)
{
    const auto run = std::make_shared<RunOptions>();
    CommandDefinition command(app, "run", "Run a test script: write, expect, wait, repeat");
    command.add("FILE", run->file, "the file with the steps").required();
    command.add("--junit", run->junit, "also write the report to this file, as JUnit XML");
    command.addFlag("--keep-going", run->keepGoing,
                    "continue after an expectation that fails, but not after a failed write");
    command.addFlag("--check", run->check, "only report bad lines and send nothing");
    command.setHelp(std::string(HELP) + EXAMPLES);
    command.setAction(chosen, run, runRun);
}

} // namespace kmr
