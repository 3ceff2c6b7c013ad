// The lines of 'kmr sim --control': TAG=VALUE on stdin, also for inputs. Each is answered with a
// line.
#pragma once

#include "host/project/named_tag_reader.h"
#include "kmr/simulation/plant.h"

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>

#include <functional>

namespace kmr {

// TAG and VALUE of "X0=1". Throws Error (Usage) if there is no '='.
struct TagAndText {
    QString tag;
    QString text;
};
TagAndText splitAssignment(const QString &text);

// Sets the tag of the line. Returns "ok", or "error: " and why nothing was changed.
QString obey(const QString &line, Plant &plant, const NamedTagReader &reader);

// Reads lines from a descriptor as they come, until its end, and prints the answer of `answer` to
// each.
class ControlInput {
public:
    using Answer = std::function<QString(const QString &line)>;

    ControlInput(int descriptor, Answer answer);

private:
    void read();

    const int m_descriptor;
    const Answer m_answer;
    QByteArray m_received; // the incomplete line
    QSocketNotifier m_notifier;
};

} // namespace kmr
