#include "simulator/pseudo_terminal.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

namespace simulator {

namespace {

// Opens the programs' end of `master` in raw mode and returns it, or -1 with errno set.
int openSlave(int master, QString &devicePath)
{
    std::array<char, 128> path{};
    if (grantpt(master) != 0 || unlockpt(master) != 0 ||
        ptsname_r(master, path.data(), path.size()) != 0)
        return -1;
    devicePath = QFile::decodeName(path.data());
    const int slave = ::open(path.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings{};
    if (slave < 0 || tcgetattr(slave, &settings) != 0)
        return slave;
    cfmakeraw(&settings);
    tcsetattr(slave, TCSANOW, &settings);
    return slave;
}

// True if `path` is a link that an earlier run may have left: to a terminal that is gone, or to
// `devicePath`, which is this object's terminal now.
bool isLeftBehind(const QFileInfo &path, const QString &devicePath)
{
    const QString target = path.symLinkTarget();
    return target == devicePath || (target.startsWith("/dev/pts/") && !path.exists());
}

void send(int master, const QByteArray &bytes)
{
    // Characters that nobody reads are lost when the terminal's buffer is full, as on a real line.
    const ssize_t written =
        ::write(master, bytes.constData(), static_cast<std::size_t>(bytes.size()));
    Q_UNUSED(written)
}

} // namespace

PseudoTerminal::PseudoTerminal(Responder respond, Pacing pacing)
    : m_respond(std::move(respond)), m_pacing(pacing)
{
    m_reopening.setSingleShot(true);
    QObject::connect(&m_reopening, &QTimer::timeout, &m_reopening, [this] { reopen(); });
}

PseudoTerminal::~PseudoTerminal()
{
    m_notifier.reset(); // at once: there may be no event loop any more
    close();
}

void PseudoTerminal::close()
{
    m_waiting.reset();
    if (m_notifier) {
        m_notifier->setEnabled(false);
        m_notifier.release()->deleteLater(); // it may be the one that called
    }
    // Another program may have created its own link there meanwhile.
    if (!m_linkPath.isEmpty() && QFileInfo(m_linkPath).symLinkTarget() == m_devicePath)
        QFile::remove(m_linkPath);
    m_linkPath.clear();
    if (m_slave >= 0)
        ::close(std::exchange(m_slave, -1));
    if (m_master >= 0)
        ::close(std::exchange(m_master, -1));
}

QString PseudoTerminal::open(const QString &linkPath)
{
    QString error = makeTerminal();
    if (error.isEmpty())
        error = makeLink(QFileInfo(linkPath).absoluteFilePath());
    return error;
}

QString PseudoTerminal::makeTerminal()
{
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_master >= 0)
        m_slave = openSlave(m_master, m_devicePath);
    if (m_slave < 0)
        return QString(
                   "cannot create a pseudo-terminal: %1; check that /dev/pts is mounted and has "
                   "terminals left")
            .arg(QString::fromStdString(std::generic_category().message(errno)));
    m_waiting = std::make_unique<QObject>();
    m_notifier = std::make_unique<QSocketNotifier>(m_master, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { receive(); });
    return {};
}

QString PseudoTerminal::makeLink(const QString &linkPath)
{
    const QFileInfo present(linkPath);
    if (isLeftBehind(present, m_devicePath)) {
        QFile::remove(linkPath);
    } else if (present.exists() || present.isSymLink()) {
        return QString("cannot make %1 a link to the pseudo-terminal: it exists already; remove it "
                       "or give another path")
            .arg(linkPath);
    }
    QFile device(m_devicePath);
    if (!device.link(linkPath)) {
        return QString("cannot make %1 a link to the pseudo-terminal: %2; give a path in a "
                       "directory that you may write to")
            .arg(linkPath, device.errorString());
    }
    m_linkPath = linkPath;
    return {};
}

void PseudoTerminal::receive()
{
    std::array<char, 4096> buffer{};
    const ssize_t size = ::read(m_master, buffer.data(), buffer.size());
    if (size <= 0)
        return; // nothing to read
    const QByteArray bytes(buffer.data(), static_cast<int>(size));
    for (const QByteArray &line : m_collector.take(bytes)) {
        Plan plan = m_respond(line);
        if (plan.closedFor) {
            m_pathToReopen = m_linkPath;
            close();
            m_collector.clear();
            m_reopening.start(*plan.closedFor);
            return;
        }
        m_pacing.slowDown(plan, line.size());
        sendPieces(plan, *m_waiting, [this](const QByteArray &bytes) { send(m_master, bytes); });
    }
}

// Retries until it succeeds: another program may use the path for a while.
void PseudoTerminal::reopen()
{
    if (!open(m_pathToReopen).isEmpty()) {
        close();
        m_reopening.start(std::chrono::milliseconds(100));
    }
}

} // namespace simulator
