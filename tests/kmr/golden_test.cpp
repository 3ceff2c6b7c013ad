// The output of commands with a controller of fixed memory, word for word: plain lines, a table
// and typed records. The texts are in tests/kmr/golden. If one changes on purpose, write them
// again and check the difference:
//
//     KMR_WRITE_GOLDEN=1 ctest -R Golden && git diff tests/kmr/golden
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/tcp_server.h"
#include "tests/kmr/kmr_process.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <vector>

namespace {

// An echo, a bit that is written, a refusal, a wrong LRC, another station and noise.
const char *const CAPTURE =
    R"({"kmr_capture":1,"begin":"2024-05-01T12:00:00.000+02:00","link":"tcp://192.168.0.10:8888"}
{"us":1250,"sent":":01031064000286\r\n"}
{"us":9870,"received":":01031064000286\r\n:01030400FA0001FD\r\n"}
{"us":12000,"sent":":01050805FF00EE\r\n"}
{"us":19500,"received":":01050805FF00EE\r\n"}
{"us":22000,"sent":":010310000001EB\r\n"}
{"us":29500,"received":":0183027A\r\n"}
{"us":32000,"sent":":010310000001EB\r\n"}
{"us":39500,"received":":0103020007F4\r\n:0203020007F2\r\n"}
{"us":42000,"sent":":010310000001EB\r\n"}
{"us":49500,"received":"\u00ff?\u0080"}
)";

// The text without what differs from run to run: times (except those of CAPTURE), round trips, the
// port and paths. Texts that determine the width of columns keep their length.
QString masked(QString text, const QString &link, const QString &directory)
{
    static const QRegularExpression TIME(
        "(?!2024-05-01)\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z");
    static const QRegularExpression ROUND_TRIP(
        "(good,|good {5}|round_trip_ms\":|answered in |p99/max )[\\d./]+");
    static const QRegularExpression ATTRIBUTE("( time=\"|timestamp=\")[^\"]*");
    return text.replace(ATTRIBUTE, "\\1#")
        .replace(TIME, "0000-00-00T00:00:00.000Z")
        .replace(ROUND_TRIP, "\\1#")
        .replace(link, "tcp://127.0.0.1:50000")
        .replace(directory + '/', "")
        .replace(KMR_EXECUTABLE, "kmr");
}

// Fails if the text is not the recorded one, or records it.
void compare(const QString &name, const QString &text)
{
    const QString path = QString(GOLDEN_DIRECTORY "/%1.txt").arg(name);
    if (qEnvironmentVariableIsSet("KMR_WRITE_GOLDEN"))
        saveFile(path, text.toUtf8());
    EXPECT_EQ(text.toStdString(), loadFile(path).toStdString())
        << "If this change is wanted: KMR_WRITE_GOLDEN=1 ctest -R Golden, then look at git diff.";
}

class Golden : public testing::Test {
protected:
    Golden()
    {
        qputenv("TZ", "UTC"); // times of one length
        EXPECT_EQ(m_server.listen("127.0.0.1", 0), "");
        set("D", 100, 250);
        set("D", 101, 65535);
        set("CV2", 200, 70000);
        set("X", 17, 1);
        saveFile(m_directory.filePath("field.jsonl"), CAPTURE);
        saveFile(m_directory.filePath("mixer.csv"), "tag,value\nD100,250\nD300x3,1 2 3\n");
    }

    void set(const QString &area, int number, std::uint32_t value)
    {
        EXPECT_TRUE(simulator::setElement(m_controller.memory(), area, number, value));
    }

    // What a user sees: the command, its output, lines of stderr after '!', the exit code.
    QString transcript(const QStringList &arguments)
    {
        const QString link = QString("tcp://127.0.0.1:%1").arg(m_server.port());
        QStringList typed = arguments;
        for (QString &argument : typed) {
            if (QFile::exists(m_directory.filePath(argument)))
                argument = m_directory.filePath(argument);
        }
        const Finished kmr = run(typed + QStringList{"--link", link});
        QString text = "$ kmr " + arguments.join(' ') + '\n' + kmr.out;
        for (const QString &line : kmr.err.split('\n')) {
            if (!line.isEmpty())
                text += "! " + line + '\n';
        }
        return masked(text, link, m_directory.path()) + QString("[exit %1]\n\n").arg(kmr.exitCode);
    }

