// What is kept of the course of values, and what is drawn of it.
#include "host/error.h"
#include "host/project/text_file.h"
#include "view/history.h"
#include "view/recording.h"
#include "view/tag_index.h"
#include "view/time_scale.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

#include <cmath>

using namespace kmr;

class HistoryTest : public QObject {
    Q_OBJECT

private slots:
    void aStillValueTakesTwoSamples()
    {
        Series series;
        for (int second = 0; second < 100; ++second)
            series.add(second, 7);
        QCOMPARE(series.samples().size(), std::size_t(2));
        QCOMPARE(series.samples().back().time, 99.0);
    }

    void valuesMoveInAStraightLineAndEndAtAGap()
    {
        Series series;
        series.add(10, 0);
        series.add(20, 100);
        series.addGap(30);
        series.addGap(31);
        series.add(40, 5);
        QVERIFY(!series.at(9));
        QCOMPARE(*series.at(15), 50.0);
        QCOMPARE(*series.at(25), 100.0); // until it became stale
        QCOMPARE(*series.heldAt(15), 0.0);
        QVERIFY(!series.at(35));
        QCOMPARE(*series.at(40), 5.0);
        QVERIFY(!series.at(41)); // nobody has looked
        QCOMPARE(series.samples().size(), std::size_t(4));
    }

    void figuresWeighByTime()
    {
        Series series;
        series.add(0, 0);
        series.add(10, 0);
        series.add(10.001, 30);
        series.add(20, 30);
        const auto figures = series.figures(0, 20);
        QCOMPARE(figures->least, 0.0);
        QCOMPARE(figures->most, 30.0);
        QVERIFY(std::abs(figures->mean - 15) < 0.01);
        QCOMPARE(series.figures(12, 14)->mean, 30.0);
        QVERIFY(!series.figures(-5, -1));
    }

    void theFiguresOfABitHaveNoValuesInBetween()
    {
        Series series;
        series.add(0, 0);
        series.add(10, 1);
        series.add(20, 1);
        QCOMPARE(series.figures(4, 6, true)->most, 0.0);
        QCOMPARE(series.figures(0, 20, true)->mean, 0.5);
    }

    void aValueThatIsNotFiniteIsAGap()
    {
        Series series;
        series.add(0, 1);
        series.add(1, HUGE_VAL);
        series.add(2, 3);
        QVERIFY(!series.at(1.5));
        QCOMPARE(series.figures(0, 2)->most, 3.0);
    }

    void eachPixelKeepsItsPeaksAndGaps()
    {
        Series series;
        for (int i = 0; i < 100700; ++i)
            series.add(i, i % 2);
        series.add(100700, 1000); // that nobody may miss, in the midst of a pixel
        series.add(100701, -1000);
        series.add(100702, 0);
        series.addGap(100703);
        for (int i = 100704; i < 200000; ++i)
            series.add(i, i % 2);
        const std::vector<Sample> drawn = series.drawn(0, 200000, 100);
        QVERIFY(drawn.size() <= 4 * 102);
        const auto isPeak = [](const Sample &sample) { return std::abs(sample.value) == 1000; };
        const auto isGap = [](const Sample &sample) { return std::isnan(sample.value); };
        QCOMPARE(std::count_if(drawn.begin(), drawn.end(), isPeak), 2);
        QCOMPARE(std::count_if(drawn.begin(), drawn.end(), isGap), 1);
        QCOMPARE(series.drawn(10, 20, 100).size(), std::size_t(12)); // and one after it
    }

    void tooManySamplesLoseTheOldestQuarter()
    {
        History history;
        for (std::size_t i = 0; i <= History::MOST_SAMPLES + 200000; ++i)
            history.add(1, static_cast<double>(i), static_cast<double>(i % 2));
        QVERIFY(history.series(1).samples().size() < History::MOST_SAMPLES);
        QVERIFY(history.span()->from > 4e6);
    }

    void aLogOfTheCommandIsARecording_data()
    {
        QTest::addColumn<QString>("end");
        QTest::newRow("whole") << "";
        QTest::newRow("cut off in a time") << "2026-11-22T10:00:02.0";
        QTest::newRow("cut off in a quoted value") << "2026-11-22T10:00:02.000Z,\"open";
    }

