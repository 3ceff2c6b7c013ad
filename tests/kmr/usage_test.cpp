// Commands that can't begin: they say why on stderr, each line after the program's name, print
// nothing else and end with the exit code for the error.
#include "tests/kmr/help_pages.h"
#include "tests/kmr/kmr_process.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct Row {
    const char *typed; // after "kmr", in words
    int exitCode;
    const char *error; // a pattern: what stderr begins with, after "kmr: "
};

const Row ROWS[] = {
    {"--station 2", 2, "which command\\? Expected help, areas, [^\n]*\nkmr: see 'kmr --help'\n$"},
    {"dance", 2, "unknown command \"dance\"\nkmr: see 'kmr --help'\n$"},
    {"wach D1", 2, "unknown command \"wach\", did you mean \"watch\"\\?\n"},
    {"recipe uplaod", 2, "unknown command \"uplaod\", did you mean \"upload\"\\?\n"},
    {"help wach", 2, "unknown command \"wach\", did you mean \"watch\"\\?\nkmr: 'kmr help' lists"},
    {"read D1 --staton 2", 2, "unknown option --staton, did you mean \"--station\"\\?\n"},
    {"write D1=1 --verfy", 2, "unknown option --verfy, did you mean \"--verify\"\\?\n"},
    {"areas D", 2, "unexpected argument \"D\"\n"},
    {"read D1 --link", 2, "--link needs a value\n"},
    {"read D1 --link a --link b", 2, "--link is given twice\n"},
    {"sim --listen a --listen b", 2, "--listen is given twice\n"},
    {"areas --trace=maybe", 2, "--trace can't take the value \"maybe\"\n"},
    {"series D x 1 1", 2, "START: expected a whole number from 0 to 1048575, not \"x\"\n"},
    {"series D -1 2 1", 2, "START: expected a whole number from 0 to 1048575, not \"-1\"\n"},
    {"series D 5 2 -1", 2, "STEP: expected a whole number from 1 to 1048575, not \"-1\"\n"},
    {"read d100", 2, "bad tag \"d100\": [^\n]*, did you mean D100\\?\n"},
    {"recipe foo", 2, "unknown command \"foo\"\nkmr: see 'kmr recipe --help'\n$"},
    {"write --foo", 2, "unknown option --foo\nkmr: see 'kmr write --help'\n$"},
    {"read D1 --station 100", 2, "--station: [^\n]*\nkmr: see 'kmr read --help'\n$"},
    {"read D1 --echo maybe", 2, "--echo: expected on, off, auto, not \"maybe\"\n"},
    {"areas --group-limit 9", 2, "--group-limit: "},
    {"areas --capture a --capture-limit 0", 2,
     "--capture-limit: expected a whole number from 1 to 100000, not \"0\"\n"},
    {"sim --seed -1", 2, "--seed: expected a whole number from 0 to 18446744073709551615, not"},
    {"watch D1 --count 2.5", 2,
     "--count: expected a whole number from 1 to 1000000000, not \"2.5\"\n"},
    {"watch D1 --for -1", 2, "--for: expected a number above 0, at most 1000000000, "},
    {"ping 0", 2, "COUNT: expected a whole number from 1 to 1000000000, not"},
    {"plan D1 --baud 0", 2, "--baud: expected a whole number from 1 to 4000000, not"},
    {"scan --stations 3..1", 2, "--stations: expected stations from 1 to 99"},
    {"series D 0 65538 1", 2, "COUNT: expected a whole number from 1 to 65537, not \"65538\""},
    {"series D 0 1", 2, "STEP is missing, for example: kmr "},
    {"series", 2, "AREA is missing, for example: kmr "},
    {"write", 2,
     "TAG=VALUE is missing, for example: kmr write D100=250 --link [^\n]*\nkmr: see 'kmr write "
     "--help'"},
    {"check", 2, "TAG is missing, for example: kmr "},
    {"decode", 2, "FRAME is missing, for example: kmr "},
    {"trace", 2, "FILE is missing, for example: kmr "},
    {"replay", 2, "FILE is missing, for example: kmr "},
    {"run", 2, "FILE is missing, for example: kmr "},
    {"log D1", 2, "--output is missing, for example: kmr log "},
    {"log D1 --output x.txt --link tcp://127.0.0.1:1", 2, "\"x.txt\" has no known format: "},
    {"tags list", 2, "no file of names: give one, here or with --names"},
    {"tags import /dev/null --columns nam=Symbol", 2,
     "bad column \"nam=Symbol\", did you mean \"name\"\\?: expected "},
    {"tags check", 2, "FILE is missing, for example: kmr "},
    {"recipe download", 2, "FILE is missing, for example: kmr "},
    {"recipe compare", 2, "FILE is missing, for example: kmr "},
    {"recipe upload", 2, "FILE is missing, for example: kmr "},
    {"series Q 1 1 1", 2, "Q is not an area \\(result 0\\): 'kmr areas' lists them\n"},
    // The link and the tags, all bad ones at once.
    {"read", 2, "no tags: give some, for example D100, or list them in the project's kmr.toml"},
    {"read D1", 2, "no link: give it with --link or the environment variable KMR_LINK"},
    {"doctor", 2, "no link: "},
    {"read D99999 D1 Q7 --link tcp://127.0.0.1:1", 2,
     "bad tag \"D99999\": [^\n]*\nkmr: bad tag \"Q7\": [^\n]*\n$"},
    {"plan Q1", 2, "bad tag \"Q1\""},
    {"ping --tag Q1 --link tcp://127.0.0.1:1", 2, "bad tag \"Q1\""},
    {"doctor --tag Q1 --link tcp://127.0.0.1:1", 2, "bad tag \"Q1\""},
    {"write TV5.3=1 X0=1 D0 D1=x --link tcp://127.0.0.1:1", 2,
     "TV5.3 can't be written: the controller has no write[^\n]*\n"
     "kmr: X0 can't be written: X are inputs\n"
     "kmr: \"D0\" is not an assignment[^\n]*\n"
     "kmr: bad value \"x\" for D1"},
    {"doctor --try --link tcp://127.0.0.1:1", 2, "--try needs a serial link"},
    {"doctor --try --capture /dev/null --link serial:///dev/ttyS0", 2, "--capture "},
    {"publish D1", 2, "no broker: name it with --broker, the environment variable KMR_BROKER or"},
    {"publish D1 --broker broker", 2, "bad broker \"broker\": expected mqtt://HOST"},
    {"publish D1 --broker mqtt://b --ca /dev/null", 2, "certificates are given, but"},
    {"publish D1 --broker mqtt://b --allow-write", 2, "--allow-write allows nothing: no name is"},
    {"publish D1 --broker mqtt://b --prefix a/#", 2, "bad prefix \"a/#\": "},
    {"publish D1 --broker mqtt://b --metrics 9100", 2,
     "bad address for metrics \"9100\": expected"},
    {"publish D1 --broker mqtt://b --metrics 192.0.2.1:0", 2, "cannot listen on 192.0.2.1:0 for"},
    {"publish D1 --broker mqtt://b --spool /no/such/spool", 2, "cannot spool to /no/such/spool: "},
    // Files.
    {"trace /no/such/file", 2, "cannot read the capture /no/such/file: "},
    {"trace /dev/null", 2, "/dev/null:1: not a capture of kmr"},
    {"replay /no/such/file", 2, "cannot read the capture /no/such/file: "},
    {"recipe upload /no/such/directory/mixer.csv D0 --link tcp://127.0.0.1:1", 2,
     "cannot write /no/such/directory/mixer.csv: "},
    {"run /no/such/file", 2, "cannot read /no/such/file: "},
    {"run /dev/null --check", 2, "/dev/null: no step in it"},
    {"sim --load /no/such/file", 2, "cannot read /no/such/file: "},
    {"sim --save /no/such/directory/plant.csv", 2, "cannot write /no/such/directory/plant.csv: "},
    {"sim --generate D0=sine,range=0..70000 --generate D1=saw --generate 2#D0=ramp,period=5", 2,
     "bad generator \"D0=sine,range=0..70000\": bad value \"70000\" for D0: [^\n]*\n"
     "kmr: bad generator \"D1=saw\": unknown kind: expected sine, [^\n]*\n"
     "kmr: bad generator \"2#D0=ramp,period=5\": bad time \"5\": "},
    {"sim --generate 2#D0=ramp", 2, "station 2 is not simulated, only 1: see --station\n$"},
    {"sim --station 1,100", 2, "--station: "},
    {"sim --fault late=soon", 2,
     "bad fault \"late=soon\": late=soon: expected a time(.|\n)*kinds: deaf, close, silence"},
    // Links.
    {"sim --listen udp://x", 2, "bad address to listen at \"udp://x\": expected tcp://HOST:PORT"},
    {"sim --listen tcp://[2001:db8::1]:8888", 3, "cannot listen on tcp://[^\n]*:8888: "},
    {"read D1 --link tcp://127.0.0.1:1", 3, "cannot connect to tcp://127.0.0.1:1: "},
    {"read D1 --link serial:///dev/no-such-port", 3, "cannot open /dev/no-such-port: "},
    {"ping 1 --link serial:///dev/no-such-port", 3, "cannot open /dev/no-such-port: "},
    {"scan --link serial:///dev/no-such-port", 3, "cannot open /dev/no-such-port: "},
    // The driver library.
    {"areas --driver /no/such/driver.so", 7,
     "cannot load the driver /no/such/driver.so: [^\n]*\nkmr: Build it, or name another one with "
     "--driver PATH or the environment variable KMR_DRIVER.\n$"},
    {"areas --driver " STUB_LIBRARY, 7, "[^\n]* it lacks intf_getDriverParameter"},
    {"check D100 --driver /no/such/driver.so", 7, "cannot load the driver"},
    {"series D 0 1 1 --driver /no/such/driver.so", 7, "cannot load the driver"},
    {"plan D100 --driver /no/such/driver.so", 7, "cannot load the driver"},
    {"ping 1 --driver /no/such/driver.so", 7, "cannot load the driver"},
    {"doctor --driver /no/such/driver.so", 7, "cannot load the driver"},
};

} // namespace

