// What the window does with the course of values: it keeps them, and shows those that are wanted.
#include "view/main_window.h"

#include <QTabBar>

#include <algorithm>
#include <cmath>

namespace kmr {

namespace {

constexpr int MOST_NUMBERS = 64; // of one tag that have trends

// The series of a tag's number at `place`, from 0.
int seriesOf(int id, int place)
{
    return id * MOST_NUMBERS + place;
}

int countOf(const ValueRow &row)
{
    const int numbers = static_cast<int>(row.numbers.size());
    return std::min(std::max(1, numbers), MOST_NUMBERS);
}

int seriesCount(const Tag &tag)
{
    return std::min(tag.count / elementsPerNumber(tag), MOST_NUMBERS);
}

QString nameOf(const Tag &tag, int place, int count)
{
    if (count == 1)
        return tag.text;
    const bool isElement = tag.type == ValueType::Plain && tag.kind != ElementKind::WordBit;
    return isElement ? elementName(tag.elements.area, tag.elements.first + place)
                     : QString("%1[%2]").arg(tag.text).arg(place);
}

bool isBit(const Tag &tag)
{
    return tag.kind == ElementKind::Bit || tag.kind == ElementKind::WordBit;
}

} // namespace

void MainWindow::makeTrends()
{
    m_pages->setTabsClosable(true);
    m_pages->setDocumentMode(true);
    addPage(m_trends, tr("Tre&nds"));
    connect(m_pages, &QTabWidget::tabCloseRequested, this, &MainWindow::closePage);
    connect(m_valuesView, &ValuesView::trendWanted, this, &MainWindow::showTrends);
    connect(m_trends, &TrendView::tagsDropped, this, &MainWindow::showTrends);
}

// A page that stays.
void MainWindow::addPage(QWidget *page, const QString &title)
{
    const int index = m_pages->addTab(page, title);
    ++m_steadyPages;
    for (const auto side : {QTabBar::LeftSide, QTabBar::RightSide})
        m_pages->tabBar()->setTabButton(index, side, nullptr);
}

void MainWindow::refresh()
{
    const double now = timeNow();
    m_values.refresh(now);
    forgetUnpolledStations();
    showHint();
    if (m_trends->isVisible())
        m_trends->refresh(now);
    if (m_lineView->isVisible())
        m_lineView->refresh(now, characterTimeOfLink());
}

void MainWindow::record(const TagNews &news)
{
    const ValueRow *row = m_values.find(news.id);
    if (row == nullptr)
        return;
    for (int place = 0; place < countOf(*row); ++place) {
        const int series = seriesOf(news.id, place);
        const double number =
            row->numbers.empty() ? std::nan("") : row->numbers[static_cast<std::size_t>(place)];
        if (news.quality == Quality::Good && !std::isnan(number))
            m_history.add(series, news.time, number);
        else
            m_history.addGap(series, news.time);
    }
}

void MainWindow::showTrends(const std::vector<int> &ids)
{
    for (const int id : ids) {
        const ValueRow *row = m_values.find(id);
        if (row == nullptr)
            continue;
        const Tag &tag = row->polled.tag;
        const int count = seriesCount(tag);
        for (int place = 0; place < count; ++place)
            m_trends->add(seriesOf(id, place), nameOf(tag, place, count), tag.unit, isBit(tag));
    }
    m_pages->setCurrentWidget(m_trends);
}

// The curves that are shown, for showCurves().
QVariantList MainWindow::curves() const
{
    QVariantList curves;
    for (const TrendStyle &style : m_trends->styles()) {
        const ValueRow *row = m_values.find(style.id / MOST_NUMBERS);
        if (row == nullptr)
            continue;
        curves.append(QVariant(
            QStringList{row->polled.tag.text, QString::number(style.id % MOST_NUMBERS),
                        style.isRight ? "right" : "left", QString::number(style.factor, 'g', 17),
                        QString::number(style.offset, 'g', 17)}));
    }
    return curves;
}

void MainWindow::showCurves(const QVariantList &curves)
{
    for (const QVariant &curve : curves) {
        const QStringList parts = curve.toStringList();
        const auto &rows = m_values.rows();
        const auto row = std::find_if(rows.begin(), rows.end(), [&](const ValueRow &candidate) {
            return candidate.polled.tag.text == parts.value(0);
        });
        const int place = parts.value(1).toInt();
        if (row == rows.end() || place < 0 || place >= seriesCount(row->polled.tag))
            continue;
        const Tag &tag = row->polled.tag;
        const int series = seriesOf(row->polled.id, place);
        m_trends->add(series, nameOf(tag, place, seriesCount(tag)), tag.unit, isBit(tag));
        TrendStyle style = m_trends->styles().back();
        style.isRight = parts.value(2) == "right";
        style.factor = parts.value(3).toDouble();
        style.offset = parts.value(4).toDouble();
        if (style.id == series && style.factor != 0)
            m_trends->restyle(static_cast<int>(m_trends->styles().size()) - 1, style);
    }
}

void MainWindow::forgetTrend(int id)
{
    for (int place = 0; place < MOST_NUMBERS; ++place) {
        m_trends->remove(seriesOf(id, place));
        m_history.forget(seriesOf(id, place));
    }
}

void MainWindow::markWrite(int id, double time, const QString &text)
{
    const ValueRow *row = m_values.find(id);
    for (int place = 0; row != nullptr && place < countOf(*row); ++place)
        m_history.mark({seriesOf(id, place), time, place == 0 ? text : QString()});
}

} // namespace kmr
