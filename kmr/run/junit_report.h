// The report of a test script as JUnit XML, for continuous integration.
//
// A test case is a step of the file, however often it is run: its time is that of all its runs, and
// its failure is that of the first run that fails. A step that was stopped is an error; one that
// was not run is skipped.
#pragma once

#include "kmr/run/script_run.h"

#include <QDateTime>
#include <QString>

#include <map>

namespace kmr {

class JUnitReport {
public:
    // The script must outlive the report.
    explicit JUnitReport(const Script &script);

    void add(const StepReport &report);

    QString text() const;

private:
    struct Case {
        StepOutcome outcome = StepOutcome::Passed;
        QString message; // of the first run that did not pass
        std::chrono::nanoseconds duration{0};
    };

    int count(StepOutcome outcome) const;

    const Script &m_script;
    const QDateTime m_begin = QDateTime::currentDateTime();
    std::map<int, Case> m_cases; // by line
};

} // namespace kmr
