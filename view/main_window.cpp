#include "view/main_window.h"

#include "host/error.h"
#include "host/project/text_file.h"
#include "view/quality_icon.h"

#include <QMessageBox>
#include <QStatusBar>
#include <QStyle>

#include <utility>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds REFRESH_INTERVAL(200);

QString commentOf(const NamedTagReader &reader, const Tag &tag)
{
    if (reader.names() == nullptr)
        return {};
    const QString text = tag.text.section('#', -1).section('/', 0, 0);
    const Name *name = reader.names()->find(text);
    return name != nullptr ? name->comment : QString();
}

// What is wrong with the file of names.
QStringList faultsOf(const NamedTagReader &reader)
{
    QStringList faults;
    if (reader.names() == nullptr)
        return faults;
    for (const LineFault &fault : reader.names()->faults())
        faults.append(
            QString("%1:%2: %3").arg(reader.names()->file()).arg(fault.line).arg(fault.text));
    return faults;
}

} // namespace

MainWindow::MainWindow()
    : m_valuesView(new ValuesView(m_values)), m_trends(new TrendView(m_history)),
      m_traffic(new TrafficView(true)), m_lineView(new LineView(m_counts)), m_plan(new PlanView),
      m_recipe(new RecipeView), m_pages(new QTabWidget), m_splitter(new QSplitter),
      m_state(new QLabel), m_hint(new QToolButton)
{
    setAcceptDrops(true);
    m_splitter->addWidget(m_valuesView);
    m_splitter->addWidget(m_pages);
    m_splitter->setChildrenCollapsible(false);
    setCentralWidget(m_splitter);
    m_state->setObjectName("state");
    m_state->setAccessibleName(tr("State of the line"));
    statusBar()->addWidget(m_state, 1);
    m_hint->setObjectName("hint");
    m_hint->setAutoRaise(true);
    m_hint->setFocusPolicy(Qt::TabFocus);
    m_hint->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_hint->setToolTip(tr("Show the line"));
    m_hint->hide();
    statusBar()->addPermanentWidget(m_hint);
    connect(m_hint, &QToolButton::clicked, this, [this] { m_pages->setCurrentWidget(m_lineView); });
    connect(m_valuesView, &ValuesView::tagGiven, this, &MainWindow::addTag);
    connect(m_valuesView, &ValuesView::writeWanted, this, &MainWindow::askToWrite);
    connect(m_valuesView, &ValuesView::removeWanted, this, [this](const std::vector<int> &ids) {
        m_values.remove(ids);
        for (const int id : ids)
            forgetTrend(id);
        pollTags();
    });
    connect(m_valuesView, &ValuesView::formatWanted, this, [this](int id, const Tag &tag) {
        m_values.replace({id, tag});
        forgetTrend(id); // its numbers are others now
        pollTags();
    });
    connect(&m_refresh, &QTimer::timeout, this, [this] { refresh(); });
    m_refresh.start(REFRESH_INTERVAL);
    makeTrends();
    makeTraffic();
    makeLine();
    makePlan();
    makeRecipes();
    makeMenus();
    setProject({}, false);
    restoreWindow();
}

MainWindow::~MainWindow()
{
    stopLine();
}

bool MainWindow::openProject(const QString &path)
{
    try {
        const QString text = readTextFile(path);
        if (!start(parseProject(text, path)))
            return false;
        m_text = text;
    } catch (const Error &error) {
        warn(error.text());
        return false;
    }
    setProject(path, false);
    noteRecent(path);
    recallProject();
    return true;
}

bool MainWindow::start(const ProjectSettings &settings)
{
    try {
        std::unique_ptr<Drivers> loaded;
        if (!m_drivers || m_loaded != settings.driver)
            loaded = std::make_unique<Drivers>(settings.driver);
        if (!settings.link.isEmpty())
            parseLink(settings.link);
        auto reader =
            std::make_unique<NamedTagReader>(tagReaderOf(settings, loaded ? *loaded : *m_drivers));
        // Nothing can go wrong with the project any more.
        rememberProject();
        stopLine();
        if (!m_uncertain.isEmpty())
            warn(tr("The line was closed during a write.\n%1").arg(m_uncertain.join('\n')));
        m_uncertain.clear();
        if (loaded) {
            m_drivers = std::move(loaded);
            m_loaded = settings.driver;
        }
        m_settings = settings;
        m_reader = std::move(reader);
        clearProject();
        const QStringList faults = faultsOf(*m_reader) + addTags(settings.tags);
        setProject({}, false);
        showPlan(); // not with what is gone, even if the line can't be started
        startLine(settings.link);
        if (!faults.isEmpty())
            warn(tr("These names and tags can't be read and are left out:\n%1")
                     .arg(faults.join('\n')));
    } catch (const Error &error) {
        warn(error.text());
        return false;
    }
    return true;
}

