// The page of trends, by mouse and by keyboard.
#include "host/project/text_file.h"
#include "tests/view/line_fixture.h"
#include "view/trend_view.h"

#include <qwt_plot_canvas.h>

using namespace kmr;

class TrendTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        useOwnSettings(m_folder);
    }

    void droppedTagsAreDrawnAsTheyAreMeasured()
    {
        Line line;
        OpenWindow window(line, {"D1", "M0x2"});
        const QModelIndexList all = {window.values().index(0, 0), window.values().index(1, 0)};
        const std::unique_ptr<QMimeData> data(window.values().mimeData(all));
        drop(window.trends(), *data);
        const std::vector<TrendStyle> &styles = window.trends().styles();
        QCOMPARE(styles.size(), std::size_t(3));
        QCOMPARE(styles[0].name, QString("D1"));
        QCOMPARE(styles[2].name, QString("M1"));
        QVERIFY(!styles[0].isBit && styles[2].isBit);
        line.set("D", 1, 40);
        QTRY_VERIFY_WITH_TIMEOUT(inkOf(shown(window), styles[0].colour) > 20, PATIENCE);
    }

    void aWriteIsMarked()
    {
        Line line;
        OpenWindow window(line, {"D1"});
        TRY_CELL(0, VALUE, QString("0"));
        mark(window, 0);
        QTest::keyClick(child<QTableView>(window, "values"), Qt::Key_T, Qt::ControlModifier);
        QCOMPARE(window.trends().styles().size(), std::size_t(1));
        const QColor colour = window.trends().styles()[0].colour;
        QVERIFY(inkedRows(shown(window), colour) < 20); // a still value is a flat line
        confirm(typeValue(window, 0, "0"));
        QTRY_VERIFY_WITH_TIMEOUT(inkedRows(shown(window), colour) > 50, PATIENCE);
    }

    void aDoubleClickOnTheCourseShowsTheTrendUntilTheTagIsRemoved()
    {
        Line line;
        OpenWindow window(line, {"D1"});
        doubleClick(window, 0, ValuesModel::COURSE);
        QCOMPARE(window.trends().styles().size(), std::size_t(1));
        mark(window, 0);
        QTest::keyClick(child<QTableView>(window, "values"), Qt::Key_Delete);
        QTRY_COMPARE(window.trends().styles().size(), std::size_t(0));
    }

    void theWheelARectangleAndKeysZoom()
    {
        show();
        const double span = m_view->plot().to() - m_view->plot().from();
        QWheelEvent wheel(QPointF(300, 50), QPointF(), {}, {0, 120}, {}, {}, Qt::NoScrollPhase,
                          false);
        QApplication::sendEvent(canvas(), &wheel);
        QCOMPARE(spanShown(), span * 0.8);
        QTest::keyClick(&m_view->plot(), Qt::Key_Minus);
        QVERIFY(std::abs(spanShown() - span) < 1e-6);
        QTest::mousePress(canvas(), Qt::LeftButton, {}, {100, 20});
        move({200, 60}, Qt::LeftButton);
        QTest::mouseRelease(canvas(), Qt::LeftButton, {}, {200, 60});
        const double share = 100.0 / canvas()->width();
        QVERIFY(std::abs(spanShown() / span - share) < 0.02);
        QTest::keyClick(&m_view->plot(), Qt::Key_Home);
        QVERIFY(std::abs(spanShown() - span) < 1e-6);
    }

    void theMiddleButtonAndArrowsMoveThroughTime()
    {
        show();
        const double from = m_view->plot().from();
        const double span = spanShown();
        QTest::keyClick(&m_view->plot(), Qt::Key_Left);
        QVERIFY(std::abs(m_view->plot().from() - (from - span / 10)) < 1e-6);
        QTest::mousePress(canvas(), Qt::MiddleButton, {}, {200, 30});
        move({100, 30}, Qt::MiddleButton);
        QTest::mouseRelease(canvas(), Qt::MiddleButton, {}, {100, 30});
        const double moved = span * 100 / canvas()->width();
        QVERIFY(std::abs(m_view->plot().from() - (from - span / 10 + moved)) < 1e-6);
    }

    void pauseStopsTheViewAndKeepsRecording()
    {
        show();
        m_view->plot().follow(true);
        m_view->refresh(2000);
        QCOMPARE(m_view->plot().to(), 2000.0);
        QTest::keyClick(&m_view->plot(), Qt::Key_Space);
        m_view->refresh(3000);
        QCOMPARE(m_view->plot().to(), 2000.0);
        QVERIFY(child<QToolBar>(*m_view)->actions().front()->isChecked());
    }

    void markersGiveTheFiguresBetweenThem()
    {
        show();
        m_view->plot().show(0, 100);
        m_view->plot().setMarker(TrendPlot::A, 20);
        m_view->plot().setMarker(TrendPlot::B, 60);
        auto *table = child<TrendTable>(*m_view);
        const auto text = [&](int column) { return table->item(0, column)->text(); };
        QCOMPARE(text(TrendTable::AT_A), QString("20"));
        QCOMPARE(text(TrendTable::AT_B), QString("60"));
        QCOMPARE(text(TrendTable::DIFFERENCE), QString("40"));
        QCOMPARE(text(TrendTable::LEAST), QString("20"));
        QCOMPARE(text(TrendTable::MOST), QString("60"));
        QCOMPARE(text(TrendTable::MEAN), QString("40"));
        QTest::keyClick(&m_view->plot(), Qt::Key_A); // at the middle
        QCOMPARE(text(TrendTable::AT_A), QString("50"));
    }

    void theCursorShowsTheValuesUnderIt()
    {
        show();
        m_view->plot().show(0, 100);
        move({canvas()->width() / 2, 20}, Qt::NoButton);
        auto *table = child<TrendTable>(*m_view);
        QVERIFY(std::abs(table->item(0, TrendTable::CURSOR)->text().toDouble() - 50) < 0.2);
    }

    void factorAndAxisChangeOnlyWhatIsShown()
    {
        show();
        auto *table = child<TrendTable>(*m_view);
        table->item(0, TrendTable::FACTOR)->setText("0,5");
        table->item(0, TrendTable::OFFSET)->setText("-1");
        table->setCurrentCell(0, TrendTable::AXIS);
        QTest::keyClick(table, Qt::Key_Return);
        m_view->plot().setMarker(TrendPlot::A, 40);
        QCOMPARE(table->item(0, TrendTable::AT_A)->text(), QString("19"));
        QVERIFY(m_view->styles()[0].isRight);
        QCOMPARE(*m_history.series(1).at(40), 40.0);
        for (const char *bad : {"nothing", "inf"}) {
            table->item(0, TrendTable::FACTOR)->setText(bad);
            QCOMPARE(table->item(0, TrendTable::FACTOR)->text(), QString("0.5"));
        }
    }

    void theVisibleSpanIsExported()
    {
        show();
        m_view->plot().show(10, 12.5);
        const QString csv = m_folder.filePath("span.csv");
        m_view->exportTo(csv);
        const QStringList lines = readTextFile(csv).split('\n');
        QCOMPARE(lines.front(), QString("time,ramp [bar],ramp quality,bit,bit quality"));
        QCOMPARE(lines.size(), 5); // 10, 11 and 12
        QVERIFY2(lines[1].endsWith(",10,good,0,good"), qPrintable(lines[1]));
        for (const char *name : {"span.png", "span.svg"}) {
            m_view->exportTo(m_folder.filePath(name));
            const QImage picture(m_folder.filePath(name));
            QVERIFY2(inkOf(picture, m_view->styles()[0].colour) > 100, name);
        }
    }

    void cleanup()
    {
        m_view.reset();
    }

