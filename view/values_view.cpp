#include "view/values_view.h"

#include "host/error.h"
#include "host/tags/tag_syntax.h"
#include "view/course_delegate.h"

#include <QAction>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace kmr {

namespace {

// The tag as another type shows it, or nothing where the type does not fit.
std::optional<Tag> withType(const NamedTagReader &reader, const QString &text, const QString &type)
{
    const int slash = static_cast<int>(text.lastIndexOf('/'));
    const bool hasType = slash > 0 && valueTypeOf(text.mid(slash + 1));
    const QString base = hasType ? text.left(slash) : text;
    try {
        return reader.read(type.isEmpty() ? base : base + '/' + type);
    } catch (const Error &) {
        return std::nullopt;
    }
}

} // namespace

ValuesView::ValuesView(ValuesModel &model, QWidget *parent)
    : QWidget(parent), m_model(model), m_filter(new ValuesFilter(model, this)),
      m_text(new QLineEdit), m_kind(new QComboBox), m_grouping(new QComboBox),
      m_table(new QTableView), m_tagEdit(new TagEdit), m_menu(new QMenu(tr("&Tag"), this))
{
    makeTable();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addLayout(makeBar());
    layout->addWidget(m_table, 1);
    layout->addWidget(m_tagEdit);
    connect(m_tagEdit, &TagEdit::tagGiven, this, &ValuesView::tagGiven);
    makeMenu();
}

// What is shown of the tags, and in which groups.
QHBoxLayout *ValuesView::makeBar()
{
    m_text->setObjectName("filter");
    m_text->setPlaceholderText(tr("Filter"));
    m_text->setAccessibleName(tr("Filter tags by text"));
    m_text->setClearButtonEnabled(true);
    m_kind->setObjectName("filterKind");
    m_kind->setAccessibleName(tr("Filter tags by state"));
    m_kind->addItems({tr("All"), tr("Not good"), tr("Moving"), tr("Still")});
    m_grouping->setObjectName("grouping");
    m_grouping->setAccessibleName(tr("Group tags"));
    m_grouping->addItems({tr("No groups"), tr("By area"), tr("By station"), tr("By name")});
    m_grouping->setItemData(3, tr("By what precedes the first dot or slash of a name"),
                            Qt::ToolTipRole);
    auto *line = new QHBoxLayout;
    line->addWidget(m_text, 1);
    line->addWidget(m_kind);
    line->addWidget(m_grouping);
    connect(m_text, &QLineEdit::textChanged, this, [this] { filter(); });
    connect(m_kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this] { filter(); });
    connect(m_grouping, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this](int index) { setGrouping(static_cast<Grouping>(index)); });
    return line;
}

void ValuesView::makeTable()
{
    m_table->setObjectName("values");
    m_table->setAccessibleName(tr("Values"));
    m_table->setModel(m_filter);
    m_table->setSortingEnabled(true);
    m_table->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder); // as they were added
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setSectionsMovable(true);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 8);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setAlternatingRowColors(true);
    m_table->setShowGrid(false);
    m_table->setDragEnabled(true);
    m_table->setDragDropMode(QAbstractItemView::DragOnly);
    m_table->setTabKeyNavigation(false);
    m_table->setContextMenuPolicy(Qt::CustomContextMenu);
    m_table->setItemDelegateForColumn(ValuesModel::COURSE, new CourseDelegate(this));
    const char *const widest[] = {"boiler.temp", "-32768.5", "bar/h",    "pending: ",
                                  "Course 123",  "9999 s",   "Changes ", "1#D1000"};
    for (int column = 0; column < ValuesModel::COLUMNS; ++column)
        m_table->setColumnWidth(column, fontMetrics().horizontalAdvance(widest[column]) + 16);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->installEventFilter(this);
    connect(m_table, &QTableView::clicked, this,
            [this](const QModelIndex &index) { toggleGroup(index); });
}

void ValuesView::setGrouping(Grouping grouping)
{
    m_grouping->setCurrentIndex(static_cast<int>(grouping));
    if (m_model.grouping() == grouping)
        return;
    m_model.setGrouping(grouping);
    const QHeaderView *heading = m_table->horizontalHeader();
    m_filter->sort(heading->sortIndicatorSection(), heading->sortIndicatorOrder());
    filter();
}

