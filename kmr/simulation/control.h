// What 'kmr sim --control' takes while it runs: a line TAG=VALUE on stdin, inputs too, for each of
// which it answers with a line.
#pragma once

#include "host/project/named_tag_reader.h"
#include "kmr/simulation/plant.h"

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>

#include <functional>

namespace kmr {

// TAG and VALUE of "X0=1". Throws Error (Usage) when there is no '='.
struct TagAndText {
    QString tag;
    QString text;
};
TagAndText splitAssignment(const QString &text);

// Sets what the line says. Returns "ok", or "error: " and why nothing is changed.
QString obey(const QString &line, Plant &plant, const NamedTagReader &reader);

// Reads lines from a descriptor as they come, until its end. `answer` makes the answer to each.
class ControlInput {
public:
    using Answer = std::function<QString(const QString &line)>;

    ControlInput(int descriptor, Answer answer);

private:
    void read();

    const int m_descriptor;
    const Answer m_answer;
    QByteArray m_received; // of a line that has not ended yet
    QSocketNotifier m_notifier;
};

} // namespace kmr
