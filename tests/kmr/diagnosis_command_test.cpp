// The commands of kmr that explain and test, against a simulated controller in this process.
#include "simulator/areas.h"
#include "simulator/controller.h"
#include "simulator/tcp_server.h"
#include "tests/kmr/kmr_process.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>

namespace {

class DiagnosisCommand : public testing::Test {
protected:
    DiagnosisCommand()
    {
        EXPECT_EQ(m_server.listen("127.0.0.1", 0), "");
    }

    Finished kmr(const QStringList &arguments)
    {
        return run(arguments +
                   QStringList{"--link", QString("tcp://127.0.0.1:%1").arg(m_server.port())});
    }

    simulator::Controller m_controller{"01"};
    simulator::TcpServer m_server{m_controller};
    QTemporaryDir m_directory;
};

} // namespace

TEST_F(DiagnosisCommand, DecodeExplainsARequestAndItsAnswer)
{
    const Finished decode = kmr({"decode", ":01031064000286", ":01030400FA0001FD"});
    EXPECT_EQ(decode.exitCode, 0);
    EXPECT_EQ(decode.out, "request to station 01\n"
                          "  function  03 read holding registers\n"
                          "  address   2 registers from 1064\n"
                          "  elements  D100 to D101\n"
                          "  also      TV2660 to TV2661\n"
                          "  LRC       86 right\n"
                          "answer of station 01\n"
                          "  function  03 read holding registers\n"
                          "  address   2 registers from 1064\n"
                          "  elements  D100 to D101\n"
                          "  also      TV2660 to TV2661\n"
                          "  values    250 1\n"
                          "  LRC       FD right\n");
}

TEST_F(DiagnosisCommand, DecodeEndsWithOneForABadFrame)
{
    const Finished decode = kmr({"decode", ":01031064000287"});
    EXPECT_EQ(decode.exitCode, 1);
    EXPECT_EQ(decode.err, ":01031064000287: LRC 87 wrong, 86 would be right\n");
}

TEST_F(DiagnosisCommand, TraceGoesToStderrAndTheCaptureTellsTheSame)
{
    ASSERT_TRUE(simulator::setElement(m_controller.memory(), "D", 100, 250));
    const QString capture = m_directory.filePath("field.jsonl");
    const Finished read = kmr({"read", "D100", "--trace", "--capture", capture});
    EXPECT_EQ(read.out, "D100 250\n");
    EXPECT_TRUE(matches(
        read.err,
        "^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\S+ > :01031064000187\\\\r\\\\n  "
        "station 01: read D100\n\\d{4}-\\S+ < :01030200FA00\\\\r\\\\n  "
        "station 01 answers D100: 250\n"))
        << read.err.toStdString();
    const Finished trace = kmr({"trace", capture});
    EXPECT_EQ(trace.exitCode, 0);
    EXPECT_TRUE(trace.out.contains(" < :01030200FA00\\r\\n  station 01 answers D100: 250\n"));
    EXPECT_EQ(trace.out.count('\n'), read.err.count('\n'));
}

TEST_F(DiagnosisCommand, TraceOfACutCaptureShowsWhatIsWholeAndEndsWithOne)
{
    const QString capture = m_directory.filePath("field.jsonl");
    kmr({"read", "D100", "--in-step", "off", "--capture", capture});
    saveFile(capture, loadFile(capture).chopped(12));
    const Finished trace = kmr({"trace", capture});
    EXPECT_EQ(trace.exitCode, 1);
    EXPECT_TRUE(trace.out.endsWith("station 01: read D100\n")) << trace.out.toStdString();
    EXPECT_EQ(trace.err, capture + ":3: breaks off, left out\n");
}

TEST_F(DiagnosisCommand, TraceOfNoCaptureEndsWithTwo)
{
    EXPECT_EQ(kmr({"trace", "/no/such/file"}).exitCode, 2);
    const Finished trace = kmr({"trace", KMR_EXECUTABLE});
    EXPECT_EQ(trace.exitCode, 2);
    EXPECT_TRUE(trace.err.contains(":1: no capture of kmr")) << trace.err.toStdString();
}

