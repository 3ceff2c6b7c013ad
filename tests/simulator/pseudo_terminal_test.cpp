// The controller over pseudo-terminals, opened as programs open a serial port.
#include "simulator/pseudo_terminal.h"

#include "event_loop.h"
#include "simulator/controller.h"
#include "simulator/faults.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

using simulator::PseudoTerminal;

// A program that has the terminal open.
class Client {
public:
    explicit Client(const QString &path)
        : m_file(::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK)),
          m_notifier(m_file, QSocketNotifier::Read)
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { read(); });
    }

    ~Client()
    {
        m_notifier.setEnabled(false);
        ::close(m_file);
    }

    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;

    int file() const
    {
        return m_file;
    }

    void write(const QByteArray &bytes) const
    {
        EXPECT_EQ(::write(m_file, bytes.constData(), static_cast<std::size_t>(bytes.size())),
                  bytes.size());
    }

    // Everything received when `count` lines have come.
    std::string receive(int count = 1)
    {
        EXPECT_TRUE(waitUntil([&] { return m_received.count('\n') >= count; }));
        std::string received = m_received.toStdString();
        m_received.clear();
        return received;
    }

private:
    void read()
    {
        std::array<char, 4096> buffer{};
        const ssize_t size = ::read(m_file, buffer.data(), buffer.size());
        if (size > 0)
            m_received.append(buffer.data(), static_cast<int>(size));
    }

    int m_file;
    QSocketNotifier m_notifier;
    QByteArray m_received;
};

class SerialLink : public testing::Test {
protected:
    QString pathOf(const char *name) const
    {
        return directory.filePath(name);
    }

    QTemporaryDir directory;
    simulator::Controller controller{"01"};
    std::unique_ptr<PseudoTerminal> terminal =
        std::make_unique<PseudoTerminal>(simulator::respondAs(controller));
    const QString link = pathOf("plc");
};

TEST_F(SerialLink, AnswersRequestsInPiecesAndTwoAtOnceAndNothingElse)
{
    controller.memory().setValue(0x1000, 0x1234);
    ASSERT_EQ(terminal->open(link), QString());
    Client client(link);
    client.write("noise:020310000001EA\r\n:010310000001FF\r\n:0103:01031000");
    QCoreApplication::processEvents();
    client.write("0001EB\r\n:01050500FF00F6\r\n");
    EXPECT_EQ(client.receive(2), ":0103021234B4\r\n:01050500FF00F6\r\n");
}

TEST_F(SerialLink, PassesLongAnswersWhole)
{
    ASSERT_EQ(terminal->open(link), QString());
    Client client(link);
    client.write(":01030000007D7F\r\n");
    EXPECT_EQ(client.receive(), ":0103FA" + std::string(500, '0') + "02\r\n");
}

TEST_F(SerialLink, IsRawFromTheStart)
{
    ASSERT_EQ(terminal->open(link), QString());
    const Client client(link);
    termios settings{};
    ASSERT_EQ(tcgetattr(client.file(), &settings), 0);
    EXPECT_EQ(settings.c_lflag & (ECHO | ICANON | ISIG), 0U);
    EXPECT_EQ(settings.c_iflag & (ICRNL | INLCR | IXON), 0U);
    EXPECT_EQ(settings.c_oflag & OPOST, 0U);
}

TEST_F(SerialLink, IsOpenedAgainAfterAProgramClosedIt)
{
    ASSERT_EQ(terminal->open(link), QString());
    {
        Client first(link);
        first.write(":01050500FF00F6\r\n");
        EXPECT_EQ(first.receive(), ":01050500FF00F6\r\n");
    }
    Client second(link);
    second.write(":010205000010E8\r\n");
    EXPECT_EQ(second.receive(), ":0102020100FA\r\n");
}

TEST_F(SerialLink, LosesAnswersThatNobodyReadsAndGoesOn)
{
    ASSERT_EQ(terminal->open(link), QString());
    int answered = 0;
    controller.setObserver([&](const simulator::Exchange &) { ++answered; });
    const int requests = 200; // their answers are 100 kB, more than a terminal holds
    const Client client(link);
    for (int i = 1; i <= requests; ++i) {
        client.write(":01030000007D7F\r\n");
        ASSERT_TRUE(waitUntil([&] { return answered == i; }));
    }
}

TEST_F(SerialLink, VanishesAndComesBackAtTheSamePathWithoutTheHalfLineFromBefore)
{
    simulator::Faults faults({{simulator::FaultKind::Close, 50, 2}}); // every second request
    PseudoTerminal faulty(simulator::respondAs(controller, &faults));
    controller.memory().setValue(0x1000, 0x1234);
    ASSERT_EQ(faulty.open(link), QString());
    {
        const Client first(link);
        first.write(":010310000001EB\r\n:010310000001EB\r\n");
        first.write(":01031000");
        ASSERT_TRUE(waitUntil([&] { return !QFileInfo(link).isSymLink(); }));
    }
    ASSERT_TRUE(waitUntil([&] { return QFileInfo(link).exists(); }));
    Client second(link);
    second.write("0001EB\r\n:010310010001EA\r\n");
    EXPECT_EQ(second.receive(), ":0103020000FA\r\n");
}