void MainWindow::clearProject()
{
    m_valuesView->setReader(*m_reader);
    m_values.clear();
    m_unreadTags.clear();
    m_history.clear();
    m_counts.clear();
    m_recipe->clear();
    m_trends->clear();
}

// Returns what is wrong with those that can't be read.
QStringList MainWindow::addTags(const QStringList &tags)
{
    QStringList faults;
    std::vector<NewTag> added;
    for (int place = 0; place < tags.size(); ++place) {
        try {
            const Tag tag = m_reader->read(tags[place]);
            added.push_back({{++m_lastId, tag}, commentOf(*m_reader, tag)});
        } catch (const Error &error) {
            m_unreadTags.emplace_back(place, tags[place]);
            faults.append(error.text());
        }
    }
    m_values.add(added);
    return faults;
}

void MainWindow::startLine(const QString &link)
{
    m_simulated.reset();
    if (link.isEmpty())
        m_simulated = std::make_unique<BuiltInController>();
    const LinkAddress address = parseLink(m_simulated ? m_simulated->link() : link);
    m_line = std::make_unique<LineThread>(
        m_drivers->forLine(),
        LineSetup{address, sessionSettingsOf(m_settings, address), m_values.polled()});
    connect(m_line.get(), &LineThread::newsReady, this, &MainWindow::takeNews);
    m_line->start();
}

void MainWindow::stopLine()
{
    if (!m_line)
        return;
    for (auto &[request, open] : m_writes) {
        if (open.dialog)
            open.dialog->close();
        open.dialog.clear();
    }
    m_isStopping = true;
    m_line->stop();
    takeNews();
    m_isStopping = false;
    m_line.reset();
    m_writes.clear();
    m_traffic->showCapturing(false);
}

void MainWindow::pollTags()
{
    if (m_line)
        m_line->poll(m_values.polled());
    showPlan();
    setProject(m_path, true);
}

void MainWindow::takeNews()
{
    if (!m_line)
        return; // news of a line that is closed
    const LineNews news = m_line->take();
    for (const TagNews &tag : news.tags) {
        m_values.take(tag);
        record(tag);
    }
    for (const ExchangeNews &exchange : news.exchanges)
        m_counts.add(exchange);
    m_traffic->add(news.traffic);
    takeWrites(news.writes);
    takeRecipes(news);
    for (const ExaminationNews &examination : news.examinations)
        m_lineView->showDiagnosis(examination.diagnosis);
    if (!news.captureFault.isEmpty()) {
        m_traffic->showCapturing(false);
        warn(news.captureFault);
    }
    showState(news);
}

void MainWindow::showState(const LineNews &news)
{
    const QString link = m_simulated ? tr("simulated controller") : m_settings.link;
    QString text;
    switch (news.state) {
    case LinkState::Open:
        text = tr("%1: open").arg(link);
        break;
    case LinkState::Opening:
        text = news.stateText.isEmpty() ? tr("%1: opening…").arg(link)
                                        : tr("%1: %2").arg(link, news.stateText);
        break;
    case LinkState::Closed:
        text = tr("%1: closed").arg(link);
        break;
    }
    m_state->setText(text.replace('\n', ' '));
    QPalette palette = m_state->palette();
    palette.setColor(QPalette::WindowText, news.stateText.isEmpty()
                                               ? this->palette().color(QPalette::WindowText)
                                               : badColour());
    m_state->setPalette(palette);
}

void MainWindow::addTag(const Tag &tag)
{
    if (!m_reader)
        return;
    m_values.add({{{++m_lastId, tag}, commentOf(*m_reader, tag)}});
    pollTags();
}

void MainWindow::warn(const QString &text)
{
    auto *box = new QMessageBox(QMessageBox::Warning, windowTitle(), text, QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace kmr