TEST_F(DiagnosisCommand, CheckSaysTheDriversResultInWords)
{
    const Finished check = kmr({"check", "D100", "D11999x2", "TV5.16", "Q7", "CV21"});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_EQ(check.out, "D100: valid (result 0), area D, address 100, count 1\n"
                         "D11999x2: out of range (result 2), area D, address 11999, count 2\n"
                         "TV5.16: no address (result 4), area TV_bit, address 5.16, count 1\n"
                         "Q7: unknown area (result 3), area Q, address 7, count 1\n"
                         "CV21: valid (result 0), area CV, address 21, count 1\n");
    EXPECT_EQ(kmr({"check", "X17"}).exitCode, 0);
}

TEST_F(DiagnosisCommand, CheckTakesEveryTag)
{
    const QString names = m_directory.filePath("names.csv");
    saveFile(names, "boiler.temp,D110\n");
    const Finished check = kmr({"check", "2#D100", "D100..107", "X0..17", "D100/float32", "TV5.3x4",
                                "boiler.temp", "--names", names});
    EXPECT_EQ(check.exitCode, 0) << check.err.toStdString();
    EXPECT_EQ(check.out, "2#D100: valid (result 0), area D, address 100, count 1\n"
                         "D100..107: valid (result 0), area D, address 100, count 8\n"
                         "X0..17: valid (result 0), area X, address 0, count 16\n"
                         "D100/float32: valid (result 0), area D, address 100, count 2\n"
                         "TV5.3x4: valid (result 0), area TV_bit, address 5.3, count 4\n"
                         "boiler.temp: valid (result 0), area D, address 110, count 1\n");
}

TEST_F(DiagnosisCommand, CheckSaysWhatIsWrongWithARunOrATag)
{
    const Finished check = kmr({"check", "D0..12000", "X0..18", "D107..100", "100#D1"});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_EQ(check.out, "D0..12000: out of range (result 2), area D, address 12000, count 1\n"
                         "X0..18: out of range (result 2), area X, address 18, count 1\n"
                         "bad tag \"D107..100\": \"100\" is no address in D at or behind 107\n"
                         "bad tag \"100#D1\": a station is 1 to 99, two decimal digits travel on "
                         "the line\n");
}

TEST_F(DiagnosisCommand, SeriesCountsOctalAreasInOctal)
{
    const Finished series = kmr({"series", "X", "6", "4", "1"});
    EXPECT_EQ(series.exitCode, 0);
    EXPECT_EQ(series.out, "X6\nX7\nX10\nX11\n");
}

TEST_F(DiagnosisCommand, SeriesBeyondTheEndEndsWithOne)
{
    const Finished series = kmr({"series", "D", "11990", "3", "5"});
    EXPECT_EQ(series.exitCode, 1);
    EXPECT_EQ(series.out, "D11990\nD11995\nD11999\n");
    EXPECT_TRUE(series.err.contains("result 2")) << series.err.toStdString();
    EXPECT_EQ(kmr({"series", "Q", "1", "1", "1"}).exitCode, 2);
}

TEST_F(DiagnosisCommand, SeriesNamesWhatIsNoAddress)
{
    const Finished octal = kmr({"series", "X", "70", "3", "5"});
    EXPECT_EQ(octal.exitCode, 1);
    EXPECT_EQ(octal.out, "X70\nX75\nX80\n"); // the driver's own
    EXPECT_EQ(octal.err, "1 of 3 are no addresses of X, the first is X80: take another start or "
                         "step\n");
    EXPECT_EQ(kmr({"series", "D", "-5", "3", "1"}).exitCode, 1);
    EXPECT_EQ(kmr({"series", "TV_bit", "33", "2", "15"}).exitCode, 0);
}

TEST_F(DiagnosisCommand, PingTellsEachRoundTripAndASummary)
{
    const Finished ping = kmr({"ping", "3", "--interval", "0"});
    EXPECT_EQ(ping.exitCode, 0);
    EXPECT_TRUE(matches(ping.out, "^(station 1 D0: answered in \\d+\\.\\d{3} ms\n){3}$"))
        << ping.out.toStdString();
    EXPECT_TRUE(matches(ping.err, "^3 requests sent, 3 answered, 0.0% lost\nround trip "
                                  "min/median/p95/p99/max [\\d./]+ ms\n$"))
        << ping.err.toStdString();
}

TEST_F(DiagnosisCommand, PingOfASilentStationEndsWithFour)
{
    const Finished ping =
        kmr({"ping", "2", "--interval", "0", "--station", "2", "--timeout", "20"});
    EXPECT_EQ(ping.exitCode, 4);
    EXPECT_EQ(ping.out, "station 2 D0: no answer\nstation 2 D0: no answer\n");
    EXPECT_EQ(ping.err, "2 requests sent, 0 answered, 100.0% lost\n"
                        "no answer within 20 ms: 'kmr doctor' finds out whether they come late\n");
}

