// A window on a real line: a simulated controller, served over TCP by the test's own event loop.
#pragma once

#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/tcp_server.h"
#include "view/main_window.h"
#include "view/write_dialog.h"

#include <QMimeData>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

namespace kmr {

constexpr int PATIENCE = 30000; // ms that a busy machine may take for what is done at once

// Settings of a folder of their own, so that no test sees another's.
inline void useOwnSettings(const QTemporaryDir &folder)
{
    QCoreApplication::setOrganizationName("test");
    QCoreApplication::setApplicationName("kmr-view-test");
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder.path());
    QSettings().clear();
}

class Line {
public:
    // `faults`: as typed, "silence".
    explicit Line(const QStringList &faults = {})
        : m_faults(parse(faults), 1), m_server([this](const QByteArray &line) {
              const bool isRead = line.mid(3, 2) == "02" || line.mid(3, 2) == "03";
              const bool isHit = m_hits == Hits::All || (m_hits == Hits::Writes && !isRead);
              return (isHit ? m_faults : m_good).answer(m_controller, line);
          })
    {
        const QString error = m_server.listen("127.0.0.1", 0);
        if (!error.isEmpty())
            qFatal("%s", qPrintable(error));
    }

    QString link() const
    {
        return QString("tcp://127.0.0.1:%1").arg(m_server.port());
    }

    ProjectSettings project(const QStringList &tags) const
    {
        ProjectSettings settings;
        settings.link = link();
        settings.driver = DRIVER_LIBRARY;
        settings.timeout = std::chrono::milliseconds(200);
        settings.retries = 0;
        settings.tags = tags;
        return settings;
    }

    void set(const QString &area, int number, std::uint32_t value)
    {
        if (!simulator::setElement(m_controller.memory(), area, number, value))
            qFatal("no such element");
    }

    std::uint32_t get(const QString &area, int number) const
    {
        return *simulator::element(m_controller.memory(), area, number);
    }

    // What the faults hit; at first all.
    enum class Hits { None, Writes, All };
    void setHits(Hits hits)
    {
        m_hits = hits;
    }

private:
    static std::vector<simulator::Fault> parse(const QStringList &texts)
    {
        std::vector<simulator::Fault> faults;
        for (const QString &text : texts) {
            QString error;
            const auto fault = simulator::parseFault(text, error);
            if (!fault)
                qFatal("%s", qPrintable(error));
            faults.push_back(*fault);
        }
        return faults;
    }

    simulator::Controller m_controller{"01"};
    simulator::Faults m_faults;
    simulator::Faults m_good;
    Hits m_hits = Hits::All;
    simulator::TcpServer m_server;
};

template <typename Widget> Widget *child(QWidget &parent, const char *name = nullptr)
{
    auto *found = parent.findChild<Widget *>(name != nullptr ? QString(name) : QString());
    if (found == nullptr)
        qFatal("the window has no %s",
               name != nullptr ? name : Widget::staticMetaObject.className());
    return found;
}

// What the table shows in a row, as it is sorted and filtered.
inline QString cell(MainWindow &window, int row, int column)
{
    const QAbstractItemModel *model = child<QTableView>(window, "values")->model();
    return model->index(row, column).data().toString();
}

// The same as soon as the line has brought it; within a test that has a `window`.
#define TRY_CELL(row, column, expected)                                                            \
    QTRY_COMPARE_WITH_TIMEOUT(cell(window, row, ValuesModel::column), expected, PATIENCE)

// A window that shows tags of a line.
class OpenWindow : public MainWindow {
public:
    OpenWindow(const Line &line, const QStringList &tags)
    {
        show();
        if (!start(line.project(tags)))
            qFatal("the line could not be opened");
    }
};

inline void addTag(MainWindow &window, const char *text)
{
    auto *edit = child<QLineEdit>(window, "tagText");
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
}

inline void drop(QWidget &target, const QMimeData &data)
{
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&target, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent dropped({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&target, &dropped);
}

inline void dropFile(MainWindow &window, const QString &path)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    drop(window, data);
}

// A key of the window's menus.
inline void press(MainWindow &window, Qt::Key key)
{
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window, PATIENCE));
    QTest::keyClick(&window, key, Qt::ControlModifier);
}

inline void mark(MainWindow &window, int row)
{
    auto *table = child<QTableView>(window, "values");
    table->selectRow(row);
    window.activateWindow();
    table->setFocus();
    QTRY_VERIFY(table->hasFocus());
}

inline void doubleClick(MainWindow &window, int row, int column)
{
    auto *table = child<QTableView>(window, "values");
    const QRect box = table->visualRect(table->model()->index(row, column));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, box.center());
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, box.center());
}

// Types a new value of a tag, which its dialog may confirm now.
inline WriteDialog &typeValue(MainWindow &window, int row, const char *value)
{
    doubleClick(window, row, ValuesModel::VALUE);
    auto *dialog = child<WriteDialog>(window);
    QTest::keyClicks(child<QComboBox>(*dialog, "newValue"), value);
    return *dialog;
}

inline void confirm(WriteDialog &dialog)
{
    QTest::mouseClick(child<QPushButton>(dialog, "write"), Qt::LeftButton);
}

} // namespace kmr
