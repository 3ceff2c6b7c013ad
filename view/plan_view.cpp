#include "view/plan_view.h"

#include "host/error.h"
#include "host/line/link.h"
#include "view/duration_text.h"
#include "view/plan_map.h"
#include "view/quality_icon.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace kmr {

namespace {

enum Column { STATION, ELEMENTS, MAP, UNASKED, CHARACTERS, TIME, COLUMNS };
constexpr int MOST_REASONS = 4; // all are in the table

QString elementsText(const ElementRange &run)
{
    if (run.count == 0)
        return PlanView::tr("nothing of %1").arg(run.area);
    const QString first = elementName(run.area, run.first);
    return run.count == 1
               ? first
               : PlanView::tr("%1 to %2").arg(first, elementName(run.area, run.end() - 1));
}

// The serial line of a link; over TCP the one that may follow.
LinkAddress lineOf(const QString &link)
{
    LinkAddress address;
    if (!link.isEmpty())
        address = parseLink(link);
    address.kind = LinkAddress::Kind::Serial;
    return address;
}

} // namespace

PlanView::PlanView(QWidget *parent)
    : QWidget(parent), m_baud(new QComboBox), m_groupLimit(new QSpinBox),
      m_inStep(new QCheckBox(tr("answers are kept in &step"))),
      m_raw(new QCheckBox(tr("tags as t&yped, as another host may pass them to the driver"))),
      m_tag(new QLineEdit), m_verdict(new QLabel), m_summary(new QLabel), m_hole(new QLabel),
      m_blocks(new QTableWidget(0, COLUMNS))
{
    m_summary->setObjectName("planSummary");
    m_summary->setWordWrap(true);
    m_summary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_hole->setObjectName("planHole");
    m_hole->setWordWrap(true);
    QPalette palette = m_hole->palette();
    palette.setColor(QPalette::WindowText, badColour());
    m_hole->setPalette(palette);
    m_blocks->setObjectName("planBlocks");
    m_blocks->setAccessibleName(tr("Requests of the poll plan"));
    m_blocks->setHorizontalHeaderLabels({tr("Station"), tr("Elements"), tr("Map"),
                                         tr("Not asked for"), tr("Characters"), tr("Wire ms")});
    m_blocks->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_blocks->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_blocks->setTabKeyNavigation(false);
    m_blocks->setWordWrap(false);
    m_blocks->verticalHeader()->hide();
    m_blocks->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    m_blocks->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_blocks->horizontalHeader()->setSectionResizeMode(MAP, QHeaderView::Stretch);
    m_blocks->setItemDelegateForColumn(MAP, new PlanMapDelegate(this));
    auto *key = new QLabel(tr("Map: a full cell is asked for, a hatched one is only read along."));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(makeQuestion());
    layout->addWidget(m_summary);
    layout->addWidget(m_hole);
    layout->addWidget(m_blocks, 1);
    layout->addWidget(key);
}

QWidget *PlanView::makeQuestion()
{
    m_baud->setObjectName("planBaud");
    m_baud->setAccessibleName(tr("What if: bits a second"));
    m_groupLimit->setObjectName("planGroupLimit");
    m_groupLimit->setAccessibleName(tr("What if: words of one request"));
    m_groupLimit->setRange(1, 8);
    m_inStep->setObjectName("planInStep");
    m_raw->setObjectName("planRaw");
    m_tag->setObjectName("planTag");
    m_tag->setAccessibleName(tr("What if: one more tag"));
    m_tag->setPlaceholderText(tr("one more tag"));
    m_tag->setClearButtonEnabled(true);
    m_verdict->setObjectName("planVerdict");
    m_verdict->hide();
    auto *widget = new QWidget;
    auto *line = new QHBoxLayout;
    line->addWidget(new QLabel(tr("What if:")));
    line->addWidget(m_baud);
    line->addWidget(new QLabel(tr("baud,")));
    line->addWidget(m_groupLimit);
    line->addWidget(new QLabel(tr("words a request,")));
    line->addWidget(m_tag, 1);
    auto *layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(line);
    layout->addWidget(m_verdict);
    layout->addWidget(m_inStep);
    layout->addWidget(m_raw);
    connect(m_baud, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] { ask(); });
    connect(m_groupLimit, QOverload<int>::of(&QSpinBox::valueChanged), this, [this] { ask(); });
    for (QCheckBox *box : {m_inStep, m_raw})
        connect(box, &QCheckBox::toggled, this, [this] { ask(); });
    connect(m_tag, &QLineEdit::textChanged, this, [this] { ask(); });
    return widget;
}

void PlanView::showPlan(const ProjectSettings &settings, std::vector<Tag> tags,
                        const DriverFunctions &driver, const NamedTagReader &reader)
{
    m_driver = nullptr;
    try {
        m_line = lineOf(settings.link);
    } catch (const Error &error) {
        m_blocks->setRowCount(0);
        m_hole->hide();
        m_summary->setText(error.text());
        return;
    }
    m_settings = settings;
    m_tags = std::move(tags);
    m_driver = &driver;
    m_reader = &reader;
    const int present = m_line.baud;
    const QSignalBlocker noBaud(m_baud);
    const QSignalBlocker noLimit(m_groupLimit);
    const QSignalBlocker noStep(m_inStep);
    m_baud->clear();
    for (const int baud : {9600, 19200, 38400, 57600, 115200})
        m_baud->addItem(QString::number(baud), baud);
    if (m_baud->findData(present) < 0)
        m_baud->addItem(QString::number(present), present);
    m_baud->setCurrentIndex(m_baud->findData(present));
    m_groupLimit->setValue(settings.groupLimit);
    m_inStep->setChecked(settings.inStep);
    ask();
}

