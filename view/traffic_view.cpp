#include "view/traffic_view.h"

#include "view/frame_bytes.h"
#include "view/quality_icon.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

namespace kmr {

namespace {

void addPart(QTableWidget &table, const QString &direction, const FramePart &part)
{
    const int row = table.rowCount();
    table.insertRow(row);
    const QString texts[] = {direction, part.characters, part.name, part.meaning};
    for (int column = 0; column < static_cast<int>(std::size(texts)); ++column) {
        auto *item = new QTableWidgetItem(texts[column]); // the table deletes it
        item->setToolTip(texts[column]);
        if (part.isBad)
            item->setForeground(badColour());
        table.setItem(row, column, item);
    }
}

} // namespace

void TrafficFilter::set(const QString &station, const QString &function, Kind kind)
{
    m_station = station;
    m_function = function;
    m_kind = kind;
    invalidateFilter();
}

bool TrafficFilter::filterAcceptsRow(int row, const QModelIndex &parent) const
{
    const QModelIndex index = sourceModel()->index(row, TrafficModel::STATION, parent);
    if (!m_station.isEmpty() && index.data().toString() != m_station)
        return false;
    if (!m_function.isEmpty() && index.data(TrafficModel::FUNCTION_ROLE) != m_function)
        return false;
    const auto outcome =
        static_cast<TrafficRow::Outcome>(index.data(TrafficModel::OUTCOME_ROLE).toInt());
    switch (m_kind) {
    case GOOD:
        return outcome == TrafficRow::Outcome::Good;
    case REFUSED:
        return outcome == TrafficRow::Outcome::Refused;
    case FAILED:
        return outcome == TrafficRow::Outcome::Silent || outcome == TrafficRow::Outcome::Faulty;
    case SILENT:
        return outcome == TrafficRow::Outcome::Silent;
    case FAULTY:
        return outcome == TrafficRow::Outcome::Faulty;
    case ALL:
        break;
    }
    return true;
}

TrafficView::TrafficView(bool canCapture, QWidget *parent)
    : QWidget(parent), m_filter(new TrafficFilter(this)), m_station(new QLineEdit),
      m_function(new QComboBox), m_kind(new QComboBox), m_table(new QTableView),
      m_bytes(new QTableWidget(0, 4)), m_bar(new QWidget)
{
    m_filter->setSourceModel(&m_model);
    m_table->setObjectName("traffic");
    m_table->setAccessibleName(tr("Exchanges"));
    m_table->setModel(m_filter);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setWordWrap(false);
    m_table->setShowGrid(false);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    const char *const widest[] = {"00:00:00.000", "Station ", "10 write multiple registers",
                                  "D1000 to D1007", "Round trip"};
    for (int column = 0; column < static_cast<int>(std::size(widest)); ++column)
        m_table->setColumnWidth(column, fontMetrics().horizontalAdvance(widest[column]) + 12);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_bytes->setObjectName("bytes");
    m_bytes->setAccessibleName(tr("The marked exchange, byte by byte"));
    m_bytes->setHorizontalHeaderLabels({tr("From"), tr("Characters"), tr("What"), tr("Meaning")});
    m_bytes->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_bytes->setTabKeyNavigation(false);
    m_bytes->verticalHeader()->hide();
    m_bytes->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    m_bytes->horizontalHeader()->setStretchLastSection(true);
    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(m_table);
    splitter->addWidget(m_bytes);
    splitter->setChildrenCollapsible(false);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    makeBar(canCapture); // before it gets its place, which is that in the order of the Tab key
    layout->addWidget(m_bar);
    layout->addWidget(splitter, 1);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { explain(); });
}

