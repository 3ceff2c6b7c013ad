#include "kmr/run/junit_report.h"

#include <QFileInfo>
#include <QXmlStreamWriter>

#include <algorithm>

namespace kmr {

namespace {

QString seconds(std::chrono::nanoseconds time)
{
    return QString::number(std::chrono::duration<double>(time).count(), 'f', 3);
}

// XML does not allow control characters, not even escaped.
QString xmlText(QString text)
{
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control && character != '\t')
            character = QChar::ReplacementCharacter;
    }
    return text;
}

// The element within a test case for its outcome; null if it passed.
const char *elementOf(StepOutcome outcome)
{
    switch (outcome) {
    case StepOutcome::Failed:
        return "failure";
    case StepOutcome::Stopped:
        return "error";
    case StepOutcome::NotRun:
        return "skipped";
    case StepOutcome::Passed:
        break;
    }
    return nullptr;
}

} // namespace

JUnitReport::JUnitReport(const Script &script) : m_script(script) {}

void JUnitReport::add(const StepReport &report)
{
    Case &entry = m_cases[report.step.line];
    entry.duration += report.duration;
    if (entry.outcome != StepOutcome::Passed)
        return;
    entry.outcome = report.result.outcome;
    const QString repetition =
        report.repetition.isEmpty() ? QString() : QString("repetition %1: ").arg(report.repetition);
    entry.message = repetition + report.result.error;
}

int JUnitReport::count(StepOutcome outcome) const
{
    return static_cast<int>(
        std::count_if(m_cases.begin(), m_cases.end(),
                      [outcome](const auto &entry) { return entry.second.outcome == outcome; }));
}

QString JUnitReport::text() const
{
    std::chrono::nanoseconds total{0};
    for (const auto &[line, entry] : m_cases)
        total += entry.duration;
    QString text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement("testsuite");
    xml.writeAttribute("name", xmlText(m_script.file));
    xml.writeAttribute("timestamp", m_begin.toUTC().toString("yyyy-MM-ddTHH:mm:ss"));
    xml.writeAttribute("tests", QString::number(m_cases.size()));
    xml.writeAttribute("failures", QString::number(count(StepOutcome::Failed)));
    xml.writeAttribute("errors", QString::number(count(StepOutcome::Stopped)));
    xml.writeAttribute("skipped", QString::number(count(StepOutcome::NotRun)));
    xml.writeAttribute("time", seconds(total));
    for (const Step &step : m_script.steps) {
        const auto found = m_cases.find(step.line);
        if (found == m_cases.end())
            continue;
        const Case &entry = found->second;
        xml.writeStartElement("testcase");
        xml.writeAttribute("classname", xmlText(QFileInfo(m_script.file).completeBaseName()));
        xml.writeAttribute("name", xmlText(QString("line %1: %2").arg(step.line).arg(step.text)));
        xml.writeAttribute("time", seconds(entry.duration));
        if (const char *element = elementOf(entry.outcome)) {
            xml.writeStartElement(element);
            xml.writeAttribute("message", xmlText(entry.message));
            xml.writeEndElement();
        }
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return text;
}

} // namespace kmr