    void aLogOfTheCommandIsARecording()
    {
        QFETCH(QString, end);
        const QString path = m_folder.filePath("log.csv");
        writeTextFile(path, "time,D1 [bar],D1 quality,M0,M0 quality\n"
                            "2026-11-22T10:00:00.000Z,250,good,1,good\n"
                            "2026-11-22T10:00:01.500Z,,pending,0,good\n" +
                                end);
        Recording recording;
        readRecording(path, recording);
        QCOMPARE(recording.tags.size(), std::size_t(2));
        QCOMPARE(recording.tags[0].name, QString("D1"));
        QCOMPARE(recording.tags[0].unit, QString("bar"));
        QVERIFY(!recording.tags[0].isBit && recording.tags[1].isBit);
        QCOMPARE(*recording.history.series(2).at(1795341600), 1.0);
        QVERIFY(!recording.history.series(1).at(1795341601.6));
    }

    // As of a float that is not a number.
    void bitsAmongNumbersAreAGap_data()
    {
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QStringList>("held");
        QTest::newRow("last") << "D50/float32" << QStringList{"1.5", "0x7FC00000"}
                              << QStringList{"1.5", "none"};
        QTest::newRow("first") << "D5/bcd" << QStringList{"0x00FA", "12"}
                               << QStringList{"none", "12"};
        QTest::newRow("all are hexadecimal")
            << "D5/hex" << QStringList{"0x00FA", "0x0001"} << QStringList{"250", "1"};
    }

    void bitsAmongNumbersAreAGap()
    {
        QFETCH(QString, tag);
        QFETCH(QStringList, values);
        const QString path = m_folder.filePath("bits.csv");
        writeTextFile(path, QString("time,%1,%1 quality\n"
                                    "2026-11-22T10:00:00Z,%2,good\n"
                                    "2026-11-22T10:00:10Z,%3,good\n")
                                .arg(tag, values[0], values[1]));
        Recording recording;
        readRecording(path, recording);
        QStringList held;
        for (const double time : {1795341600.0, 1795341610.0}) {
            const auto value = recording.history.series(1).at(time);
            held.append(value ? QString::number(*value) : "none");
        }
        QTEST(held, "held");
    }

    void anotherFileIsNoRecording()
    {
        const QString path = m_folder.filePath("other.csv");
        writeTextFile(path, "day,D1,D1 quality\n2026-11-22,1,good\n");
        QVERIFY(whyNotRead(path).contains("is not a recording: its heading is not"));
    }

    void aDamagedDatabaseIsRefusedAsDamaged()
    {
        const QString path = m_folder.filePath("damaged.sqlite");
        sqlite3 *opened = nullptr;
        QCOMPARE(sqlite3_open(path.toUtf8().constData(), &opened), SQLITE_OK);
        const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
        QCOMPARE(sqlite3_exec(opened,
                              "CREATE TABLE samples(time, tag, value, unit, quality);"
                              "INSERT INTO samples VALUES"
                              "('2026-11-22T10:00:00Z', 'D1', 1, NULL, 'good');",
                              nullptr, nullptr, nullptr),
                 SQLITE_OK);
        Recording whole;
        readRecording(path, whole);
        QCOMPARE(whole.tags.size(), std::size_t(1));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(4096)); // the table's page
        QVERIFY(file.write(QByteArray(4096, '\xff')) == 4096 && file.flush());
        QVERIFY(whyNotRead(path).contains("malformed"));
    }

    void tagsAreFoundByTheirElements()
    {
        const TagIndex index(
            {{1, "D", 100, 1}, {1, "D", 90, 20}, {2, "D", 100, 1}, {1, "M", 100, 1}});
        QCOMPARE(index.in({1, "D", 100, 8}), (std::vector<std::size_t>{1, 0}));
        QCOMPARE(index.in({1, "D", 109, 1}), std::vector<std::size_t>{1});
        QVERIFY(index.in({1, "D", 110, 5}).empty());
        QVERIFY(index.in({3, "D", 100, 5}).empty());
    }

    void timeIsDividedAsClocksAre()
    {
        const QList<double> ticks = timeScale(0, 3600, 700).ticks(QwtScaleDiv::MajorTick);
        QCOMPARE(ticks, (QList<double>{600, 1200, 1800, 2400, 3000})); // none at the ends
    }

private:
    static QString whyNotRead(const QString &path)
    {
        Recording recording;
        try {
            readRecording(path, recording);
        } catch (const Error &error) {
            return error.text();
        }
        return {};
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(HistoryTest)
#include "history_test.moc"