private:
    // A ramp and a bit over 100 seconds.
    void show()
    {
        m_history.clear();
        for (int second = 0; second <= 100; ++second) {
            m_history.add(1, second, second);
            m_history.add(2, second, second / 25 % 2);
        }
        m_view = std::make_unique<TrendView>(m_history);
        m_view->add(1, "ramp", "bar", false);
        m_view->add(2, "bit", "", true);
        m_view->resize(700, 500);
        m_view->show();
        m_view->plot().showAll();
        QCOMPARE(m_view->plot().isFollowing(), false);
    }

    QwtPlotCanvas *canvas()
    {
        return child<QwtPlotCanvas>(*m_view);
    }

    void move(const QPoint &place, Qt::MouseButton held)
    {
        QMouseEvent event(QEvent::MouseMove, place, Qt::NoButton, held, {});
        QApplication::sendEvent(canvas(), &event);
    }

    double spanShown()
    {
        return m_view->plot().to() - m_view->plot().from();
    }

    static QImage shown(MainWindow &window)
    {
        return window.trends().plot().grab().toImage();
    }

    // Pixels that have a curve's colour.
    static int inkOf(const QImage &image, const QColor &colour)
    {
        int ink = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                ink +=
                    std::abs(pixel.hue() - colour.hue()) < 12 && pixel.saturation() > 100 ? 1 : 0;
            }
        }
        return ink;
    }

    static int inkedRows(const QImage &image, const QColor &colour)
    {
        int rows = 0;
        for (int y = 0; y < image.height(); ++y)
            rows += inkOf(image.copy(0, y, image.width(), 1), colour) > 0 ? 1 : 0;
        return rows;
    }

    QTemporaryDir m_folder;
    History m_history;
    std::unique_ptr<TrendView> m_view;
};

QTEST_MAIN(TrendTest)
#include "trend_test.moc"
