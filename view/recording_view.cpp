#include "view/recording_view.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>

namespace kmr {

namespace {

constexpr std::size_t FEW_TAGS = 12;
constexpr std::ptrdiff_t FEW_NUMBERS = 12;

bool hasMoved(const Series &series)
{
    const std::vector<Sample> &samples = series.samples();
    return std::any_of(samples.begin(), samples.end(), [&](const Sample &sample) {
        return sample.value < samples.front().value || sample.value > samples.front().value;
    });
}

} // namespace

RecordingView::RecordingView(std::unique_ptr<Recording> recording, QWidget *parent)
    : QWidget(parent), m_recording(std::move(recording)),
      m_view(new TrendView(m_recording->history)), m_others(new QComboBox)
{
    m_view->setAcceptDrops(false); // of tags of the line
    m_others->setObjectName("otherTags");
    m_others->setAccessibleName(tr("Show another tag"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_others, 0, Qt::AlignLeft);
    const std::vector<RecordedTag> &tags = m_recording->tags;
    const auto isNumber = [](const RecordedTag &tag) { return !tag.isBit; };
    const bool areFew = tags.size() <= FEW_TAGS;
    const bool areNumbersFew = std::count_if(tags.begin(), tags.end(), isNumber) <= FEW_NUMBERS;
    for (const RecordedTag &tag : tags) {
        if (areFew || (areNumbersFew && isNumber(tag)) ||
            hasMoved(m_recording->history.series(tag.id)))
            show(tag);
    }
    fillOthers();
    m_view->plot().showAll();
    connect(m_others, QOverload<int>::of(&QComboBox::activated), this, [this](int index) {
        const int place = m_others->itemData(index).toInt();
        if (place < 0)
            return;
        show(m_recording->tags[static_cast<std::size_t>(place)]);
        fillOthers();
    });
}

RecordingView::~RecordingView()
{
    delete m_view; // before its history
}

void RecordingView::show(const RecordedTag &tag)
{
    m_view->add(tag.id, tag.name, tag.unit, tag.isBit);
}

// Those that are not shown.
void RecordingView::fillOthers()
{
    m_others->clear();
    m_others->addItem(tr("Show another tag…"), -1);
    const std::vector<TrendStyle> &shown = m_view->styles();
    for (std::size_t place = 0; place < m_recording->tags.size(); ++place) {
        const RecordedTag &tag = m_recording->tags[place];
        const bool isShown = std::any_of(shown.begin(), shown.end(), [&](const TrendStyle &style) {
            return style.id == tag.id;
        });
        if (!isShown)
            m_others->addItem(tag.name, static_cast<int>(place));
    }
    m_others->setVisible(m_others->count() > 1);
}

} // namespace kmr
