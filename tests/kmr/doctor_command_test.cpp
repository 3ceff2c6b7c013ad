// kmr doctor against simulated controllers, good and bad ones.
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/pseudo_terminal.h"
#include "tests/kmr/kmr_process.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

class DoctorOnBothLinks : public testing::TestWithParam<const char *> {
protected:
    Finished examine(const QStringList &simulation, const QStringList &arguments = {})
    {
        const QStringList place = QString(GetParam()) == "tcp"
                                      ? QStringList{"--listen", "tcp://127.0.0.1:0"}
                                      : QStringList{"--pty", m_directory.filePath("line")};
        const Simulator simulator(place + simulation);
        m_link = simulator.link();
        return run(QStringList{"doctor", "--link", m_link} + arguments);
    }

    QTemporaryDir m_directory;
    QString m_link;
};

Finished examine(const FakeController &controller)
{
    return run({"doctor", "--timeout", "50", "--link", controller.link()});
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Links, DoctorOnBothLinks, testing::Values("tcp", "pty"),
                         [](const auto &info) { return std::string(info.param); });

TEST_P(DoctorOnBothLinks, GoodLineEndsWithZero)
{
    const Finished doctor = examine({});
    EXPECT_EQ(doctor.exitCode, 0);
    EXPECT_EQ(doctor.out, m_link + ": The station answers, the line is good.\n");
    EXPECT_EQ(doctor.err, "");
}

TEST_P(DoctorOnBothLinks, SilenceEndsWithFourAndSaysWhatToCheck)
{
    const Finished doctor = examine({"--station", "2"}, {"--timeout", "30"});
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_TRUE(doctor.out.startsWith(m_link + ": Nothing answers: no character came back.\n"
                                               "Check that the controller is on"))
        << doctor.out.toStdString();
}

TEST_P(DoctorOnBothLinks, RefusalEndsWithFive)
{
    const Finished doctor = examine({"--fault", "exception=2"});
    EXPECT_EQ(doctor.exitCode, 5);
    EXPECT_TRUE(doctor.out.contains("is refused: illegal data address (exception 02).\n"
                                    "Name an element that this controller has with --tag.\n"))
        << doctor.out.toStdString();
}

TEST_P(DoctorOnBothLinks, EchoIsFoundWhateverTheSetting)
{
    const Finished automatic = examine({"--fault", "echo"});
    EXPECT_EQ(automatic.exitCode, 0);
    EXPECT_TRUE(automatic.out.contains("It hands back what is sent (echo)"));
    const Finished off = examine({"--fault", "echo"}, {"--echo", "off"});
    EXPECT_EQ(off.exitCode, 4);
    EXPECT_TRUE(off.out.endsWith("\nSet --echo auto or --echo on.\n")) << off.out.toStdString();
}

TEST_P(DoctorOnBothLinks, AnotherStationsAnswerIsTold)
{
    const Finished doctor = examine({"--fault", "station"}, {"--timeout", "100"});
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_TRUE(matches(doctor.out, ": Station \\d+ answers, though station 1 was asked\\.\n"))
        << doctor.out.toStdString();
}

TEST_P(DoctorOnBothLinks, DamagedAnswersEndWithFour)
{
    const Finished doctor = examine({"--fault", "flip"}, {"--timeout", "100"});
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_TRUE(doctor.out.contains(": Answers come, but damaged, such as "))
        << doctor.out.toStdString();
}

TEST_P(DoctorOnBothLinks, SomeAnswersEndWithOne)
{
    const Finished doctor = examine({"--fault", "silence,every=2"}, {"--timeout", "100"});
    EXPECT_EQ(doctor.exitCode, 1);
    EXPECT_TRUE(doctor.out.contains(": The station answers only 2 of 3 requests; the first "
                                    "failure: no answer.\n"))
        << doctor.out.toStdString();
}

TEST(Doctor, GarbageEndsWithFour)
{
    const Finished doctor =
        examine(FakeController([](const QByteArray &) { return QByteArray("\xE0\x1C\xFF\x83"); }));
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_TRUE(doctor.out.contains("Speed or parity is wrong.\n")) << doctor.out.toStdString();
}