TEST_F(SerialLink, ComesBackWhenItsPathIsFreeAgainHoweverLateThatIs)
{
    QFile squatter(link);
    PseudoTerminal closing([&](const QByteArray &) {
        QTimer::singleShot(0, &squatter, [&] { squatter.open(QIODevice::WriteOnly); });
        return simulator::Plan{{}, std::chrono::milliseconds(1)};
    });
    ASSERT_EQ(closing.open(link), QString());
    const Client client(link);
    client.write(":010310000001EB\r\n");
    ASSERT_TRUE(waitUntil([&] { return squatter.isOpen(); }));
    QTimer::singleShot(350, &squatter, [&] { squatter.remove(); }); // after several attempts
    EXPECT_TRUE(waitUntil([&] { return QFileInfo(link).isSymLink(); }));
    EXPECT_FALSE(squatter.isOpen());
}

TEST_F(SerialLink, IsLinkedToItsDeviceUntilTheEnd)
{
    EXPECT_EQ(terminal->devicePath(), QString());
    ASSERT_EQ(terminal->open(link), QString());
    EXPECT_TRUE(terminal->devicePath().startsWith("/dev/pts/"));
    EXPECT_EQ(QFileInfo(link).symLinkTarget(), terminal->devicePath());
    terminal.reset();
    EXPECT_FALSE(QFileInfo(link).isSymLink());
}

TEST_F(SerialLink, LeavesALinkThatSomebodyElsePutThere)
{
    ASSERT_EQ(terminal->open(link), QString());
    QFile::remove(link);
    QFile::link("/dev/null", link);
    terminal.reset();
    EXPECT_EQ(QFileInfo(link).symLinkTarget(), QString("/dev/null"));
}

TEST_F(SerialLink, ReplacesALinkToATerminalThatIsGone)
{
    QFile::link("/dev/pts/999999", link);
    EXPECT_EQ(terminal->open(link), QString());
    EXPECT_EQ(QFileInfo(link).symLinkTarget(), terminal->devicePath());
}

// Leaves a link to a terminal that is gone and opens a new terminal there. Returns true when the
// kernel gave the new one the old number, and expects the link to be replaced then.
bool reopenAtOldNumber(simulator::Controller &controller, const QString &link)
{
    QString oldDevice;
    {
        PseudoTerminal old(simulator::respondAs(controller));
        EXPECT_EQ(old.open(link), QString());
        oldDevice = old.devicePath();
    }
    QFile::link(oldDevice, link);
    PseudoTerminal terminal(simulator::respondAs(controller));
    const QString error = terminal.open(link);
    QFile::remove(link);
    if (terminal.devicePath() != oldDevice)
        return false;
    EXPECT_EQ(error, QString());
    return true;
}

TEST_F(SerialLink, ReplacesALinkToTheTerminalThatIsItsOwnNow)
{
    // The kernel gives the lowest free number: the old one, unless another program was faster.
    for (int attempt = 0; attempt < 1000; ++attempt) {
        if (reopenAtOldNumber(controller, link))
            return;
    }
    FAIL() << "never got the same terminal again";
}

TEST_F(SerialLink, RefusesThePathOfAFile)
{
    QFile file(link);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_EQ(terminal->open(link), "cannot make " + link +
                                        " a link to the pseudo-terminal: it exists already; "
                                        "remove it or give another path");
    terminal.reset();
    EXPECT_TRUE(QFileInfo(link).isFile());
}

TEST_F(SerialLink, RefusesThePathOfARunningTerminal)
{
    ASSERT_EQ(terminal->open(link), QString());
    PseudoTerminal second(simulator::respondAs(controller));
    EXPECT_TRUE(second.open(link).contains("it exists already"));
    EXPECT_EQ(QFileInfo(link).symLinkTarget(), terminal->devicePath());
}

TEST_F(SerialLink, RefusesADanglingLinkOfAnotherKind)
{
    QFile::link("/nowhere/at/all", link);
    EXPECT_TRUE(terminal->open(link).contains("it exists already"));
    terminal.reset();
    EXPECT_EQ(QFileInfo(link).symLinkTarget(), QString("/nowhere/at/all"));
}

TEST_F(SerialLink, RefusesAPathInNoDirectory)
{
    const QString path = pathOf("missing/plc");
    EXPECT_EQ(terminal->open(path), "cannot make " + path +
                                        " a link to the pseudo-terminal: No such file or "
                                        "directory; give a path in a directory that you may write "
                                        "to");
}

} // namespace
