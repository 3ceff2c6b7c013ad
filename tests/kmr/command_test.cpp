// The command kmr as its users run it: a program with arguments, output and an exit code.
#include "tests/host/line/full_server.h"
#include "tests/kmr/kmr_process.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>

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

TEST_P(CommandOnBothLinks, ProjectsFileNamesLinkTagsAndNames)
{
    save("names.csv", "boiler.temp,D100/int16,C,0.1,flow\n");
    save("kmr.toml", "link = \"" + m_simulator.link().toUtf8() +
                         "\"\nnames = \"names.csv\"\ntags = [\"boiler.temp\", \"D101\"]\n");
    EXPECT_EQ(run({"write", "boiler.temp=-2.5", "--config", path("kmr.toml")}).exitCode, 0);
    const Finished read = run({"read", "--config", path("kmr.toml")});
    EXPECT_EQ(read.out, "boiler.temp -2.5 C\nD101 0\n") << read.err.toStdString();
}

TEST_P(CommandOnBothLinks, ProjectsFileWinsOverTheEnvironmentAndIsSaidToWhenTheyDiffer)
{
    save("kmr.toml", "link = \"" + m_simulator.link().toUtf8() + "\"\n");
    const QString read = "\"$KMR\" read D100 --config " + path("kmr.toml");
    const Finished other = runShell("KMR_LINK=tcp://127.0.0.1:1 " + read);
    EXPECT_EQ(other.out, "D100 0\n");
    EXPECT_EQ(other.err, "kmr: link is " + m_simulator.link() + ", from " + path("kmr.toml") +
                             ":1; KMR_LINK=tcp://127.0.0.1:1 of the environment is not used\n");
    EXPECT_EQ(runShell("KMR_LINK=" + m_simulator.link() + ' ' + read).err, "");
}

TEST_P(CommandOnBothLinks, WatchPrintsNoMoreLinesThanAskedFor)
{
    EXPECT_EQ(kmr({"watch", "D100", "D101", "D102", "--count", "2"}).out.count('\n'), 2);
}

TEST_P(CommandOnBothLinks, WatchWhoseLineDoesNotComeBackEndsWithFour)
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

    const Finished again = kmr({"recipe", "upload", path("new.csv"), "D0"});
    EXPECT_EQ(again.exitCode, 2);
    EXPECT_TRUE(again.err.contains("new.csv is not empty, and the upload would replace it: "))
        << again.err.toStdString();
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
                  "kmr: " + path("twice.csv") + ":2: D100 appears twice, first in line 1\n");
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
    EXPECT_TRUE(write.err.contains("may have been written"));
}

TEST(Command, UploadRefusesAFileThatIsNotInUtf8)
{
    const QTemporaryDir directory;
    const QString file = directory.filePath("mill.csv");
    const QByteArray latin1 = "# M\xFChle\nD100,250\n";
    saveFile(file, latin1);
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
    const Finished up = run({"recipe", "upload", file, "--link", simulator.link()});
    EXPECT_EQ(up.exitCode, 2);
    EXPECT_EQ(up.err, "kmr: " + file + ":1: not in UTF-8, maybe in Latin-1: \"# M" +
                          QString::fromUtf8("\u00fc") + "hle\"; save it as UTF-8\n");
    EXPECT_EQ(loadFile(file), latin1);
}

TEST(Command, StoppedDownloadNamesNeighbouringElementsTogether)
{
    const QTemporaryDir directory;
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--fault", "exception=4,every=3"});
    saveFile(directory.filePath("mixer.csv"),
             "D0x10,0 1 2 3 4 5 6 7 8 9\nD10,10\nTV11,11\nD12x10,0 1 2 3 4 5 6 7 8 9\nD30,30\n");
    const Finished down = run({"recipe", "download", directory.filePath("mixer.csv"), "--link",
                               simulator.link(), "--retries", "0"});
    EXPECT_EQ(down.exitCode, 5);
    EXPECT_EQ(down.err.section('\n', 1), "written for certain: 1#D0..10\n"
                                         "not written: 1#TV11 1#D12..21 1#D30\n");
}

TEST(Command, DryRunShowsTheFramesOfWrites)
{
    const Finished write = run({"write", "--dry-run", "D100=250", "M0x2=1,0"});
    EXPECT_EQ(write.exitCode, 0) << write.err.toStdString();
    EXPECT_EQ(write.out, "D100 :0110106400010200FA7E\n"
                         "M0x2 :01050800FF00F3\nM0x2 :010508010000F1\n");
}