TEST(Doctor, AnswerThatTakesMorePatienceIsCalledLate)
{
    int requests = 0;
    const FakeController controller([&requests](const QByteArray &) {
        return QByteArray(++requests > 3 ? ":0103020007F3\r\n" : "");
    });
    const Finished doctor = examine(controller);
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_EQ(doctor.out,
              controller.link() +
                  ": The station answers, but late: not within 50 ms, but within 250 ms.\nSet "
                  "--timeout 250, or find what slows down the controller or its gateway.\n");
    EXPECT_EQ(doctor.err, "no answer within 50 ms: waiting 250 ms for one\n");
}

TEST(Doctor, LostLineEndsWithFour)
{
    const Finished doctor =
        examine(FakeController([](const QByteArray &) { return QByteArray(); }));
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_TRUE(doctor.out.contains(": The other side closed the link"))
        << doctor.out.toStdString();
}

TEST(Doctor, LinkThatDoesNotOpenIsARecordAndEndsWithThree)
{
    const Finished doctor =
        run({"doctor", "--link", "serial:///dev/no-such-port", "--format", "jsonl"});
    EXPECT_EQ(doctor.exitCode, 3);
    EXPECT_TRUE(matches(doctor.out, "^\\{\"schema\":1,\"command\":\"doctor\",\"time\":\"[^\"]+\","
                                    "\"link\":\"serial:///dev/no-such-port\",\"finding\":\"not "
                                    "opened\",\"text\":\"cannot open /dev/no-such-port: [^\"]+\","
                                    "\"advice\":null\\}\n$"))
        << doctor.out.toStdString();
}

TEST(Doctor, WrongUsageEndsWithTwoAndPrintsNoRecord)
{
    for (const QStringList &arguments :
         {QStringList{"--format", "json"},
          QStringList{"--format", "json", "--link", "tcp://127.0.0.1:1", "--tag", "Q1"},
          QStringList{"--format", "json", "--link", "tcp://127.0.0.1:1", "--try"},
          QStringList{"--link", "serial:///dev/ttyS0", "--try", "--capture", "/dev/null"}}) {
        const Finished doctor = run(QStringList{"doctor"} + arguments);
        EXPECT_EQ(doctor.exitCode, 2) << doctor.err.toStdString();
        EXPECT_EQ(doctor.out, "");
    }
}

// The controller hears only what is sent at 19200 bits a second.
TEST(Doctor, TryNamesTheFramingThatWorks)
{
    simulator::Controller controller("01");
    int terminal = -1;
    simulator::PseudoTerminal line([&](const QByteArray &request) {
        termios settings{};
        tcgetattr(terminal, &settings);
        return cfgetospeed(&settings) == B19200 ? simulator::respondAs(controller)(request)
                                                : simulator::Plan();
    });
    const QTemporaryDir directory;
    const QString path = directory.filePath("line");
    ASSERT_EQ(line.open(path), "");
    terminal = open(path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY);

    const Finished doctor = run({"doctor", "--try", "--timeout", "300", "--link",
                                 "serial://" + path + "?baud=115200&frame=8O1"});
    close(terminal);
    EXPECT_EQ(doctor.exitCode, 0);
    EXPECT_EQ(doctor.out, "serial://" + path +
                              "?baud=19200&frame=7E1: The station answers, the line is good.\n");
    EXPECT_EQ(doctor.err, "serial://" + path + "?baud=9600&frame=7E1: silent\n");
}

TEST(Doctor, TryThatFindsNothingHasARecordForEachFraming)
{
    const QTemporaryDir directory;
    const Simulator simulator({"--pty", directory.filePath("line"), "--station", "2"});
    const Finished doctor =
        run({"doctor", "--try", "--timeout", "1", "--format", "csv", "--link", simulator.link()});
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_TRUE(doctor.out.startsWith("time,link,finding,text,advice\n"));
    EXPECT_EQ(doctor.out.count(",silent,,\n"), 30) << doctor.out.toStdString();
    EXPECT_TRUE(doctor.err.contains("none of 30 usual framings is answered"));
}
