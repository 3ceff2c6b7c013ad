#include "tests/view/look.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenuBar>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedLayout>
#include <QTabBar>
#include <QTableView>
#include <QToolTip>

#include <qwt_plot.h>

#include <map>

namespace kmr {

namespace {

constexpr int FEWEST_COLOURS = 8;
constexpr double LEAST_INK = 0.003; // share of the pixels that are not background

QString nameOf(const QWidget &widget)
{
    const QString name =
        widget.objectName().isEmpty() ? widget.accessibleName() : widget.objectName();
    return QString("%1 \"%2\"").arg(widget.metaObject()->className(), name);
}

bool isCut(const QWidget &widget, const QString &text, int room)
{
    return widget.fontMetrics().size(Qt::TextShowMnemonic, text).width() > room;
}

class Look {
public:
    explicit Look(QWidget &window) : m_window(window) {}

    QStringList faults()
    {
        for (QLayout *layout : m_window.findChildren<QLayout *>())
            overlaps(*layout);
        for (QWidget *widget : m_window.findChildren<QWidget *>()) {
            if (!widget->isVisible() || widget->size().isEmpty())
                continue;
            place(*widget);
            text(*widget);
            accessibleName(*widget);
            keys(*widget);
            if (auto *plot = qobject_cast<QwtPlot *>(widget))
                ink(*plot);
            if (auto *table = qobject_cast<QTableView *>(widget))
                cells(*table);
        }
        return m_faults;
    }

private:
    void blame(const QWidget &widget, const QString &what)
    {
        m_faults.append(nameOf(widget) + ": " + what);
    }

    void overlaps(const QLayout &layout)
    {
        if (qobject_cast<const QStackedLayout *>(&layout) != nullptr ||
            layout.inherits("QMainWindowLayout") || layout.parentWidget() == nullptr ||
            !layout.parentWidget()->isVisible())
            return;
        QList<QRect> boxes;
        for (int i = 0; i < layout.count(); ++i) {
            const QLayoutItem *item = layout.itemAt(i);
            if (item->isEmpty())
                continue;
            for (const QRect &box : boxes) {
                if (box.intersects(item->geometry()))
                    blame(*layout.parentWidget(), QString("overlap at item %1").arg(i));
            }
            boxes.append(item->geometry());
        }
    }

    // Not outside its parent, unless that scrolls.
    void place(const QWidget &widget)
    {
        const QWidget *parent = widget.parentWidget();
        const bool isInside = widget.isWindow() || parent == nullptr ||
                              parent->rect().contains(widget.geometry()) ||
                              parent->inherits("QAbstractScrollArea") ||
                              parent->objectName() == "qt_scrollarea_viewport" ||
                              widget.inherits("QTabBar") || parent->inherits("QHeaderView");
        if (!isInside)
            blame(widget, "reaches beyond its parent");
    }

    void text(const QWidget &widget)
    {
        if (const auto *label = qobject_cast<const QLabel *>(&widget)) {
            const bool isTooSmall = label->wordWrap()
                                        ? label->height() < label->heightForWidth(label->width())
                                        : label->width() < label->sizeHint().width();
            if (!label->text().isEmpty() && isTooSmall)
                blame(widget, QString("\"%1\" is cut").arg(label->text()));
        } else if (const auto *button = qobject_cast<const QAbstractButton *>(&widget)) {
            if (isCut(widget, button->text(), button->width()))
                blame(widget, QString("\"%1\" is cut").arg(button->text()));
        } else if (const auto *box = qobject_cast<const QComboBox *>(&widget)) {
            if (isCut(widget, box->currentText(), box->width() - 24))
                blame(widget, QString("\"%1\" is cut").arg(box->currentText()));
        } else if (const auto *edit = qobject_cast<const QLineEdit *>(&widget)) {
            if (isCut(widget, edit->placeholderText(), edit->width() - 8))
                blame(widget, QString("\"%1\" is cut").arg(edit->placeholderText()));
        } else if (const auto *tabs = qobject_cast<const QTabBar *>(&widget)) {
            if (tabs->tabRect(tabs->count() - 1).right() > tabs->width())
                blame(widget, "not all pages are seen");
        }
    }

