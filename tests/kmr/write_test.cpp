// The reports of 'kmr write' about writes that fail, and values that differ when read back.
#include "simulator/controller.h"
#include "simulator/memory.h"
#include "tests/kmr/kmr_process.h"

#include <gtest/gtest.h>

#include <map>

namespace {

struct Drift {
    const char *typed;
    QByteArray station; // where a value changes between the write and the read
    int number;         // of D
    std::uint32_t value;
    const char *error;
    const char *out;
};

const Drift DRIFTS[] = {
    {"D100=2", "01", 100, 1, "D100: wrote 2, read back 1\n", ""},
    {"D100x2=1,2", "01", 101, 3, "D100x2: wrote 1 2, read back 1 3\n", ""},
    {"1#D100=1 2#D100=2", "01", 100, 9, "1#D100: wrote 1, read back 9\n", "2#D100 2 verified\n"},
    {"1#D100=1 2#D100=2", "02", 100, 9, "2#D100: wrote 2, read back 9\n", "1#D100 1 verified\n"},
    // An element that is written again counts as it was written last.
    {"D100x2=1,2 D101=5", "01", 100, 9, "D100x2: wrote 1 2, read back 9 5\n", "D101 5 verified\n"},
};

} // namespace

TEST(Write, EachElementOfEachStationMustReadBackAsItWasWrittenLast)
{
    for (const Drift &drift : DRIFTS) {
        SCOPED_TRACE(drift.typed);
        std::map<QByteArray, simulator::Controller> stations;
        stations.emplace("01", simulator::Controller("01"));
        stations.emplace("02", simulator::Controller("02"));
        FakeController controller([&](const QByteArray &line) {
            if (line.mid(3, 2) == "03")
                simulator::setElement(stations.at(drift.station).memory(), "D", drift.number,
                                      drift.value);
            return stations.at(line.mid(1, 2)).answer(line);
        });
        const Finished write =
            run(QStringList{"write", "--verify"} + QString(drift.typed).split(' ') +
                QStringList{"--link", controller.link()});
        EXPECT_EQ(write.exitCode, 6);
        EXPECT_EQ(write.err.toStdString(), drift.error);
        EXPECT_EQ(write.out.toStdString(), drift.out);
    }
}

TEST(Write, RunWhoseSecondRequestIsRefusedIsNotConfirmed)
{
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--fault", "exception=4,every=2"});
    const Finished write = run({"write", "D0x10=0,1,2,3,4,5,6,7,8,9", "D20=1", "--retries", "0",
                                "--in-step", "off", "--link", simulator.link()});
    EXPECT_EQ(write.exitCode, 5);
    EXPECT_EQ(write.out, "");
    EXPECT_EQ(write.err, "D0x10: stopped at 1#D8\n"
                         "D0x10: refused: server device failure (exception 04)\n"
                         "D20: not written because an earlier write failed\n");
}
