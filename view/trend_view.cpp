#include "view/trend_view.h"

#include "host/error.h"
#include "view/trend_export.h"
#include "view/values_model.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>

namespace kmr {

TrendView::TrendView(const History &history, QWidget *parent)
    : QWidget(parent), m_history(history), m_plot(new TrendPlot(history)), m_table(new TrendTable),
      m_hint(new QLabel(tr("Drag tags here, or mark them in the table and press Ctrl+T.")))
{
    setAcceptDrops(true);
    auto *bar = new QToolBar;
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    makeActions(*bar);
    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(m_plot);
    splitter->addWidget(m_table);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    m_table->setMinimumHeight(fontMetrics().height() * 4);
    splitter->setSizes({400, fontMetrics().height() * 10});
    splitter->setChildrenCollapsible(false);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 0, 6, 6);
    layout->addWidget(bar);
    layout->addWidget(m_hint);
    layout->addWidget(splitter, 1);
    m_hint->setMargin(6);
    connect(m_plot, &TrendPlot::lookedAtChanged, this,
            [this] { m_table->showFigures(m_history, *m_plot); });
    connect(m_plot, &TrendPlot::followingChanged, this,
            [this](bool isFollowing) { m_follow->setChecked(!isFollowing); });
    connect(m_table, &TrendTable::styleChanged, this, &TrendView::restyle);
    showStyles();
}

void TrendView::makeActions(QToolBar &bar)
{
    const auto add = [&](const QString &name, const QString &text, const QString &tip,
                         const std::function<void()> &action) {
        QAction *added = bar.addAction(text, this, action);
        added->setObjectName(name);
        added->setToolTip(tip);
        return added;
    };
    m_follow = add("pause", tr("Pause"), tr("Stop moving; what comes is kept (Space)"),
                   [this] { m_plot->follow(!m_follow->isChecked()); });
    m_follow->setCheckable(true);
    add("all", tr("All"), tr("Show all that was measured (Home)"), [this] { m_plot->showAll(); });
    add("markerA", tr("Marker A"),
        tr("Put marker A into the first third; the key A puts it under the mouse"),
        [this] { m_plot->setMarker(TrendPlot::A, (m_plot->from() * 2 + m_plot->to()) / 3); });
    add("markerB", tr("Marker B"),
        tr("Put marker B into the last third; the key B puts it under the mouse"),
        [this] { m_plot->setMarker(TrendPlot::B, (m_plot->from() + m_plot->to() * 2) / 3); });
    add("noMarkers", tr("No markers"), tr("Take the markers away (Escape)"), [this] {
        m_plot->setMarker(TrendPlot::A, {});
        m_plot->setMarker(TrendPlot::B, {});
    });
    bar.addSeparator();
    QAction *remove = add("removeCurve", tr("Remove"), tr("Hide the marked tags (Delete)"),
                          [this] { removeMarked(); });
    remove->setShortcut(QKeySequence::Delete);
    QAction *exports =
        add("export", tr("Export…"), tr("Write the visible span as CSV, PNG or SVG (Ctrl+E)"),
            [this] { chooseExport(); });
    exports->setShortcut(QKeySequence("Ctrl+E"));
    for (QAction *action : {remove, exports}) {
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
    }
}

void TrendView::add(int id, const QString &name, const QString &unit, bool isBit)
{
    const bool isShown = std::any_of(m_styles.begin(), m_styles.end(),
                                     [id](const TrendStyle &style) { return style.id == id; });
    if (isShown)
        return;
    TrendStyle style;
    style.id = id;
    style.name = name;
    style.unit = unit;
    style.isBit = isBit;
    giveLook(style, m_added++);
    // Another unit has an axis of its own, if there is one left.
    const auto first = std::find_if(m_styles.begin(), m_styles.end(),
                                    [](const TrendStyle &other) { return !other.isBit; });
    style.isRight = first != m_styles.end() && first->unit != unit;
    m_styles.push_back(style);
    showStyles();
}

void TrendView::restyle(int place, const TrendStyle &style)
{
    m_styles[static_cast<std::size_t>(place)] = style;
    showStyles();
}

void TrendView::remove(int id)
{
    const auto gone = std::remove_if(m_styles.begin(), m_styles.end(),
                                     [id](const TrendStyle &style) { return style.id == id; });
    if (gone == m_styles.end())
        return;
    m_styles.erase(gone, m_styles.end());
    showStyles();
}

void TrendView::clear()
{
    m_styles.clear();
    m_added = 0;
    showStyles();
}

void TrendView::removeMarked()
{
    std::vector<int> ids;
    for (const int row : m_table->markedRows())
        ids.push_back(m_styles[static_cast<std::size_t>(row)].id);
    for (const int id : ids)
        remove(id);
}

void TrendView::showStyles()
{
    m_hint->setVisible(m_styles.empty() && acceptDrops());
    m_plot->setCurves(m_styles);
    m_table->setStyles(m_styles);
    m_table->showFigures(m_history, *m_plot);
}

void TrendView::refresh(double now)
{
    m_plot->refresh(now);
    m_table->showFigures(m_history, *m_plot);
}

void TrendView::chooseExport()
{
    auto *dialog =
        new QFileDialog(this, tr("Export the visible span"), "trend.csv",
                        tr("Values (*.csv);;Picture of pixels (*.png);;Picture of lines (*.svg)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix("csv");
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString &path) {
        try {
            exportTo(path);
        } catch (const Error &error) {
            QMessageBox::warning(this, tr("Export"), error.text());
        }
    });
    dialog->open();
}

void TrendView::exportTo(const QString &path)
{
    const QString ending = QFileInfo(path).suffix().toLower();
    if (ending == "csv")
        writeCsv(path, m_history, m_styles, m_plot->from(), m_plot->to());
    else if (ending == "png" || ending == "svg")
        writePicture(path, *m_plot);
    else
        throw Error(ErrorKind::Usage,
                    tr("%1: the name is to end with .csv, .png or .svg").arg(path));
}

void TrendView::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasFormat(ValuesModel::MIME_TYPE))
        event->acceptProposedAction();
}

void TrendView::dropEvent(QDropEvent *event)
{
    std::vector<int> ids;
    for (const QByteArray &id : event->mimeData()->data(ValuesModel::MIME_TYPE).split(' '))
        ids.push_back(id.toInt());
    event->acceptProposedAction();
    emit tagsDropped(ids);
}

} // namespace kmr
