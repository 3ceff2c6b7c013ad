// The pages of traffic and of the line.
#include "tests/view/line_fixture.h"
#include "view/capture_values.h"
#include "view/frame_bytes.h"
#include "view/line_counts.h"
#include "view/traffic_model.h"

#include <numeric>

using namespace kmr;

class TrafficTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        useOwnSettings(m_folder);
    }

    void exchangesAreExplainedAndFiltered()
    {
        Line line({"exception=2,every=3"});
        OpenWindow window(line, {"D100"});
        const auto *table = child<QTableView>(window, "traffic");
        QTRY_VERIFY_WITH_TIMEOUT(table->model()->rowCount() > 20, PATIENCE);
        auto *kind = child<QComboBox>(window, "trafficKind");
        QTest::keyClick(kind, Qt::Key_Down);
        QTest::keyClick(kind, Qt::Key_Down); // refused
        QTRY_VERIFY_WITH_TIMEOUT(table->model()->rowCount() > 2, PATIENCE);
        for (int row = 0; row < 3; ++row)
            QVERIFY(text(*table, row, TrafficModel::ANSWER).contains("exception 02"));
        kind->setCurrentIndex(TrafficFilter::ALL);
        QTest::keyClick(child<QComboBox>(window, "trafficFunction"), Qt::Key_Down);
        QTRY_VERIFY_WITH_TIMEOUT(table->model()->rowCount() > 0, PATIENCE);
        for (int row = 0; row < table->model()->rowCount(); ++row)
            QVERIFY(text(*table, row, TrafficModel::FUNCTION).startsWith("02"));
        kind->setCurrentIndex(TrafficFilter::FAULTY);
        QCOMPARE(table->model()->rowCount(), 0);
        kind->setCurrentIndex(TrafficFilter::ALL);
        QTRY_VERIFY_WITH_TIMEOUT(table->model()->rowCount() > 0, PATIENCE);
        QTest::keyClicks(child<QLineEdit>(window, "trafficStation"), "7");
        QCOMPARE(table->model()->rowCount(), 0);
    }

    void aClickExplainsAFrameByteByByte()
    {
        Line line;
        line.set("D", 100, 258);
        OpenWindow window(line, {"D100"});
        child<QTabWidget>(window)->setCurrentIndex(1);
        const auto *table = child<QTableView>(window, "traffic");
        QTRY_VERIFY_WITH_TIMEOUT(table->model()->rowCount() > 5, PATIENCE);
        int row = 0;
        while (text(*table, row, TrafficModel::ELEMENTS) != "D100")
            ++row;
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          table->visualRect(table->model()->index(row, 1)).center());
        const auto *bytes = child<QTableWidget>(window, "bytes");
        QVERIFY(bytes->rowCount() > 10);
        QCOMPARE(bytes->item(3, 1)->text(), QString("1064"));
        QCOMPARE(bytes->item(3, 3)->text(), QString("D100"));
    }

    void theLrcIsWorkedOut()
    {
        const std::vector<FramePart> good = explainBytes(":01031064000187\r\n", {});
        QCOMPARE(good[5].name, QString("LRC"));
        QCOMPARE(good[5].meaning,
                 QString::fromUtf8("right: 01+03+10+64+00+01 = 79; 100 − 79 = 87"));
        const std::vector<FramePart> bad = explainBytes(":0103020001F8\r\n", ":01031064000187\r\n");
        QCOMPARE(bad[4].name, QString("D100"));
        QCOMPARE(bad[4].meaning, QString("1"));
        QVERIFY(bad[5].isBad);
        QCOMPARE(bad[5].meaning, QString::fromUtf8("wrong: 01+03+02+00+01 = 07; 100 − 07 = F9"));
    }

    void everyKindOfFrameIsTakenApart_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QString>("meanings");
        QTest::newRow("bits") << QByteArray(":01020105F7\r\n") << QByteArray(":010204000010E9\r\n")
                              << "from X0 on: X0, X2 on";
        QTest::newRow("bit write") << QByteArray(":01050500FF00F6\r\n") << QByteArray() << "Y0;on";
        QTest::newRow("write") << QByteArray(":0110106400010200FA7E\r\n") << QByteArray()
                               << "D100;1;2;250";
        QTest::newRow("refusal") << QByteArray(":0183027A\r\n") << QByteArray(":01031064000187\r\n")
                                 << "\"read registers\" is refused;illegal data address";
        QTest::newRow("noise") << QByteArray(":01\r\n") << QByteArray() << "too short";
    }

    void everyKindOfFrameIsTakenApart()
    {
        QFETCH(QByteArray, line);
        QFETCH(QByteArray, request);
        QFETCH(QString, meanings);
        QStringList found;
        for (const FramePart &part : explainBytes(line, request))
            found.append(part.meaning);
        for (const QString &meaning : meanings.split(';'))
            QVERIFY2(found.contains(meaning), qPrintable(found.join('|')));
    }

    void aCaptureEndsWithItsLine()
    {
        Line line;
        OpenWindow window(line, {"D100"});
        auto *view = window.findChild<TrafficView *>();
        emit view->captureWanted(m_folder.filePath("ended.kmr"));
        QVERIFY(child<QAction>(*view, "capture")->isChecked());
        QVERIFY(window.start(line.project({"D100"})));
        QVERIFY(!child<QAction>(*view, "capture")->isChecked());
    }

    void anExaminationThatIsNotBegunIsReportedAsStopped()
    {
        const Drivers drivers(DRIVER_LIBRARY);
        LineThread thread(drivers.forLine(), {});
        thread.examine();
        thread.stop();
        const LineNews news = thread.take();
        QCOMPARE(news.examinations.size(), std::size_t(1));
        QVERIFY(!news.examinations[0].diagnosis);
    }

    void aCaptureIsWrittenAndOpened()
    {
        Line line;
        OpenWindow window(line, {"D100"});
        const QString path = m_folder.filePath("line.kmr");
        auto *view = window.findChild<TrafficView *>();
        emit view->captureWanted(path);
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(path).size() > 2000, PATIENCE);
        QVERIFY(child<QAction>(*view, "capture")->isChecked());
        child<QAction>(*view, "capture")->trigger();
        QVERIFY(!child<QAction>(*view, "capture")->isChecked());
        window.openRecorded(path);
        auto *pages = child<QTabWidget>(window);
        const QTableView *table = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT(
            (table = pages->currentWidget()->findChild<QTableView *>("traffic")) != nullptr,
            PATIENCE);
        QVERIFY(table->model()->rowCount() > 5);
        for (int row = 0; row < 5; ++row)
            QCOMPARE(table->model()->index(row, 0).data(TrafficModel::OUTCOME_ROLE).toInt(),
                     static_cast<int>(TrafficRow::Outcome::Good));
        const auto *trends = pages->widget(pages->count() - 2)->findChild<TrendView *>();
        QVERIFY(!trends->styles().empty());
    }

    void aCaptureHoldsTheValuesThatItsAnswersConfirmed()
    {
        Capture capture;
        capture.begin = QDateTime::fromMSecsSinceEpoch(1000000);
        const auto add = [&](int second, const char *sent, const char *received) {
            capture.pieces.push_back({second * 1000000, true, sent});
            if (*received != '\0')
                capture.pieces.push_back({second * 1000000 + 500000, false, received});
        };
        add(0, ":01031064000286\r\n", ":01030400FA0001FD\r\n");
        add(1, ":010204000008F1\r\n", ":01020105F7\r\n");
        add(2, ":01031064000286\r\n", "");
        add(3, ":01031064000286\r\n", ":01030400FB0001FC\r\n");
        add(4, ":02031064000285\r\n", ":02830279\r\n");
        Recording recording;
        QVERIFY(readValues(trafficOf(capture), recording));
        QCOMPARE(recording.tags.size(), std::size_t(10));
        QCOMPARE(recording.tags[0].name, QString("D100"));
        QCOMPARE(*recording.history.series(1).at(1000.5), 250.0);
        QVERIFY(!recording.history.series(1).at(1003)); // not answered
        QCOMPARE(*recording.history.series(1).at(1003.5), 251.0);
        QCOMPARE(recording.tags[4].name, QString("X2"));
        QVERIFY(recording.tags[4].isBit);
        QCOMPARE(*recording.history.series(5).at(1001.5), 1.0);
        QCOMPARE(rowsOf(trafficOf(capture)).back().outcome, TrafficRow::Outcome::Refused);
    }

    void countsOfASecondGiveRatesAndShares()
    {
        LineCounts counts;
        using Outcome = Exchange::Outcome;
        for (int i = 0; i < 10; ++i)
            counts.add({100.5, 1, Outcome::Good, {}, std::chrono::milliseconds(10 + i), 40});
        counts.add({101.0, 2, Outcome::GivenUp, {ReplyFault::Silence, 0, {}}, {}, 17});
        counts.add({101.1, 2, Outcome::GivenUp, {ReplyFault::None, 2, {}}, {}, 30});
        counts.add({101.2, 2, Outcome::PassedOver, {}, {}, 0});
        QCOMPARE(counts.seconds().size(), std::size_t(2));
        QCOMPARE(counts.seconds()[1].silent, 1);
        QCOMPARE(counts.stations().at(2).refused, std::uint64_t(1));
        QCOMPARE(counts.stations().at(1).longest, 0.019);
        QCOMPARE(stateOf(counts.stations().at(2)).kind, StationState::Kind::Limps);
        QCOMPARE(stateOf(counts.stations().at(2)).share, 0.5);
        for (int second = 102; second < 106; ++second)
            counts.add({second + 0.1, 2, Outcome::GivenUp, {ReplyFault::Silence, 0, {}}, {}, 17});
        QCOMPARE(stateOf(counts.stations().at(2)).kind, StationState::Kind::Silent);
        QCOMPARE(counts.rate(102.0, 2), 6.0);
        QCOMPARE(counts.wireShare(101.9, 1, std::chrono::milliseconds(1)), 0.4);
        const RoundTripBins bins = binsOf(counts.roundTrips(), 4);
        QCOMPARE(std::accumulate(bins.counts.begin(), bins.counts.end(), 0), 10);
        QCOMPARE(bins.counts[0], 0);
    }

    void aLimpingStationIsSeen()
    {
        Line line({"silence,every=4"});
        MainWindow window;
        window.show();
        ProjectSettings settings = line.project({"D100"});
        settings.timeout = std::chrono::milliseconds(30);
        QVERIFY(window.start(settings));
        auto *hint = child<QToolButton>(window, "hint");
        QTRY_VERIFY_WITH_TIMEOUT(hint->text().startsWith("Station 1 limps: "), PATIENCE);
        QTest::mouseClick(hint, Qt::LeftButton);
        QCOMPARE(child<QTabWidget>(window)->currentIndex(), 2);
        const auto *stations = child<QTableWidget>(window, "stations");
        QTRY_VERIFY_WITH_TIMEOUT(stations->rowCount() == 1 &&
                                     stations->item(0, 1)->text().startsWith("limps: "),
                                 PATIENCE);
    }

    void aStationThatIsPolledNoMoreIsForgotten()
    {
        Line line;
        OpenWindow window(line, {"D1", "2#D1"}); // nobody is station 2
        auto *hint = child<QToolButton>(window, "hint");
        QTRY_VERIFY_WITH_TIMEOUT(hint->text().startsWith("Station 2 "), PATIENCE);
        mark(window, 1);
        QTest::keyClick(child<QTableView>(window, "values"), Qt::Key_Delete);
        QTRY_VERIFY_WITH_TIMEOUT(hint->isHidden(), PATIENCE);
    }

    void theLineIsExaminedAtTheButton()
    {
        Line line({"exception=2"});
        OpenWindow window(line, {"D100"});
        child<QTabWidget>(window)->setCurrentIndex(2);
        QTest::mouseClick(child<QPushButton>(window, "examine"), Qt::LeftButton);
        const auto *verdict = child<QLabel>(window, "verdict");
        QTRY_VERIFY_WITH_TIMEOUT(verdict->text().contains("illegal data address"), PATIENCE);
        line.setHits(Line::Hits::None);
        QTest::keyClick(child<QPushButton>(window, "examine"), Qt::Key_Space);
        QTRY_VERIFY_WITH_TIMEOUT(verdict->text().startsWith("The station answers"), PATIENCE);
        TRY_CELL(0, QUALITY, QString("good"));
    }

private:
    static QString text(const QTableView &table, int row, int column)
    {
        return table.model()->index(row, column).data().toString();
    }

    QTemporaryDir m_folder;
};

QTEST_MAIN(TrafficTest)
#include "traffic_test.moc"