TEST(Command, NumbersAreDecimalAlsoWithZerosBefore)
{
    const QTemporaryDir directory;
    const QString file = directory.filePath("p.toml");
    saveFile(file, "station = \"010\"\n");
    for (const QStringList &how : {QStringList{"--station", "010"}, QStringList{"--config", file}})
        EXPECT_EQ(run(QStringList{"write", "--dry-run", "D9=1"} + how).out,
                  "D9 :101010090001020001C3\n");
    EXPECT_EQ(run({"series", "D", "08", "010", "01"}).out.count('\n'), 10);
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

TEST(Command, EveryFaultOfAFileIsNamedInTheOrderOfItsLines)
{
    struct Row {
        const char *typed; // before the file's name
        const char *text;
        const char *error; // a pattern
    };
    const Row rows[] = {
        {"config --config",
         "station = 700\nspeed = 9600\nnames = \"nope.csv\"\nlink = \"foo\"\necho = \"maybe\"\n",
         "^kmr: \\S+file:1: station: [^\n]*\n"
         "kmr: \\S+file:2: unknown key \"speed\"; the keys are link, [^\n]*\n"
         "kmr: \\S+file:3: cannot read \\S+nope.csv: [^\n]*\n"
         "kmr: \\S+file:4: bad link \"foo\": [^\n]*\n[^\n]*\n"
         "kmr: \\S+file:5: echo: [^\n]*\n$"},
        {"config --config", "staton = 7\n",
         "^kmr: \\S+file:1: unknown key \"staton\", did you mean \"station\"\\?; the keys "
         "[^\n]*\n$"},
        {"config --config", "station: 7\n",
         "^kmr: \\S+file:1: not TOML: expected lines such as link = [^\n]*\n$"},
        {"read --config", "station = 7\ntags = [\"D1\", \"Q5\"]\n",
         "^kmr: \\S+file:2: bad tag \"Q5\": [^\n]*\n$"},
        {"read boiler.tmp --names", "boiler.temp,D1\n",
         "^kmr: bad tag \"boiler.tmp\": [^\n]* \\(and \\S+file has no such name, did you mean "
         "\"boiler.temp\"\\?\\)\n$"},
        {"tags check", "", "^kmr: \\S+file: holds no names\n$"},
        {"tags import", "name,tag\n", "^kmr: \\S+file: holds no names\n$"},
        {"tags check", "a,D1\nb,Q1\nc\n",
         "^kmr: \\S+file:2: b: bad tag \"Q1\"[^\n]*\nkmr: \\S+file:3: c has no tag\n$"},
    };
    const QTemporaryDir directory;
    const QString file = directory.filePath("file");
    for (const Row &row : rows) {
        saveFile(file, row.text);
        const Finished kmr = run(QString(row.typed).split(' ') + QStringList{file});
        EXPECT_EQ(kmr.exitCode, 2) << row.typed;
        EXPECT_TRUE(matches(kmr.err, row.error)) << kmr.err.toStdString();
    }
}

TEST(Command, BadNameStopsNoCommandThatDoesNotUseIt)
{
    const QTemporaryDir directory;
    const QString file = directory.filePath("names.csv");
    saveFile(file, "a,D1\nb,D1,,x\nc,Q1\n");
    const Finished plan = run({"plan", "a", "--names", file});
    EXPECT_EQ(plan.exitCode, 0);
    EXPECT_EQ(plan.err,
              "kmr: " + file + " has a bad line, which 'kmr tags check " + file + "' explains\n");
    EXPECT_EQ(run({"plan", "b", "--names", file}).exitCode, 2);
}

TEST(Command, ListFromElsewhereIsImportedAndSearched)
{
    const QTemporaryDir directory;
    const QString list = directory.filePath("plant.txt");
    const QString names = directory.filePath("names.csv");
    saveFile(list, "Nr\tSymbol\tAdresse\tFaktor\n1\tT\xFCr [1]\tX5\t\n2\tb\tQ1\t\n"
                   "3\ttemp\tD100x2\t0,1\n");
    const Finished import = run({"tags", "import", list, "--encoding", "latin1", "--columns",
                                 "name=symbol,tag=Adresse,scale=Faktor", "--output", names});
    EXPECT_EQ(import.exitCode, 1);
    EXPECT_TRUE(matches(import.err, "^kmr: \\S+plant.txt:3: b: bad tag \"Q1\"[^\n]*\n"
                                    "\\S+plant.txt: 2 names imported, 1 lines left out\n$"))
        << import.err.toStdString();
    EXPECT_EQ(QString::fromUtf8(loadFile(names)),
              QString::fromUtf8("name,tag,unit,scale,offset,texts,word-order,byte-order,writable,"
                                "deadband,comment\n"
                                "T\u00fcr [1],X5,,,,,,,,,\ntemp,D100x2,,0.1,,,,,,,\n"));
    const Finished bad = run({"tags", "import", list, "--encoding", "latin1", "--columns",
                              "name=Nr,tag=Adresse", "--output", names}); // 1 is not a name
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_TRUE(bad.err.endsWith("plant.txt: 0 names imported, 3 lines left out\n"));
    const QStringList how = {"--names", names, "--format", "csv"};
    EXPECT_EQ(run(QStringList{"tags", "find", "D101"} + how).out.section('\n', 1),
              "temp,D100x2,,0.1,,,,,,,,\n");
    EXPECT_EQ(run(QStringList{"tags", "find", "[1"} + how).out.count('\n'), 2);
    EXPECT_EQ(run(QStringList{"tags", "find", "pump"} + how).exitCode, 1);
    EXPECT_EQ(run(QStringList{"tags", "list"} + how).out.count('\n'), 3);
}

TEST(Command, RefusalEndsWithFiveAndDifferentFailuresEndWithOne)
{
    FakeController controller([](const QByteArray &line) {
        return line.mid(1, 2) == "02" ? QByteArray("") : QByteArray(":0183027A\r\n");
    });
    const QStringList how = {"--retries", "0", "--link", controller.link()};
    const Finished read = run(QStringList{"read", "D100"} + how);
    EXPECT_EQ(read.exitCode, 5);
    EXPECT_EQ(read.err, "D100: refused: illegal data address (exception 02)\n");
    EXPECT_EQ(run(QStringList{"read", "D100", "2#D100"} + how).exitCode, 1);
}

TEST(Command, TimeoutDoesNotLimitConnecting)
{
    FullServer server; // the first attempt is lost, and the next one, after a second, is not
    const Finished read =
        run({"read", "D100", "--timeout", "1", "--link", server.link()},
            [&server](QProcess &) { QTimer::singleShot(200, [&server] { server.makeRoom(); }); });
    EXPECT_EQ(read.exitCode, 4) << read.err.toStdString();
}

TEST(Command, WatchConnectsAgainAndMarksWhatIsStale)
{
    int requests = 0;
    FakeController controller([&requests](const QByteArray &) {
        ++requests; // good, then the connection is closed, then good again
        if (requests == 2)
            return QByteArray();
        return QByteArray(requests == 1 ? ":0103020001F9\r\n" : ":0103020002F8\r\n");
    });
    const Finished watch = run({"watch", "D100", "--count", "2", "--format", "csv", "--gap", "50",
                                "--in-step", "off", "--link", controller.link()});
    EXPECT_EQ(watch.exitCode, 0) << watch.err.toStdString();
    EXPECT_EQ(watch.err.count("the line was lost"), 1) << watch.err.toStdString();
    EXPECT_EQ(watch.err.count("the line is back"), 1);
    const char *const lines = "^time,tag,values,unit,quality,error\n"
                              "\\d{4}-\\S+,D100,1,,good,\n"
                              "\\d{4}-\\S+,D100,1,,stale,the line was lost\n"
                              "\\d{4}-\\S+,D100,2,,good,\n$";
    EXPECT_TRUE(matches(watch.out, lines)) << watch.out.toStdString();
}

TEST(Command, WatchOpensASerialLineAgain)
{
    const QTemporaryDir directory;
    const QString memory = directory.filePath("memory.csv");
    saveFile(memory, "tag,value\nD100,7\n");
    const QStringList serve{"--pty", directory.filePath("line")};
    auto simulator = std::make_unique<Simulator>(serve);
    const QString link = simulator->link();
    const auto restart = [&](QProcess &process) {
        while (!process.peek(1000).contains("good") && process.waitForReadyRead(10000)) {
        }
        simulator.reset();
        simulator = std::make_unique<Simulator>(serve + QStringList{"--load", memory});
    };
    const Finished watch =
        run({"watch", "D100", "--count", "2", "--for", "60", "--format", "csv", "--link", link},
            restart);
    EXPECT_EQ(watch.exitCode, 0) << watch.err.toStdString();
    EXPECT_TRUE(watch.out.endsWith(",D100,7,,good,\n")) << watch.out.toStdString();
    EXPECT_EQ(watch.err.count("the line is back"), 1) << watch.err.toStdString();
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
    const Finished watch = run({"watch", "D100", "--count", "2", "--timeout", "500", "--retries",
                                "1", "--in-step", "off", "--link", controller.link()});
    EXPECT_EQ(watch.exitCode, 0);
    EXPECT_EQ(watch.err.count("station 1: no answer"), 1) << watch.err.toStdString();
    EXPECT_EQ(watch.err.count("station 1 answers again"), 1) << watch.err.toStdString();
    EXPECT_TRUE(watch.err.contains("6 requests sent, 2 good, 1 sent again, 3 given up"));
}

TEST_P(CommandOnBothLinks, GapIsKeptBetweenExchanges)
{
    const Finished read = kmr({"read", "D0", "D100x2", "--gap", "100", "--trace"});
    QDateTime answered;
    int kept = 0;
    for (const QString &line : read.err.split('\n')) {
        const QDateTime time = QDateTime::fromString(line.left(24), Qt::ISODateWithMs);
        const bool isRequest = line.mid(25, 1) == ">";
        kept += isRequest && answered.isValid() && answered.msecsTo(time) >= 99 ? 1 : 0;
        answered = isRequest ? QDateTime() : time;
    }
    EXPECT_EQ(kept, 2) << read.err.toStdString();
}