PlanQuestion PlanView::present() const
{
    return {m_tags, m_settings.groupLimit, m_settings.inStep,
            false,  characterTime(m_line), m_settings.gap};
}

PlanQuestion PlanView::whatIf()
{
    PlanQuestion question = present();
    LinkAddress address = m_line;
    address.baud = m_baud->currentData().toInt();
    question.characterTime = characterTime(address);
    question.groupLimit = m_groupLimit->value();
    question.inStep = m_inStep->isChecked();
    question.isRaw = m_raw->isChecked();
    QString verdict;
    if (!m_tag->text().trimmed().isEmpty()) {
        try {
            question.tags.push_back(m_reader->read(m_tag->text().trimmed()));
        } catch (const Error &error) {
            verdict = error.text();
        }
    }
    m_verdict->setText(verdict);
    m_verdict->setVisible(!verdict.isEmpty());
    return question;
}

void PlanView::ask()
{
    if (m_driver == nullptr)
        return;
    const PlanQuestion question = whatIf();
    m_blocks->setRowCount(0);
    m_hole->hide();
    if (question.tags.empty()) {
        m_summary->setText(tr("No tags, no plan."));
        return;
    }
    try {
        const auto textOf = [](const PollPlan &plan) {
            return tr("%1 requests, %2 characters, %3 ms a cycle")
                .arg(plan.cost.requests)
                .arg(plan.cost.characters())
                .arg(millisecondsText(plan.time));
        };
        const PollPlan now = planOf(*m_driver, present());
        const PollPlan then = planOf(*m_driver, question);
        m_summary->setText(textOf(now) == textOf(then)
                               ? tr("As it is: %1.").arg(textOf(now))
                               : tr("As it is: %1.\nWhat if: %2.").arg(textOf(now), textOf(then)));
        showBlocks(then, question.characterTime);
        showHole();
    } catch (const Error &error) {
        m_summary->setText(error.text());
    }
}

// This window cuts the requests so that there is none; another host may not.
void PlanView::showHole()
{
    PlanQuestion question = present();
    question.isRaw = true;
    int missing = 0;
    QStringList reasons;
    for (const PollGap &gap : planOf(*m_driver, question).cycle.gaps) {
        missing += gap.elements.count;
        reasons.append(tr("%1: %2").arg(elementsText(gap.elements), gap.reason));
    }
    m_hole->setVisible(missing > 0);
    if (m_raw->isChecked()) { // in full, which a cell has no room for
        m_hole->setText(reasons.mid(0, MOST_REASONS).join('\n'));
        return;
    }
    m_hole->setText(tr("A host that passes these tags as they are typed never reads %n element(s) "
                       "correctly; this window does. Mark \"tags as typed\" to see which.",
                       nullptr, missing));
}

void PlanView::showBlocks(const PollPlan &plan, std::chrono::nanoseconds characterTime)
{
    for (const PollGap &gap : plan.cycle.gaps)
        addGap(gap);
    for (const PollBlock &block : plan.cycle.blocks)
        addBlock(plan, block, characterTime);
}

void PlanView::addGap(const PollGap &gap)
{
    const int row = m_blocks->rowCount();
    m_blocks->insertRow(row);
    m_blocks->setItem(row, STATION, new QTableWidgetItem(QString::number(gap.elements.station)));
    m_blocks->setItem(row, ELEMENTS, new QTableWidgetItem(elementsText(gap.elements)));
    auto *reason = new QTableWidgetItem(qualityIcon(Quality::Stale), gap.reason);
    reason->setForeground(badColour());
    reason->setToolTip(gap.reason);
    m_blocks->setItem(row, MAP, reason);
    m_blocks->setSpan(row, MAP, 1, COLUMNS - MAP);
}

void PlanView::addBlock(const PollPlan &plan, const PollBlock &block,
                        std::chrono::nanoseconds characterTime)
{
    const int row = m_blocks->rowCount();
    const int characters = static_cast<int>(block.frame.size()) + block.replyChars;
    m_blocks->insertRow(row);
    const QString texts[] = {QString::number(block.refreshed.station),
                             elementsText(block.refreshed),
                             {},
                             QString::number(block.unasked),
                             QString::number(characters),
                             millisecondsText(characterTime * characters)};
    for (int column = 0; column < COLUMNS; ++column) {
        auto *item = new QTableWidgetItem(texts[column]); // the table deletes it
        if (column > MAP)
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_blocks->setItem(row, column, item);
    }
    QByteArray cells;
    QStringList unasked;
    int number = block.refreshed.first;
    for (const CellState state : cellsOf(plan, block)) {
        cells += state == CellState::Asked ? PlanMapDelegate::ASKED : PlanMapDelegate::UNASKED;
        if (state == CellState::Unasked)
            unasked.append(elementName(block.refreshed.area, number));
        ++number;
    }
    m_blocks->item(row, MAP)->setData(PlanMapDelegate::CELLS_ROLE, cells);
    const QString frame = QString::fromLatin1(block.frame.trimmed());
    m_blocks->item(row, MAP)->setToolTip(
        unasked.isEmpty() ? frame : tr("%1\nnot asked for: %2").arg(frame, unasked.join(", ")));
}

} // namespace kmr