void TrafficView::makeBar(bool canCapture)
{
    m_station->setObjectName("trafficStation");
    m_station->setPlaceholderText(tr("Station"));
    m_station->setAccessibleName(tr("Only this station"));
    m_station->setMaximumWidth(80);
    m_function->setObjectName("trafficFunction");
    m_function->setAccessibleName(tr("Only this function"));
    m_function->addItems({tr("All functions"), "02", "03", "05", "10"});
    m_kind->setObjectName("trafficKind");
    m_kind->setAccessibleName(tr("Only these outcomes"));
    m_kind->addItems({tr("All outcomes"), tr("Good"), tr("Refused"), tr("Failed"), tr("No answer"),
                      tr("Bad answer")});
    auto *clear = new QToolButton;
    clear->setText(tr("Clear"));
    auto *line = new QHBoxLayout(m_bar);
    line->setContentsMargins(0, 0, 0, 0);
    for (QWidget *widget : {static_cast<QWidget *>(m_station), static_cast<QWidget *>(m_function),
                            static_cast<QWidget *>(m_kind), static_cast<QWidget *>(clear)})
        line->addWidget(widget);
    line->addStretch();
    if (canCapture) {
        auto *button = new QToolButton;
        m_capture = new QAction(tr("Capture to file…"), this);
        m_capture->setObjectName("capture");
        m_capture->setCheckable(true);
        button->setDefaultAction(m_capture);
        line->addWidget(button);
        connect(m_capture, &QAction::triggered, this, [this](bool isWanted) {
            m_capture->setChecked(!isWanted); // until it has begun, or is over
            if (isWanted)
                chooseCapture();
            else
                emit captureWanted({});
        });
    }
    connect(m_station, &QLineEdit::textChanged, this, [this] { filter(); });
    for (QComboBox *box : {m_function, m_kind})
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                [this] { filter(); });
    connect(clear, &QToolButton::clicked, this, [this] { m_model.clear(); });
}

// Stays at the end if it is there.
void TrafficView::add(const std::vector<TrafficNews> &traffic)
{
    const QScrollBar *bar = m_table->verticalScrollBar();
    const bool isAtEnd = bar->value() == bar->maximum();
    m_model.add(traffic);
    if (isAtEnd && isVisible())
        m_table->scrollToBottom();
}

void TrafficView::filter()
{
    const QString station = m_station->text().trimmed();
    m_filter->set(station.isEmpty() ? QString() : station.rightJustified(2, '0'),
                  m_function->currentIndex() == 0 ? QString() : m_function->currentText(),
                  static_cast<TrafficFilter::Kind>(m_kind->currentIndex()));
}

void TrafficView::explain()
{
    m_bytes->setRowCount(0);
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return;
    const TrafficNews &traffic = m_model.row(m_filter->mapToSource(rows.front()).row()).traffic;
    if (!traffic.sent.isEmpty()) {
        for (const FramePart &part : explainBytes(traffic.sent, {}))
            addPart(*m_bytes, tr("host"), part);
    }
    modbus::LineCollector collector;
    QByteArray lines;
    for (const QByteArray &line : collector.take(traffic.received)) {
        lines += line;
        for (const FramePart &part : explainBytes(line, traffic.sent))
            addPart(*m_bytes, tr("controller"), part);
    }
    if (lines.size() < traffic.received.size())
        addPart(*m_bytes, tr("line"),
                {visible(traffic.received), tr("all characters"),
                 tr("with what belongs to no frame"), true});
    m_bytes->resizeColumnsToContents();
}

void TrafficView::chooseCapture()
{
    auto *dialog = new QFileDialog(this, tr("Capture to a new file"), "line.kmr",
                                   tr("Captures (*.kmr);;All files (*)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    connect(dialog, &QFileDialog::fileSelected, this, &TrafficView::captureWanted);
    dialog->open();
}

void TrafficView::showCapturing(bool isCapturing)
{
    if (m_capture == nullptr)
        return;
    m_capture->setChecked(isCapturing);
    m_capture->setText(isCapturing ? tr("Capturing: stop") : tr("Capture to file…"));
}

} // namespace kmr
