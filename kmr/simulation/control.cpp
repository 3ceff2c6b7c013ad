#include "kmr/simulation/control.h"

#include "host/tags/values.h"
#include "kmr/output.h"

#include <cerrno>
#include <unistd.h>

namespace kmr {

namespace {

constexpr int LONGEST_LINE = 65536; // limits the memory

} // namespace

TagAndText splitAssignment(const QString &text)
{
    const auto equals = text.indexOf('=');
    if (equals < 1) {
        throw Error(ErrorKind::Usage,
                    QString("\"%1\" is not an assignment: expected TAG=VALUE, for example X0=1 or "
                            "2#D100=5")
                        .arg(text));
    }
    return {text.left(equals).trimmed(), text.mid(equals + 1).trimmed()};
}

QString obey(const QString &line, Plant &plant, const NamedTagReader &reader)
{
    try {
        const TagAndText typed = splitAssignment(line.trimmed());
        const Tag tag = reader.read(typed.tag);
        plant.set(plant.settingsOf(tag, parseValues(tag, typed.text)));
        return "ok";
    } catch (const Error &error) {
        return "error: " + QString(error.text()).replace('\n', ' ');
    }
}

ControlInput::ControlInput(int descriptor, Answer answer)
    : m_descriptor(descriptor), m_answer(std::move(answer)),
      m_notifier(descriptor, QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] { read(); });
}

void ControlInput::read()
{
    char characters[4096];
    const ssize_t count = ::read(m_descriptor, characters, sizeof characters);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (count > 0)
        m_received.append(characters, static_cast<int>(count));
    for (auto end = m_received.indexOf('\n'); end >= 0; end = m_received.indexOf('\n')) {
        print(m_answer(QString::fromUtf8(m_received.left(end))));
        m_received.remove(0, end + 1);
    }
    if (m_received.size() > LONGEST_LINE || (count <= 0 && !m_received.isEmpty())) {
        print(m_answer(QString::fromUtf8(m_received))); // the last line may have no end
        m_received.clear();
    }
    if (count <= 0)
        m_notifier.setEnabled(false);
}

} // namespace kmr