TEST_F(DiagnosisCommand, ScanFindsTheStationThatAnswers)
{
    const Finished scan = kmr({"scan", "--stations", "1..3", "--timeout", "20"});
    EXPECT_EQ(scan.exitCode, 0);
    EXPECT_TRUE(matches(scan.out, "^station 1: answered in \\d+\\.\\d{3} ms\n$"))
        << scan.out.toStdString();
    EXPECT_EQ(scan.err, "1 of 3 stations answer\n");
    EXPECT_EQ(kmr({"scan", "--stations", "2..3", "--timeout", "20"}).exitCode, 4);
    EXPECT_EQ(kmr({"scan", "--stations", "3..1"}).exitCode, 2);
}

TEST_F(DiagnosisCommand, StoppedScanCountsTheStationsThatItAsked)
{
    const QString link = QString("tcp://127.0.0.1:%1").arg(m_server.port());
    const Finished scan =
        run({"scan", "--timeout", "600000", "--link", link}, [](QProcess &process) {
            QObject::connect(&process, &QProcess::readyReadStandardOutput,
                             [&process] { kill(static_cast<pid_t>(process.processId()), SIGINT); });
        });
    EXPECT_EQ(scan.exitCode, 0);
    EXPECT_TRUE(scan.err.endsWith("1 of 1 stations answer, 30 not asked\n"))
        << scan.err.toStdString();
}

TEST_F(DiagnosisCommand, PlanShowsFramesAndWireTimes)
{
    const Finished plan = kmr({"plan", "D100x2", "D103", "--raw"});
    EXPECT_EQ(plan.exitCode, 0) << plan.err.toStdString();
    // 44 characters of 10 bits each at 9600 bits a second.
    EXPECT_EQ(plan.out, "station 1 D100 to D103: :01031064000484 sent 17 received 27 characters, "
                        "45.8 ms, 1 not asked for\n"
                        "cycle: 1 requests, 44 characters, 45.8 ms on the wire\n");
    EXPECT_TRUE(kmr({"plan", "D100", "--baud", "19200"}).out.contains("32 characters, 16.7 ms"));
}

TEST_F(DiagnosisCommand, PlanCountsTheSilenceBeforeEachRequest)
{
    const Finished plan = kmr({"plan", "D0", "D100", "--gap", "100", "--in-step", "off"});
    // 64 characters of 10 bits each at 9600 bits a second, and two gaps.
    EXPECT_TRUE(plan.out.endsWith("cycle: 2 requests, 64 characters, 66.7 ms on the wire, 266.7 ms "
                                  "with the silence of --gap\n"))
        << plan.out.toStdString();
    const Finished csv =
        kmr({"plan", "D0", "D100", "--gap", "100", "--in-step", "off", "--format", "csv"});
    EXPECT_TRUE(csv.out.contains(",17,15,33.333,100,0,\n")) << csv.out.toStdString();
    EXPECT_TRUE(csv.out.contains("cycle,,,,34,30,66.667,200,,\n"));
}

TEST_F(DiagnosisCommand, PlanShowsWhatKeepingInStepCosts)
{
    const Finished plan = kmr({"plan", "D100x40"});
    EXPECT_TRUE(plan.out.endsWith("in step: 6 of them and 0 check questions, 341.7 ms; with "
                                  "--in-step off 5 requests, 312.5 ms, so that it takes 9.3 % "
                                  "more\n"))
        << plan.out.toStdString();
    EXPECT_TRUE(kmr({"plan", "D100"}).out.contains("1 of them and 1 check questions"));
    EXPECT_TRUE(kmr({"plan", "D100x8", "M0"}).out.contains("it takes 0.0 % more"));
}

TEST_F(DiagnosisCommand, PlanThatMissesElementsEndsWithOne)
{
    const Finished plan = kmr({"plan", "D4095x2", "--raw"});
    EXPECT_EQ(plan.exitCode, 1);
    EXPECT_TRUE(plan.out.contains("\nstation 1 D4096: read wrongly: ")) << plan.out.toStdString();
    EXPECT_EQ(kmr({"plan", "D4095x2"}).exitCode, 0);
}

