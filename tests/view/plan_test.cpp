// The page of the poll plan.
#include "tests/view/line_fixture.h"

using namespace kmr;

class PlanTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        useOwnSettings(m_folder);
    }

    void theMapShowsWhatIsReadAlong()
    {
        Line line;
        MainWindow window;
        open(window, line, {"D100", "D103"});
        const auto *blocks = child<QTableWidget>(window, "planBlocks");
        QCOMPARE(blocks->rowCount(), 1);
        QCOMPARE(blocks->item(0, 1)->text(), QString("D100 to D103"));
        QCOMPARE(blocks->item(0, 2)->data(Qt::UserRole).toByteArray(), QByteArray("auua"));
        QCOMPARE(blocks->item(0, 3)->text(), QString("2"));
        QVERIFY(blocks->item(0, 2)->toolTip().endsWith("not asked for: D101, D102"));
    }

    void whatIfComparesWithThePlanAsItIs()
    {
        Line line;
        MainWindow window;
        open(window, line, {"D100"});
        const auto *summary = child<QLabel>(window, "planSummary");
        const QString now = summary->text();
        QVERIFY(now.startsWith("As it is: "));
        auto *baud = child<QComboBox>(window, "planBaud");
        QTest::keyClick(baud, Qt::Key_Down);
        QCOMPARE(baud->currentText(), QString("19200"));
        QVERIFY(summary->text().contains("What if: "));
        QTest::keyClick(baud, Qt::Key_Up);
        QCOMPARE(summary->text(), now);
        auto *tag = child<QLineEdit>(window, "planTag");
        QTest::keyClicks(tag, "D200");
        QCOMPARE(child<QTableWidget>(window, "planBlocks")->rowCount(), 2);
        tag->clear();
        QTest::keyClicks(tag, "D99999");
        QVERIFY(child<QLabel>(window, "planVerdict")->text().contains("D99999"));
        QCOMPARE(summary->text(), now);
    }

    void theHoleThatTheTagsHaveForAnotherHostIsSaid()
    {
        Line line;
        MainWindow window;
        open(window, line, {"D4095x2"});
        const auto *blocks = child<QTableWidget>(window, "planBlocks");
        QVERIFY(child<QLabel>(window, "planHole")->text().contains("never reads 1 element"));
        QCOMPARE(blocks->item(0, 1)->text(), QString("D4088 to D4095"));
        QTest::keyClick(child<QCheckBox>(window, "planRaw"), Qt::Key_Space);
        QCOMPARE(blocks->item(0, 1)->text(), QString("D4096"));
        const QString reason = blocks->item(0, 2)->text();
        QVERIFY(reason.startsWith("read wrongly: "));
        QCOMPARE(child<QLabel>(window, "planHole")->text(), "D4096: " + reason);
    }

    void aBadLinkIsSaid()
    {
        const Drivers drivers(DRIVER_LIBRARY);
        ProjectSettings settings;
        const NamedTagReader reader = tagReaderOf(settings, drivers);
        settings.link = "tpc://nowhere";
        PlanView view;
        view.showPlan(settings, {reader.read("D1")}, drivers.forQuestions(), reader);
        QVERIFY(child<QLabel>(view, "planSummary")->text().startsWith("bad link"));
        child<QSpinBox>(view, "planGroupLimit")->setValue(3);
        QCOMPARE(child<QTableWidget>(view, "planBlocks")->rowCount(), 0);
    }

    void aTagThatTheGroupLimitCutsIsNotPlanned()
    {
        Line line;
        MainWindow window;
        open(window, line, {"D100/float32"});
        auto *limit = child<QSpinBox>(window, "planGroupLimit");
        limit->setValue(1);
        QVERIFY2(child<QLabel>(window, "planSummary")->text().contains("D100"),
                 qPrintable(child<QLabel>(window, "planSummary")->text()));
        QCOMPARE(child<QTableWidget>(window, "planBlocks")->rowCount(), 0);
    }

private:
    void open(MainWindow &window, const Line &line, const QStringList &tags)
    {
        window.show();
        QVERIFY(window.start(line.project(tags)));
        child<QTabWidget>(window)->setCurrentIndex(3);
    }

    QTemporaryDir m_folder;
};

QTEST_MAIN(PlanTest)
#include "plan_test.moc"