TEST(Usage, FileNameThatIsNotUtf8IsRefusedBeforeAnotherFileIsMade)
{
    const QTemporaryDir directory;
    const Finished read = runShell("cd " + directory.path() +
                                   " && \"$KMR\" read D1 --capture \"$(printf 'l\\351.csv')\"");
    EXPECT_EQ(read.exitCode, 2);
    EXPECT_EQ(read.err, "kmr: l\\xE9.csv is not UTF-8: kmr can't use that name; rename it, or "
                        "link to it by another name\n");
    EXPECT_TRUE(QDir(directory.path()).isEmpty());
}

TEST(Usage, WhatCannotBeBegunSaysWhyAndEndsWithItsExitCode)
{
    for (const Row &row : ROWS) {
        SCOPED_TRACE(row.typed);
        QStringList arguments = QString(row.typed).split(' ');
        arguments.removeAll("");
        if (arguments.value(0) != "help" && arguments.last() != "--link")
            arguments += QStringList{"--format", "json"};
        const Finished ended = run(arguments);
        EXPECT_EQ(ended.exitCode, row.exitCode);
        EXPECT_EQ(ended.out, "");
        EXPECT_TRUE(matches(ended.err, "^(kmr: .*\n)+$")) << ended.err.toStdString();
        EXPECT_TRUE(matches(ended.err, (std::string("^kmr: ") + row.error).c_str()))
            << ended.err.toStdString();
    }
}