// Whether there is the heading of one.
bool ValuesView::toggleGroup(const QModelIndex &index)
{
    const int heading =
        index.isValid() ? m_model.headingAt(m_filter->mapToSource(index).row()) : -1;
    if (heading < 0)
        return false;
    m_model.toggle(heading);
    filter();
    return true;
}

bool ValuesView::eventFilter(QObject *, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<QKeyEvent *>(event)->key();
    const bool isToggle = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
    return isToggle && toggleGroup(m_table->currentIndex());
}

void ValuesView::setReader(const NamedTagReader &reader)
{
    m_reader = reader;
    m_tagEdit->setReader(reader);
}

std::vector<int> ValuesView::marked() const
{
    QModelIndexList rows = m_table->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    std::vector<int> ids;
    for (const QModelIndex &index : rows) {
        const int id = index.data(ValuesModel::ID_ROLE).toInt();
        if (id != 0) // no heading
            ids.push_back(id);
    }
    return ids;
}

void ValuesView::makeMenu()
{
    m_write = m_menu->addAction(tr("&Write…"), this, [this] {
        const std::vector<int> ids = marked();
        if (ids.size() == 1)
            emit writeWanted(ids.front());
    });
    m_write->setShortcut(QKeySequence(Qt::Key_F2));
    m_formats = m_menu->addMenu(tr("&Format"));
    QAction *trend =
        m_menu->addAction(tr("Show &trend"), this, [this] { emit trendWanted(marked()); });
    trend->setShortcut(QKeySequence("Ctrl+T"));
    m_menu->addSeparator();
    QAction *remove =
        m_menu->addAction(tr("&Remove"), this, [this] { emit removeWanted(marked()); });
    remove->setShortcut(QKeySequence::Delete);
    for (QAction *action : {m_write, trend, remove}) {
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        m_table->addAction(action);
    }
    connect(m_menu, &QMenu::aboutToShow, this, [this, trend, remove] {
        fillFormats();
        const std::vector<int> ids = marked();
        const ValueRow *row = ids.size() == 1 ? m_model.find(ids.front()) : nullptr;
        m_write->setEnabled(row != nullptr && whyNotWritable(row->polled.tag).isEmpty());
        trend->setEnabled(!ids.empty());
        remove->setEnabled(!ids.empty());
    });
    connect(m_menu, &QMenu::aboutToHide, this, [this] { m_write->setEnabled(true); }); // for F2
    connect(m_table, &QTableView::customContextMenuRequested, this, [this](const QPoint &place) {
        m_menu->popup(m_table->viewport()->mapToGlobal(place));
    });
    connect(m_table, &QTableView::doubleClicked, this, [this](const QModelIndex &index) {
        const int id = index.data(ValuesModel::ID_ROLE).toInt();
        if (id != 0 && index.column() == ValuesModel::COURSE)
            emit trendWanted({id});
        else if (id != 0)
            emit writeWanted(id);
    });
}

// Those that fit all marked tags.
void ValuesView::fillFormats()
{
    m_formats->clear();
    const std::vector<int> ids = marked();
    for (const QString &type : QStringList{QString()} + valueTypeNames()) {
        const bool fits =
            m_reader && !ids.empty() && std::all_of(ids.begin(), ids.end(), [&](int id) {
                const ValueRow *row = m_model.find(id);
                return row != nullptr && withType(*m_reader, row->polled.tag.text, type);
            });
        if (!fits)
            continue;
        m_formats->addAction(type.isEmpty() ? tr("&Plain") : type, this, [this, ids, type] {
            for (const int id : ids) {
                const ValueRow *row = m_model.find(id);
                if (row != nullptr)
                    emit formatWanted(id, *withType(*m_reader, row->polled.tag.text, type));
            }
        });
    }
    m_formats->setEnabled(!m_formats->isEmpty());
}

void ValuesView::filter()
{
    m_filter->set(m_text->text(), static_cast<ValuesFilter::Kind>(m_kind->currentIndex()));
}

} // namespace kmr
