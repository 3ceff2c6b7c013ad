// The command kmr as its users have it: a program with arguments, output and an exit code.
#include "tests/kmr/kmr_process.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>

namespace {

class CommandOnBothLinks : public testing::TestWithParam<const char *> {
protected:
    CommandOnBothLinks() : m_simulator(arguments()) {}

    QStringList arguments() const
    {
        if (QString(GetParam()) == "tcp")
            return {"--listen", "tcp://127.0.0.1:0"};
        return {"--pty", m_directory.filePath("line")};
    }

    Finished kmr(const QStringList &arguments)
    {
        return run(arguments + QStringList{"--link", m_simulator.link()});
    }

    QString path(const QString &name) const
    {
        return m_directory.filePath(name);
    }

    void save(const QString &name, const QByteArray &text)
    {
        saveFile(path(name), text);
    }

    QByteArray load(const QString &name)
    {
        return loadFile(path(name));
    }

    QTemporaryDir m_directory;
    Simulator m_simulator;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Links, CommandOnBothLinks, testing::Values("tcp", "pty"),
                         [](const auto &info) { return std::string(info.param); });

TEST_P(CommandOnBothLinks, WrittenValuesAreConfirmedAndReadBack)
{
    const Finished write = kmr({"write", "D100=250", "M0x3=1,0,1", "CV2200=70000", "Y17=1"});
    EXPECT_EQ(write.exitCode, 0) << write.err.toStdString();
    EXPECT_EQ(
        write.out,
        "D100 250 confirmed\nM0x3 1 0 1 confirmed\nCV2200 70000 confirmed\nY17 1 confirmed\n");
    const Finished read = kmr({"read", "D100", "M0x3", "CV2200", "Y16x3"});
    EXPECT_EQ(read.exitCode, 0) << read.err.toStdString();
    EXPECT_EQ(read.out, "D100 250\nM0x3 1 0 1\nCV2200 70000\nY16x3 0 1 0\n");
    EXPECT_EQ(read.err, "");
}

TEST_P(CommandOnBothLinks, VerifyReadsBack)
{
    const Finished write = kmr({"write", "--verify", "D4095x2=1,2", "M1535x2=1 1"});
    EXPECT_EQ(write.exitCode, 0) << write.err.toStdString();
    EXPECT_EQ(write.out, "D4095x2 1 2 verified\nM1535x2 1 1 verified\n");
}

TEST_P(CommandOnBothLinks, VerifyComparesWhatWasWrittenLastToEachElement)
{
    const Finished write = kmr({"write", "--verify", "M0=1", "M0=0", "D100x2=1,2", "D101=5"});
    EXPECT_EQ(write.exitCode, 0) << write.err.toStdString();
    EXPECT_EQ(write.out, "M0 1 confirmed\nM0 0 verified\nD100x2 1 2 confirmed\nD101 5 verified\n");
}

TEST_P(CommandOnBothLinks, TypedValuesAreWrittenAndRead)
{
    const Finished write =
        kmr({"write", "D100/float32=21.5", "D110..111/int16=-1 2", "D200x4/text=Hello"});
    EXPECT_EQ(write.exitCode, 0) << write.err.toStdString();
    const Finished read =
        kmr({"read", "D100x2/hex", "D100/float32", "D110/int16", "D200x4/text", "CV2200/int32"});
    EXPECT_EQ(read.out, "D100x2/hex 0x0000 0x41AC\nD100/float32 21.5\nD110/int16 -1\n"
                        "D200x4/text Hello\nCV2200/int32 0\n");
    EXPECT_EQ(kmr({"read", "D110..111/int32", "--word-order", "high"}).out,
              "D110..111/int32 -65534\n");
}

TEST_P(CommandOnBothLinks, BadValueKeepsEverythingFromBeingWritten)
{
    const Finished write = kmr({"write", "D100=5", "D101/int16=40000"});
    EXPECT_EQ(write.exitCode, 2);
    EXPECT_TRUE(write.err.contains("bad value \"40000\" for D101/int16: expected -32768 to 32767"));
    EXPECT_EQ(kmr({"read", "D100"}).out, "D100 0\n");
}

TEST_P(CommandOnBothLinks, RecordsComeInEveryFormat)
{
    const Finished csv = kmr({"write", "D100=7", "--format", "csv"});
    EXPECT_TRUE(matches(csv.out, "^time,tag,values,unit,outcome,error\n"
                                 "\\d{4}-\\S+,D100,7,,confirmed,\n$"))
        << csv.out.toStdString();
    const Finished lines = kmr({"read", "D100", "--format", "jsonl"});
    EXPECT_TRUE(matches(lines.out, "^\\{\"schema\":1,\"command\":\"read\",\"time\":\"[^\"]+\","
                                   "\"tag\":\"D100\",\"values\":\\[7\\],\"unit\":null,"
                                   "\"outcome\":\"good\",\"error\":null\\}\n$"))
        << lines.out.toStdString();
}

TEST_P(CommandOnBothLinks, ProjectsFileNamesLinkTagsAndNames)
{
    save("names.csv", "boiler.temp,D100/int16,C,0.1,flow\n");
    save("kmr.toml", "link = \"" + m_simulator.link().toUtf8() +
                         "\"\nnames = \"names.csv\"\ntags = [\"boiler.temp\", \"D101\"]\n");
    EXPECT_EQ(run({"write", "boiler.temp=-2.5", "--config", path("kmr.toml")}).exitCode, 0);
    const Finished read = run({"read", "--config", path("kmr.toml")});
    EXPECT_EQ(read.out, "boiler.temp -2.5\nD101 0\n") << read.err.toStdString();
}

TEST_P(CommandOnBothLinks, WatchPrintsChangesAndASummary)
{
    const Finished watch = kmr({"watch", "D100", "CV2200", "--count", "2"});
    EXPECT_EQ(watch.exitCode, 0);
    const char *const lines = "^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\S+ CV2200 0\n"
                              "\\d{4}-\\S+ D100 0\n$";
    EXPECT_TRUE(matches(watch.out, lines)) << watch.out.toStdString();
    EXPECT_TRUE(watch.err.contains("requests sent")) << watch.err.toStdString();
    EXPECT_TRUE(watch.err.contains("round trip min/median/p95/p99/max"));
}

TEST_P(CommandOnBothLinks, WatchPrintsNoMoreLinesThanAskedFor)
{
    EXPECT_EQ(kmr({"watch", "D100", "D101", "D102", "--count", "2"}).out.count('\n'), 2);
}

TEST_P(CommandOnBothLinks, WatchThatLosesItsLineForGoodEndsWithFour)
{
    const Finished watch = run(
        {"watch", "D100", "--for", "2", "--link", m_simulator.link()}, [this](QProcess &process) {
            while (process.bytesAvailable() == 0 && process.waitForReadyRead(10000)) {
            }
            m_simulator.terminate();
        });
    EXPECT_EQ(watch.exitCode, 4);
    EXPECT_TRUE(watch.err.contains("the line was lost")) << watch.err.toStdString();
}

TEST_P(CommandOnBothLinks, WatchEndsAfterItsTime)
{
    const Finished watch = kmr({"watch", "D100", "--for", "0.2"});
    EXPECT_EQ(watch.exitCode, 0);
    EXPECT_EQ(watch.out.count('\n'), 1);
}

TEST_P(CommandOnBothLinks, CtrlCEndsAWatchWithASummary)
{
    const Finished watch =
        run({"watch", "D100", "--link", m_simulator.link()}, [](QProcess &process) {
            while (process.bytesAvailable() == 0 && process.waitForReadyRead(10000)) {
            }
            kill(static_cast<pid_t>(process.processId()), SIGINT);
        });
    EXPECT_EQ(watch.exitCode, 0);
    EXPECT_TRUE(watch.err.contains("requests sent")) << watch.err.toStdString();
}

TEST_P(CommandOnBothLinks, RecipeGoesDownAndComesUp)
{
    save("mixer.csv", "tag,value\nD100,250\nD110x10,1 2 3 4 5 6 7 8 9 10\nCV2210,123456\n");
    const Finished down = kmr({"recipe", "download", path("mixer.csv")});
    EXPECT_EQ(down.exitCode, 0) << down.err.toStdString();
    EXPECT_EQ(kmr({"read", "D119", "CV2210"}).out, "D119 10\nCV2210 123456\n");

    EXPECT_EQ(kmr({"write", "D100=7"}).exitCode, 0);
    const Finished up = kmr({"recipe", "upload", path("mixer.csv")});
    EXPECT_EQ(up.exitCode, 0) << up.err.toStdString();
    EXPECT_EQ(load("mixer.csv"),
              "tag,value\nD100,7\nD110x10,1 2 3 4 5 6 7 8 9 10\nCV2210,123456\n");
    EXPECT_EQ(kmr({"recipe", "upload", path("new.csv"), "D118x2"}).exitCode, 0);
    EXPECT_EQ(load("new.csv"), "tag,value\nD118x2,9 10\n");
}

TEST_P(CommandOnBothLinks, UploadKeepsTheRemarksOfItsFile)
{
    EXPECT_EQ(kmr({"write", "D100=7"}).exitCode, 0);
    save("mixer.csv", "# flour for the night shift\n\ntag,value\nD100,250\n# end\n");
    EXPECT_EQ(kmr({"recipe", "upload", path("mixer.csv")}).exitCode, 0);
    EXPECT_EQ(load("mixer.csv"), "# flour for the night shift\n\ntag,value\nD100,7\n# end\n");

    save("mixer.csv", "D100,250,flour\n");
    EXPECT_EQ(kmr({"recipe", "upload", path("mixer.csv")}).exitCode, 2);
    EXPECT_EQ(load("mixer.csv"), "D100,250,flour\n");
}

TEST_P(CommandOnBothLinks, RecipeIsVerifiedAndCompared)
{
    save("mixer.csv", "D100,250\nD110/float32,21.5\n");
    EXPECT_EQ(kmr({"recipe", "download", path("mixer.csv"), "--verify"}).exitCode, 0);
    EXPECT_EQ(kmr({"recipe", "compare", path("mixer.csv")}).out, "");
    EXPECT_EQ(kmr({"write", "D110/float32=20"}).exitCode, 0);
    const Finished compare = kmr({"recipe", "compare", path("mixer.csv")});
    EXPECT_EQ(compare.exitCode, 6);
    EXPECT_EQ(compare.out, "D110/float32 file 21.5 controller 20\n");
}

TEST_P(CommandOnBothLinks, RecipeWithAnElementTwiceIsMovedByNoCommand)
{
    save("twice.csv", "D100,1\nD99x2,2 3\n");
    for (const char *command : {"download", "compare", "upload"}) {
        const Finished recipe = kmr({"recipe", command, path("twice.csv")});
        EXPECT_EQ(recipe.exitCode, 2) << command;
        EXPECT_EQ(recipe.err,
                  "kmr: " + path("twice.csv") + ":2: D100 stands twice, first in line 1\n");
    }
    EXPECT_EQ(kmr({"recipe", "upload", path("new.csv"), "D0x2", "D1"}).exitCode, 2);
    EXPECT_FALSE(QFileInfo::exists(path("new.csv")));
    EXPECT_EQ(kmr({"read", "D99x2"}).out, "D99x2 0 0\n"); // nothing was written
}

TEST_P(CommandOnBothLinks, SilenceEndsWithFour)
{
    const Finished read = kmr({"read", "D100", "--station", "2", "--timeout", "20"});
    EXPECT_EQ(read.exitCode, 4);
    EXPECT_EQ(read.out, "");
    EXPECT_EQ(read.err, "D100: no answer\n");
    const Finished write = kmr({"write", "2#D100=1", "--timeout", "20"});
    EXPECT_EQ(write.exitCode, 4);
    EXPECT_TRUE(write.err.contains("may have been written all the same"));
}

TEST_P(CommandOnBothLinks, FailedUploadLeavesItsFile)
{
    save("mixer.csv", "D100,250\n");
    const Finished up =
        kmr({"recipe", "upload", path("mixer.csv"), "--station", "2", "--timeout", "20"});
    EXPECT_EQ(up.exitCode, 4);
    EXPECT_TRUE(up.err.contains("is unchanged")) << up.err.toStdString();
    EXPECT_EQ(load("mixer.csv"), "D100,250\n");
}

TEST(Command, UploadRefusesAFileWhoseRemarksItCannotKeep)
{
    const QTemporaryDir directory;
    const QString file = directory.filePath("mill.csv");
    const QByteArray latin1 = "# M\xFChle\nD100,250\n";
    saveFile(file, latin1);
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
    const Finished up = run({"recipe", "upload", file, "--link", simulator.link()});
    EXPECT_EQ(up.exitCode, 2);
    EXPECT_EQ(up.err, "kmr: " + file +
                          " is not in UTF-8, so its remarks would be lost: save it as UTF-8\n");
    EXPECT_EQ(loadFile(file), latin1);
}

TEST(Command, StoppedDownloadNamesNeighbouringElementsTogether)
{
    const QTemporaryDir directory;
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--fault", "exception=4,every=4"});
    saveFile(directory.filePath("mixer.csv"),
             "D0x10,0 1 2 3 4 5 6 7 8 9\nD10,10\nTV11,11\nD12x10,0 1 2 3 4 5 6 7 8 9\nD30,30\n");
    const Finished down = run({"recipe", "download", directory.filePath("mixer.csv"), "--link",
                               simulator.link(), "--retries", "0"});
    EXPECT_EQ(down.exitCode, 5);
    EXPECT_EQ(down.err.section('\n', 1), "written for certain: 1#D0..10\n"
                                         "not written: 1#TV11 1#D12..21 1#D30\n");
}

TEST(Command, AreasAreTheDriversCatalogue)
{
    const Finished areas = run({"areas"});
    EXPECT_EQ(areas.exitCode, 0);
    EXPECT_EQ(areas.out.section('\n', 0, 1), "AREA  ELEMENTS  LOWEST  HIGHEST  DIGITS   ACCESS\n"
                                             "X     bits      0       23417    octal    read");
    EXPECT_TRUE(areas.out.contains("CV2   counters  200     255      decimal  read, write\n"));
    EXPECT_EQ(areas.out.count('\n'), 11);
}

TEST(Command, BadArgumentsEndWithTwo)
{
    EXPECT_EQ(run({}).exitCode, 2);
    EXPECT_EQ(run({"dance"}).exitCode, 2);
    EXPECT_EQ(run({"read"}).exitCode, 2);
    EXPECT_EQ(run({"read", "D1", "--station", "100"}).exitCode, 2);
    EXPECT_EQ(run({"read", "D1", "--echo", "maybe"}).exitCode, 2);
    EXPECT_EQ(run({"areas", "--group-limit", "9"}).exitCode, 2);
    EXPECT_EQ(run({"sim", "--listen", "udp://x"}).exitCode, 2);
}

TEST(Command, NumberThatMustBeAboveZeroIsExplained)
{
    EXPECT_TRUE(run({"watch", "D1", "--count", "0"})
                    .err.contains("kmr: --count: expected a number above 0, at most 1000000000, "
                                  "not \"0\"\n"));
    EXPECT_TRUE(run({"watch", "D1", "--for", "-1"}).err.contains("above 0, at most 1000000000, "));
    EXPECT_TRUE(run({"ping", "0"}).err.contains("COUNT: expected a number above 0"));
    EXPECT_TRUE(run({"plan", "D1", "--baud", "0"}).err.contains("above 0, at most 4000000, not"));
}

TEST(Command, UnknownCommandIsNamed)
{
    EXPECT_EQ(run({"readd", "D1"}).err,
              "kmr: unknown command \"readd\"\nkmr: 'kmr --help' tells more\n");
    EXPECT_EQ(run({"recipe", "foo"}).err,
              "kmr: unknown command \"foo\"\nkmr: 'kmr recipe --help' tells more\n");
    EXPECT_EQ(run({"write", "--foo"}).err,
              "kmr: unknown option --foo\nkmr: 'kmr write --help' tells more\n");
    EXPECT_EQ(run({}).err, "kmr: A subcommand is required\nkmr: 'kmr --help' tells more\n");
}

TEST(Command, EachLineOfAFaultNamesTheProgram)
{
    for (const QStringList &arguments :
         {QStringList{"read", "D99999", "Q7"}, QStringList{"read", "D1", "--station", "100"}}) {
        const Finished read = run(arguments + QStringList{"--link", "tcp://127.0.0.1:1"});
        EXPECT_TRUE(matches(read.err, "^(kmr: .*\n){2}$")) << read.err.toStdString();
    }
}

TEST(Command, MissingLinkIsExplained)
{
    const Finished read = run({"read", "D1"});
    EXPECT_EQ(read.exitCode, 2);
    EXPECT_TRUE(read.err.contains("--link")) << read.err.toStdString();
}

TEST(Command, EveryBadTagIsNamed)
{
    const Finished read = run({"read", "D99999", "D1", "Q7", "--link", "tcp://127.0.0.1:1"});
    EXPECT_EQ(read.exitCode, 2);
    EXPECT_TRUE(read.err.contains("D99999") && read.err.contains("Q7")) << read.err.toStdString();
}

TEST(Command, WhatCannotBeWrittenIsRefusedWithTheReason)
{
    const Finished write =
        run({"write", "TV5.3=1", "X0=1", "D0", "D1=x", "--link", "tcp://127.0.0.1:1"});
    EXPECT_EQ(write.exitCode, 2);
    EXPECT_TRUE(write.err.contains("TV5.3 can't be written: the controller offers no write"));
    EXPECT_TRUE(write.err.contains("X0 can't be written: X are inputs"));
    EXPECT_TRUE(write.err.contains("\"D0\" assigns nothing"));
    EXPECT_TRUE(write.err.contains("bad value \"x\" for D1"));
}

TEST(Command, LinkThatDoesNotOpenEndsWithThree)
{
    EXPECT_EQ(run({"read", "D1", "--link", "tcp://127.0.0.1:1"}).exitCode, 3);
    EXPECT_EQ(run({"read", "D1", "--link", "serial:///dev/no-such-port"}).exitCode, 3);
}

TEST(Command, LibraryThatDoesNotFitEndsWithSeven)
{
    EXPECT_EQ(run({"areas", "--driver", "/no/such/driver.so"}).exitCode, 7);
    const Finished stub = run({"areas", "--driver", STUB_LIBRARY});
    EXPECT_EQ(stub.exitCode, 7);
    EXPECT_TRUE(stub.err.contains("it lacks intf_getDriverParameter")) << stub.err.toStdString();
}

TEST(Command, LibraryForAnotherQtThatTheSystemsLoaderFindsEndsWithSeven)
{
    const QFileInfo library(OTHER_QT_LIBRARY);
    qputenv("LD_LIBRARY_PATH", library.path().toLocal8Bit());
    const Finished areas = run({"areas", "--driver", library.fileName()});
    qunsetenv("LD_LIBRARY_PATH");
    EXPECT_EQ(areas.exitCode, 7);
    EXPECT_TRUE(areas.err.contains(library.filePath() + " is built for Qt 4, this kmr for Qt "))
        << areas.err.toStdString();
}

TEST(Command, HelpTeachesWithExamples)
{
    for (const char *command : {"areas", "watch", "read", "write", "sim", "recipe", "tags"}) {
        const Finished help = run({command, "--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_TRUE(matches(help.out, "Examples:\n  kmr .*\n  kmr ")) << command;
    }
    EXPECT_TRUE(run({"recipe", "upload", "--help"}).out.contains("Examples:"));
    EXPECT_TRUE(matches(run({"--help"}).out, "(?s)Exit codes:.*Examples:\n  kmr [^\n]*\n  kmr "));
}

TEST(Command, HelpNamesTheOptionsOfAllCommandsAndHowTagsAreTyped)
{
    EXPECT_TRUE(run({"ping", "--help"}).out.contains("'kmr --help' lists the options"));
    EXPECT_TRUE(run({"recipe", "upload", "--help"}).out.contains("'kmr --help' lists the options"));
    EXPECT_TRUE(run({"plan", "--help"}).out.contains("A TAG is [STATION#]AREA ADDRESS"));
}

TEST(Command, DryRunShowsTheFramesOfWrites)
{
    const Finished write = run({"write", "--dry-run", "D100=250", "M0x2=1,0"});
    EXPECT_EQ(write.exitCode, 0) << write.err.toStdString();
    EXPECT_EQ(write.out, "D100 :0110106400010200FA7E\n"
                         "M0x2 :01050800FF00F3\nM0x2 :010508010000F1\n");
}

TEST(Command, DryRunShowsEachFrameOnceOnALineThatEchoes)
{
    const Finished write = run({"write", "--dry-run", "--echo", "on", "D100=250"});
    EXPECT_EQ(write.exitCode, 0) << write.err.toStdString();
    EXPECT_EQ(write.out, "D100 :0110106400010200FA7E\n");
}

TEST(Command, DryRunHasNoTrafficToTraceOrCapture)
{
    QTemporaryDir directory;
    const QString capture = directory.filePath("dry.jsonl");
    const Finished write = run({"write", "--dry-run", "M5=1", "--trace", "--capture", capture});
    EXPECT_EQ(write.out, "M5 :01050805FF00EE\n");
    EXPECT_EQ(write.err, "kmr: no link is opened, so nothing is traced or captured\n");
    EXPECT_FALSE(QFileInfo::exists(capture));
}

TEST(Command, ConfigShowsWhatIsInForceAndWhereFrom)
{
    QTemporaryDir directory;
    const QString file = directory.filePath("p.toml");
    saveFile(file, "station = 7\nretries = 3\n");
    const Finished config = run({"config", "--config", file, "--station", "9", "--format", "csv"});
    EXPECT_EQ(config.exitCode, 0) << config.err.toStdString();
    EXPECT_TRUE(config.out.contains("station,9,command line\n")) << config.out.toStdString();
    EXPECT_TRUE(config.out.contains("retries,3," + file + ":2\n"));
    EXPECT_TRUE(config.out.contains("timeout,1000,default\n"));
    EXPECT_TRUE(config.out.contains(",environment variable KMR_DRIVER\n"));
}

TEST(Command, EveryFaultOfTheProjectsFileIsNamedInTheOrderOfLines)
{
    QTemporaryDir directory;
    const QString file = directory.filePath("p.toml");
    saveFile(file, "station = 700\nspeed = 9600\nnames = \"nope.csv\"\nlink = \"foo\"\n"
                   "echo = \"maybe\"\n");
    const Finished config = run({"config", "--config", file});
    EXPECT_EQ(config.exitCode, 2);
    EXPECT_TRUE(matches(config.err, "^kmr: \\S+p.toml:1: station: [^\n]*\n"
                                    "kmr: \\S+p.toml:2: unknown key \"speed\"[^\n]*\n"
                                    "kmr: \\S+p.toml:3: cannot read \\S+nope.csv: [^\n]*\n"
                                    "kmr: \\S+p.toml:4: bad link \"foo\": [^\n]*\n[^\n]*\n"
                                    "kmr: \\S+p.toml:5: echo: [^\n]*\n$"))
        << config.err.toStdString();
}

TEST(Command, BadTagOfTheProjectsFileIsNamedWithItsLine)
{
    QTemporaryDir directory;
    const QString file = directory.filePath("p.toml");
    saveFile(file, "station = 7\ntags = [\"D1\", \"Q5\"]\n");
    const Finished read = run({"read", "--config", file, "--link", "tcp://127.0.0.1:1"});
    EXPECT_EQ(read.exitCode, 2);
    EXPECT_TRUE(read.err.startsWith("kmr: " + file + ":2: bad tag \"Q5\": "))
        << read.err.toStdString();
}

TEST(Command, UnknownNameIsSaidToBeMissingInTheFileOfNames)
{
    QTemporaryDir directory;
    const QString file = directory.filePath("names.csv");
    saveFile(file, "boiler.temp,D1\n");
    const Finished read = run({"read", "boiler.tmp", "--names", file});
    EXPECT_EQ(read.exitCode, 2);
    EXPECT_TRUE(read.err.startsWith("kmr: bad tag \"boiler.tmp\": ") &&
                read.err.endsWith(" (and " + file + " has no such name)\n"))
        << read.err.toStdString();
}

TEST(Command, TagsCheckNamesEveryBadLine)
{
    QTemporaryDir directory;
    const QString file = directory.filePath("names.csv");
    saveFile(file, "a,D1\nb,Q1\nc\n");
    const Finished check = run({"tags", "check", file});
    EXPECT_EQ(check.exitCode, 2);
    EXPECT_TRUE(check.err.contains("names.csv:2: ")) << check.err.toStdString();
    EXPECT_TRUE(check.err.contains("names.csv:3: c has no tag"));
}

TEST(Command, RefusalEndsWithFive)
{
    FakeController controller([](const QByteArray &line) {
        return QByteArray(line.mid(3, 2) == "10" ? ":0190026D\r\n" : ":0183027A\r\n");
    });
    const Finished read = run({"read", "D100", "--link", controller.link()});
    EXPECT_EQ(read.exitCode, 5);
    EXPECT_EQ(read.err, "D100: refused: illegal data address (exception 02)\n");
    const Finished write = run({"write", "D1=1", "D2=2", "--link", controller.link()});
    EXPECT_EQ(write.exitCode, 5);
    EXPECT_TRUE(write.err.contains("D2: not written, because of the failure before"));
}

TEST(Command, ValueThatReadsBackDifferentlyEndsWithSix)
{
    FakeController controller([](const QByteArray &line) {
        return QByteArray(line.mid(3, 2) == "10" ? ":0110106400017A\r\n" : ":0103020001F9\r\n");
    });
    const Finished write = run({"write", "--verify", "D100=2", "--link", controller.link()});
    EXPECT_EQ(write.exitCode, 6);
    EXPECT_TRUE(write.err.contains("D100: wrote 2, read back 1")) << write.err.toStdString();
}

TEST(Command, ElementThatIsNotWrittenAgainMustReadBackAsItWasWritten)
{
    FakeController controller([](const QByteArray &line) {
        if (line.mid(3, 2) == "03")
            return QByteArray(":01030400090005EA\r\n");
        return QByteArray(line.mid(5, 4) == "1064" ? ":01101064000279\r\n" : ":01101065000179\r\n");
    });
    const Finished write =
        run({"write", "--verify", "D100x2=1,2", "D101=5", "--link", controller.link()});
    EXPECT_EQ(write.exitCode, 6);
    EXPECT_TRUE(write.err.contains("D100x2: wrote 1 2, read back 9 5")) << write.err.toStdString();
    EXPECT_EQ(write.out, "D101 5 verified\n");
}

TEST(Command, DifferentFailuresEndWithOne)
{
    FakeController controller([](const QByteArray &line) {
        return line.mid(1, 2) == "02" ? QByteArray("") : QByteArray(":0183027A\r\n");
    });
    const Finished read =
        run({"read", "D100", "2#D100", "--timeout", "300", "--link", controller.link()});
    EXPECT_EQ(read.exitCode, 1) << read.err.toStdString();
}

TEST(Command, WatchConnectsAgainAndMarksWhatIsStale)
{
    int requests = 0;
    FakeController controller([&requests](const QByteArray &) {
        ++requests; // good, then the connection is closed, then good again
        return requests == 2 ? QByteArray() : QByteArray(":0103020001F9\r\n");
    });
    const Finished watch = run({"watch", "D100", "--for", "1.5", "--format", "csv", "--gap", "50",
                                "--link", controller.link()});
    EXPECT_EQ(watch.exitCode, 0) << watch.err.toStdString();
    EXPECT_EQ(watch.err.count("the line was lost"), 1) << watch.err.toStdString();
    EXPECT_EQ(watch.err.count("the line is back"), 1);
    const char *const lines = "^time,tag,values,unit,quality,error\n"
                              "\\d{4}-\\S+,D100,1,,good,\n"
                              "\\d{4}-\\S+,D100,1,,stale,the line was lost\n"
                              "\\d{4}-\\S+,D100,1,,good,\n$";
    EXPECT_TRUE(matches(watch.out, lines)) << watch.out.toStdString();
}

TEST(Command, WatchOfAGatewayThatHangsUpEachTimeIsPatientAndQuiet)
{
    int requests = 0;
    FakeController controller([&requests](const QByteArray &) {
        ++requests; // at once, half a second later, and a second after that
        return QByteArray();
    });
    const Finished watch = run({"watch", "D100", "--for", "2", "--link", controller.link()});
    EXPECT_EQ(watch.exitCode, 4);
    EXPECT_LE(requests, 3);
    EXPECT_EQ(watch.err.count("the line was lost"), 1) << watch.err.toStdString();
    EXPECT_EQ(watch.err.count("the line is back"), 0);
}

TEST(Command, WatchNamesAnOutageOnceAndItsEnd)
{
    int requests = 0;
    FakeController controller([&requests](const QByteArray &) {
        ++requests; // good, then one given up at the second attempt and two at once, then good
        return QByteArray(requests == 1  ? ":0103020001F9\r\n"
                          : requests < 6 ? ""
                                         : ":0103020002F8\r\n");
    });
    const Finished watch = run({"watch", "D100", "--count", "2", "--timeout", "20", "--retries",
                                "1", "--in-step", "off", "--link", controller.link()});
    EXPECT_EQ(watch.exitCode, 0);
    EXPECT_EQ(watch.err.count("station 1: no answer"), 1) << watch.err.toStdString();
    EXPECT_EQ(watch.err.count("station 1 answers again"), 1) << watch.err.toStdString();
    EXPECT_TRUE(watch.err.contains("6 requests sent, 2 good, 1 sent again, 3 given up"));
}

TEST(Command, WatchTellsAnOutageWhoseCauseChangesOnce)
{
    int requests = 0;
    FakeController controller([&requests](const QByteArray &) {
        ++requests; // silence and noise by turns
        return QByteArray(requests > 6        ? ":01030400010002F5\r\n"
                          : requests % 2 == 1 ? ""
                                              : ":01\r\n");
    });
    const Finished watch = run({"watch", "D100x2", "--count", "1", "--timeout", "20", "--retries",
                                "0", "--link", controller.link()});
    EXPECT_EQ(watch.err.count("\n"), 4) << watch.err.toStdString(); // and the summary
    EXPECT_TRUE(watch.err.contains("station 1: no answer, asked for D100..101\n"));
    EXPECT_TRUE(watch.err.contains("station 1 answers again\n"));
}