TEST_F(DiagnosisCommand, PingAndScanHaveRecords)
{
    const Finished ping = kmr({"ping", "1", "--format", "jsonl"});
    EXPECT_TRUE(matches(ping.out,
                        "^\\{\"schema\":1,\"command\":\"ping\",\"time\":\"\\d{4}-[^\"]+\","
                        "\"station\":1,\"tag\":\"D0\",\"outcome\":\"good\","
                        "\"round_trip_ms\":[\\d.]+,\"error\":null\\}\n$"))
        << ping.out.toStdString();
    const Finished scan =
        kmr({"scan", "--stations", "1..2", "--timeout", "100", "--format", "csv"});
    EXPECT_TRUE(matches(scan.out, "^time,station,tag,outcome,round_trip_ms,error\n"
                                  "\\d{4}-[^,]+,1,D0,good,[\\d.]+,\n"
                                  "\\d{4}-[^,]+,2,D0,no answer,,no answer\n$"))
        << scan.out.toStdString();
}

TEST_F(DiagnosisCommand, PlanHasRecordsForRequestsCycleAndGaps)
{
    const Finished plan = kmr({"plan", "D4095x2", "--raw", "--format", "csv"});
    EXPECT_TRUE(plan.out.startsWith(
        "kind,station,elements,frame,sent,received,wire_ms,silence_ms,not_asked,error\n"
        "request,1,D4095,:01031FFF0002DC,17,19,37.5,0,0,\n"
        "cycle,,,,17,19,37.5,0,,\n"
        "gap,1,D4096,,,,,,,\"read wrongly: "))
        << plan.out.toStdString();
}

TEST_F(DiagnosisCommand, CheckAndSeriesHaveRecords)
{
    EXPECT_EQ(kmr({"check", "D100", "X18", "--format", "csv"}).out,
              "text,area,address,count,result,meaning\n"
              "D100,D,100,1,0,valid\n"
              "X18,X,18,1,2,out of range\n");
    EXPECT_EQ(kmr({"series", "X", "7", "2", "1", "--format", "table"}).out, "ADDRESS\nX7\nX10\n");
}

TEST_F(DiagnosisCommand, DecodeHasARecordForEachLine)
{
    const Finished decode = kmr({"decode", ":01050800FF00F3", ":0103", "--format", "csv"});
    EXPECT_EQ(decode.exitCode, 1);
    EXPECT_EQ(decode.out,
              "frame,kind,station,function,address,elements,also,values,exception,lrc,error\n"
              ":01050800FF00F3,request or answer,01,05 write single coil,1 bit from 0800,M0,"
              "\"T512, Y1400, X2000, S2048, M24064\",on,,F3 right,\n"
              ":0103,unreadable,,,,,,,,,too short\n");
}

TEST_F(DiagnosisCommand, TraceHasARecordForEachLine)
{
    const QString capture = m_directory.filePath("field.jsonl");
    saveFile(capture, "{\"kmr_capture\":1,\"begin\":\"2024-05-01T12:00:00.000+02:00\","
                      "\"link\":\"tcp://192.168.0.10:8888\"}\n"
                      "{\"us\":1250,\"sent\":\":01031064000187\\r\\n\"}\n"
                      "{\"us\":9870,\"received\":\":01031064000187\\r\\n:0103020001F9\\r\\n\"}\n");
    EXPECT_EQ(
        kmr({"trace", capture, "--format", "csv"}).out,
        "time,direction,frame,kind,station,function,address,elements,also,values,exception,lrc,"
        "error\n"
        "2024-05-01T12:00:00.001+02:00,sent,:01031064000187\\r\\n,request,01,"
        "03 read holding registers,1 register from 1064,D100,TV2660,,,87 right,\n"
        "2024-05-01T12:00:00.009+02:00,received,:01031064000187\\r\\n,echo,01,"
        "03 read holding registers,1 register from 1064,D100,TV2660,,,87 right,\n"
        "2024-05-01T12:00:00.009+02:00,received,:0103020001F9\\r\\n,answer,01,"
        "03 read holding registers,1 register from 1064,D100,TV2660,1,,F9 right,\n");
}

TEST_F(DiagnosisCommand, HelpTeachesWithExamples)
{
    for (const char *command :
         {"decode", "trace", "check", "series", "ping", "scan", "plan", "doctor"}) {
        const Finished help = kmr({command, "--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_TRUE(help.out.contains("Examples:")) << command;
    }
}