    QString inEachFormat(const QStringList &arguments)
    {
        QString text;
        for (const char *format : {"plain", "table", "json"})
            text += transcript(arguments + QStringList{"--format", format});
        return text;
    }

    void compareFormats(const QStringList &arguments)
    {
        compare(arguments.first(), inEachFormat(arguments));
    }

    simulator::Controller m_controller{"01"};
    simulator::TcpServer m_server{simulator::respondAs(m_controller)};
    QTemporaryDir m_directory;
};

} // namespace

TEST_F(Golden, Areas)
{
    compareFormats({"areas"});
}

TEST_F(Golden, Check)
{
    compareFormats({"check", "D100", "X17", "TV5.3x4", "D11999x2", "TV5.16", "Q7", "CV21",
                    "2#M0..17", "0#D1", "D100..107", "D100/float32", "D0..12000", "X0..18",
                    "D107..100"});
}

TEST_F(Golden, Series)
{
    compareFormats({"series", "X", "6", "4", "1"});
}

TEST_F(Golden, Plan)
{
    compareFormats({"plan", "--raw", "D100x2", "D103", "M0x40", "D4095x2", "--gap", "100"});
}

TEST_F(Golden, Decode)
{
    compareFormats({"decode", ":01031064000286", ":01030400FA0001FD", ":01050800FF00F3",
                    ":0183027A", ":0103020007F4", ":0103"});
}

TEST_F(Golden, Trace)
{
    compareFormats({"trace", "field.jsonl"});
}

TEST_F(Golden, Ping)
{
    compareFormats({"ping", "2", "--interval", "0"});
}

TEST_F(Golden, Scan)
{
    compareFormats({"scan", "--stations", "1..2", "--timeout", "500"});
}

TEST_F(Golden, Doctor)
{
    compareFormats({"doctor"});
}

TEST_F(Golden, Read)
{
    compareFormats({"read", "D100", "D100x2/hex", "CV2200", "X16x2"});
}

TEST_F(Golden, Write)
{
    compareFormats({"write", "--verify", "D200..201=7,8", "CV2201=70001"});
}

TEST_F(Golden, Watch)
{
    compareFormats({"watch", "D100", "CV2200", "X16x2", "--count", "3"});
}

TEST_F(Golden, Recipe)
{
    QString text = transcript({"recipe", "download", "mixer.csv", "--verify"});
    set("D", 301, 7);
    text += inEachFormat({"recipe", "compare", "mixer.csv"});
    text += transcript({"recipe", "upload", "mixer.csv"});
    text += "$ cat mixer.csv\n" + loadFile(m_directory.filePath("mixer.csv"));
    compare("recipe", text);
}

TEST_F(Golden, Run)
{
    saveFile(m_directory.filePath("mixer.test"), "# D100 is 250\r\n"
                                                 "write D200 = 7\n"
                                                 "expect D200=7   # as written\n"
                                                 "repeat 2\n"
                                                 "  expect X17=1\n"
                                                 "  repeat 2 times\n"
                                                 "    pause 1ms\n"
                                                 "  end\n"
                                                 "end\n"
                                                 "expect D100/int16 -1..249.5\n"
                                                 "wait until CV2200>=70000 within 1min\n"
                                                 "wait until D100x2/hex!=0xFA,0xFFFF within 1ms\n"
                                                 "expect D101>250\n"
                                                 "expect D101<65535\n"
                                                 "expect D101 <= 65535\n");
    saveFile(m_directory.filePath("bad.test"), "wirte D1=1\n"
                                               "write D1\n"
                                               "expect D99999=1\n"
                                               "expect D100\n"
                                               "wait until X0=1\n"
                                               "expect D100 30..20\n"
                                               "expect D100<x\n"
                                               "pause 5 hours\n"
                                               "repeat 0\n"
                                               "  write X0=1\n"
                                               "end\n"
                                               "end\n"
                                               "repeat 2\n");
    saveFile(m_directory.filePath("report.xml"), "");
    QString text = transcript({"run", "bad.test"});
    text += inEachFormat({"run", "mixer.test", "--keep-going"});
    text += transcript({"run", "mixer.test", "--junit", "report.xml"});
    text += "$ cat report.xml\n" +
            masked(loadFile(m_directory.filePath("report.xml")), "no link", m_directory.path());
    compare("run", text);
}
