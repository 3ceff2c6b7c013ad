#include "view/values_view.h"

#include "host/error.h"
#include "host/tags/tag_syntax.h"
#include "view/course_delegate.h"

#include <QAction>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include <algorithm>

namespace kmr {

namespace {

constexpr double MOVING_SECONDS = 10;

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

void ValuesFilter::set(const QString &text, Kind kind)
{
    m_text = text;
    m_kind = kind;
    invalidateFilter();
}

bool ValuesFilter::filterAcceptsRow(int row, const QModelIndex &parent) const
{
    const QModelIndex index = sourceModel()->index(row, ValuesModel::QUALITY, parent);
    const bool isMoving = index.data(ValuesModel::STILL_ROLE).toDouble() < MOVING_SECONDS;
    const bool isGood =
        index.data(ValuesModel::QUALITY_ROLE).toInt() == static_cast<int>(Quality::Good);
    if ((m_kind == NOT_GOOD && isGood) || (m_kind == MOVING && !isMoving) ||
        (m_kind == STILL && isMoving))
        return false;
    if (m_text.isEmpty())
        return true;
    const int columns[] = {ValuesModel::TAG, ValuesModel::ADDRESS, ValuesModel::UNIT};
    return std::any_of(std::begin(columns), std::end(columns), [&](int column) {
        return sourceModel()
            ->index(row, column, parent)
            .data()
            .toString()
            .contains(m_text, Qt::CaseInsensitive);
    });
}

ValuesView::ValuesView(ValuesModel &model, QWidget *parent)
    : QWidget(parent), m_model(model), m_filter(new ValuesFilter(this)), m_text(new QLineEdit),
      m_kind(new QComboBox), m_table(new QTableView), m_tagEdit(new TagEdit),
      m_menu(new QMenu(tr("&Tag"), this))
{
    m_filter->setSourceModel(&model);
    m_filter->setSortRole(ValuesModel::SORT_ROLE);
    m_text->setObjectName("filter");
    m_text->setPlaceholderText(tr("Filter"));
    m_text->setAccessibleName(tr("Filter tags by text"));
    m_text->setClearButtonEnabled(true);
    m_kind->setObjectName("filterKind");
    m_kind->setAccessibleName(tr("Filter tags by state"));
    m_kind->addItems({tr("All"), tr("Not good"), tr("Moving"), tr("Still")});
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
    auto *line = new QHBoxLayout;
    line->addWidget(m_text, 1);
    line->addWidget(m_kind);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addLayout(line);
    layout->addWidget(m_table, 1);
    layout->addWidget(m_tagEdit);
    connect(m_text, &QLineEdit::textChanged, this, [this] { filter(); });
    connect(m_kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this] { filter(); });
    connect(m_tagEdit, &TagEdit::tagGiven, this, &ValuesView::tagGiven);
    makeMenu();
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
    for (const QModelIndex &index : rows)
        ids.push_back(index.data(ValuesModel::ID_ROLE).toInt());
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
        emit writeWanted(index.data(ValuesModel::ID_ROLE).toInt());
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