TEST(Usage, HelpAndVersionComeByEachOfTheirNames)
{
    const QString help = run({"--help"}).out;
    EXPECT_EQ(run({}).out, help);
    EXPECT_EQ(run({"help"}).out, help);
    EXPECT_EQ(run({"help", "recipe", "upload"}).out, run({"recipe", "upload", "--help"}).out);
    EXPECT_EQ(run({"-V"}).out, run({"--version"}).out);
    EXPECT_EQ(run({}).exitCode, 0);
}

TEST(Usage, LibraryForAnotherQtThatTheSystemsLoaderFindsEndsWithSeven)
{
    const QFileInfo library(OTHER_QT_LIBRARY);
    qputenv("LD_LIBRARY_PATH", library.path().toLocal8Bit());
    const Finished areas = run({"areas", "--driver", library.fileName()});
    qunsetenv("LD_LIBRARY_PATH");
    EXPECT_EQ(areas.exitCode, 7);
    EXPECT_TRUE(areas.err.contains(library.filePath() + " is built for Qt 4, this program for Qt "))
        << areas.err.toStdString();
}

TEST(Usage, EachHelpTeachesWithTwoExamplesAndSaysWhereTheOptionsOfAllCommandsAre)
{
    ASSERT_GT(helpPages().size(), 18U);
    for (const HelpPage &page : helpPages()) {
        const bool isOfACommand = !page.command.isEmpty();
        EXPECT_TRUE(matches(page.text, "\nExamples:\n  kmr .*\n  kmr ")) << qPrintable(page.text);
        EXPECT_EQ(page.text.contains("\n'kmr --help' lists the options"), isOfACommand);
        EXPECT_EQ(page.text.contains("\nExit codes: 0 success, "), !isOfACommand);
        const bool takesTags =
            matches(page.command.join(' '), "^(watch|log|publish|read|write|plan)$");
        EXPECT_EQ(page.text.contains("\nA TAG is [STATION#]AREA ADDRESS"), takesTags);
    }
}