    // One key with Alt has one meaning.
    void keys(const QWidget &widget)
    {
        QStringList texts;
        if (const auto *button = qobject_cast<const QAbstractButton *>(&widget))
            texts.append(button->text());
        if (const auto *menus = qobject_cast<const QMenuBar *>(&widget)) {
            for (const QAction *action : menus->actions())
                texts.append(action->text());
        }
        if (const auto *tabs = qobject_cast<const QTabBar *>(&widget)) {
            for (int tab = 0; tab < tabs->count(); ++tab)
                texts.append(tabs->tabText(tab));
        }
        for (const QString &text : texts) {
            const QString key = QKeySequence::mnemonic(text).toString();
            if (!key.isEmpty() && m_keys.contains(key))
                blame(widget, QString("%1 of \"%2\" has two meanings").arg(key, text));
            m_keys.append(key);
        }
    }

    void accessibleName(QWidget &widget)
    {
        const bool isPart = qobject_cast<QComboBox *>(widget.parentWidget()) != nullptr ||
                            qobject_cast<QAbstractSpinBox *>(widget.parentWidget()) != nullptr;
        const bool isUsed = qobject_cast<QAbstractButton *>(&widget) != nullptr ||
                            qobject_cast<QLineEdit *>(&widget) != nullptr ||
                            qobject_cast<QComboBox *>(&widget) != nullptr ||
                            qobject_cast<QAbstractSpinBox *>(&widget) != nullptr ||
                            qobject_cast<QTableView *>(&widget) != nullptr ||
                            qobject_cast<QwtPlot *>(&widget) != nullptr;
        if (isPart || !isUsed || widget.focusPolicy() == Qt::NoFocus)
            return;
        const auto *reader = QAccessible::queryAccessibleInterface(&widget);
        if (reader == nullptr || reader->text(QAccessible::Name).isEmpty())
            blame(widget, "a screen reader has no name for it");
    }

    void ink(QWidget &pane)
    {
        const QImage image = pane.grab().toImage().convertToFormat(QImage::Format_RGB32);
        std::map<QRgb, int> counts;
        for (int y = 0; y < image.height(); ++y) {
            const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
            for (int x = 0; x < image.width(); ++x)
                ++counts[line[x]];
        }
        int most = 0;
        for (const auto &[colour, count] : counts)
            most = std::max(most, count);
        const double pixels = static_cast<double>(image.width()) * image.height();
        if (static_cast<int>(counts.size()) < FEWEST_COLOURS || 1 - most / pixels < LEAST_INK)
            blame(pane, "is empty");
    }

    void cells(QTableView &table)
    {
        const QHeaderView &heading = *table.horizontalHeader();
        const QAbstractItemModel &model = *table.model();
        for (int column = 0; column < model.columnCount(); ++column) {
            const QString title = model.headerData(column, Qt::Horizontal).toString();
            if (isCut(heading, title, heading.sectionSize(column) - 4))
                blame(table, QString("heading \"%1\" is cut").arg(title));
        }
        if (table.horizontalScrollBar()->maximum() > 0)
            blame(table, "columns are out of view");
        if (model.rowCount() == 0)
            return;
        ink(*table.viewport());
        for (int row = table.rowAt(0); row >= 0 && row < model.rowCount(); ++row) {
            for (int column = 0; column < model.columnCount(); ++column)
                cell(table, model.index(row, column));
        }
    }

    // Whatever does not fit a cell is to be found in its tip.
    void cell(const QTableView &table, const QModelIndex &index)
    {
        const QString text = index.data().toString();
        const int icon = index.data(Qt::DecorationRole).isNull() ? 0 : table.iconSize().width() + 4;
        const bool isSpanned = table.columnSpan(index.row(), index.column()) > 1;
        if (isSpanned || !isCut(table, text, table.columnWidth(index.column()) - icon - 4) ||
            index.data(Qt::ToolTipRole).toString().contains(text))
            return;
        blame(table, QString("cell \"%1\" is cut and has no tip").arg(text));
    }

    QWidget &m_window;
    QStringList m_faults;
    QStringList m_keys; // that widgets have
};

} // namespace

QStringList faultsOfLook(QWidget &window)
{
    return Look(window).faults();
}

} // namespace kmr
