#include "view/trend_table.h"

#include <QHeaderView>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace kmr {

namespace {

QIcon lineIcon(const TrendStyle &style)
{
    QPixmap pixmap(24, 12);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(QPen(style.colour, 3, style.pen));
    painter.drawLine(0, 6, 24, 6);
    return QIcon(pixmap);
}

std::optional<double> shownAt(const Series &series, const TrendStyle &style,
                              std::optional<double> time)
{
    std::optional<double> value;
    if (time)
        value = style.isBit ? series.heldAt(*time) : series.at(*time);
    return value ? std::make_optional(style.shown(*value)) : std::nullopt;
}

} // namespace

QString figureText(std::optional<double> value)
{
    return value ? QString::number(*value, 'g', std::abs(*value) < 1 ? 5 : 6) : QString("–");
}

TrendTable::TrendTable(QWidget *parent) : QTableWidget(0, COLUMNS, parent)
{
    setObjectName("trendTable");
    setAccessibleName(tr("Figures of the trends"));
    setHorizontalHeaderLabels({tr("Tag"), tr("Cursor"), tr("At A"), tr("At B"), tr("B − A"),
                               tr("Least"), tr("Most"), tr("Mean"), tr("Axis"), tr("Factor"),
                               tr("Offset")});
    setSelectionBehavior(SelectRows);
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    const auto width = [this](const char *text) { return fontMetrics().horizontalAdvance(text); };
    horizontalHeader()->setDefaultSectionSize(width("-123.456") + 8);
    horizontalHeader()->resizeSection(TAG, width("a name") + 56);
    for (const int column : {AXIS, FACTOR, OFFSET})
        horizontalHeader()->resizeSection(column, width("Offset") + 12);
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setHighlightSections(false);
    setIconSize({24, 12});
    connect(this, &QTableWidget::itemChanged, this, [this](const QTableWidgetItem *item) {
        if (!m_isFilling)
            take(*item);
    });
    // By a double click or the Return key.
    connect(this, &QTableWidget::cellActivated, this, [this](int row, int column) {
        if (column == AXIS)
            toggleAxis(row);
    });
}

void TrendTable::put(int row, int column, const QString &text)
{
    QTableWidgetItem *cell = item(row, column);
    if (cell == nullptr) {
        cell = new QTableWidgetItem; // the table deletes it
        setItem(row, column, cell);
        const bool isEditable = column == FACTOR || column == OFFSET;
        cell->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled |
                       (isEditable ? Qt::ItemIsEditable : Qt::NoItemFlags));
        if (column != TAG && column != AXIS)
            cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    if (cell->text() != text) {
        cell->setText(text);
        if (column != AXIS)
            cell->setToolTip(text);
    }
}

void TrendTable::setStyles(const std::vector<TrendStyle> &styles)
{
    m_isFilling = true;
    m_styles = styles;
    setRowCount(static_cast<int>(styles.size()));
    for (int row = 0; row < rowCount(); ++row) {
        const TrendStyle &style = styles[static_cast<std::size_t>(row)];
        put(row, TAG, style.unit.isEmpty() ? style.name : style.name + " [" + style.unit + ']');
        item(row, TAG)->setIcon(lineIcon(style));
        put(row, AXIS, style.isBit ? tr("lane") : style.isRight ? tr("right") : tr("left"));
        item(row, AXIS)->setToolTip(tr("A double click or Return moves it to the other axis."));
        put(row, FACTOR, QString::number(style.factor));
        put(row, OFFSET, QString::number(style.offset));
    }
    m_isFilling = false;
}

void TrendTable::take(const QTableWidgetItem &cell)
{
    if (cell.column() != FACTOR && cell.column() != OFFSET)
        return;
    TrendStyle style = m_styles[static_cast<std::size_t>(cell.row())];
    bool isNumber = false;
    const double number = cell.text().trimmed().replace(',', '.').toDouble(&isNumber);
    isNumber = isNumber && std::isfinite(number);
    if (isNumber && cell.column() == OFFSET)
        style.offset = number;
    else if (isNumber && number != 0)
        style.factor = number;
    emit styleChanged(cell.row(), style); // of a bad number the old one, which is shown again
}

void TrendTable::toggleAxis(int row)
{
    TrendStyle style = m_styles[static_cast<std::size_t>(row)];
    style.isRight = !style.isRight;
    emit styleChanged(row, style);
}

void TrendTable::showFigures(const History &history, const TrendPlot &plot)
{
    const auto a = plot.marker(TrendPlot::A);
    const auto b = plot.marker(TrendPlot::B);
    const double from = a && b ? std::min(*a, *b) : plot.from();
    const double to = a && b ? std::max(*a, *b) : plot.to();
    m_isFilling = true;
    for (int row = 0; row < rowCount(); ++row) {
        const TrendStyle &style = m_styles[static_cast<std::size_t>(row)];
        const Series &series = history.series(style.id);
        const auto atA = shownAt(series, style, a);
        const auto atB = shownAt(series, style, b);
        put(row, CURSOR, figureText(shownAt(series, style, plot.cursor())));
        put(row, AT_A, figureText(atA));
        put(row, AT_B, figureText(atB));
        put(row, DIFFERENCE,
            figureText(atA && atB ? std::make_optional(*atB - *atA) : std::nullopt));
        const auto figures = series.figures(from, to, style.isBit);
        const auto shown = [&](double SpanFigures::*figure) {
            return figureText(figures ? std::make_optional(style.shown((*figures).*figure))
                                      : std::nullopt);
        };
        const bool isTurned = style.factor < 0; // the least is shown as the most
        put(row, LEAST, shown(isTurned ? &SpanFigures::most : &SpanFigures::least));
        put(row, MOST, shown(isTurned ? &SpanFigures::least : &SpanFigures::most));
        put(row, MEAN, shown(&SpanFigures::mean));
    }
    m_isFilling = false;
}

std::vector<int> TrendTable::markedRows() const
{
    std::vector<int> rows;
    for (const QModelIndex &index : selectionModel()->selectedRows())
        rows.push_back(index.row());
    return rows;
}

} // namespace kmr
