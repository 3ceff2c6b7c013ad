#include "kmr/log/log_sampler.h"

#include "tests/host/session_fixture.h"

using namespace kmr;

namespace {

class LogSamplerTest : public SessionTest {
protected:
    LogSamplerTest()
    {
        session();
        begin({"D0", "D100"});
    }

    void begin(const QStringList &texts)
    {
        m_tags = tags(texts);
        m_sampler.emplace(*m_session, m_tags);
        m_session->setConfirmObserver(
            [this](const ElementRange &run) { m_sampler->noteConfirmed(run); });
        m_session->poll(m_sampler->ranges());
    }

    // The next row: "1 good, - pending".
    QString row(bool *isNews = nullptr)
    {
        const LogRow row = m_sampler->take({});
        const bool news = m_sampler->isNews(row);
        if (isNews != nullptr)
            *isNews = news;
        QStringList cells;
        for (std::size_t i = 0; i < m_tags.size(); ++i) {
            const LogCell &cell = row.cells[i];
            const QString values = cell.isRead() ? formatValues(m_tags[i], *cell.values) : "-";
            cells.append(values + ' ' + qualityText(cell));
        }
        return cells.join(", ");
    }

    std::vector<Tag> m_tags;
    std::optional<LogSampler> m_sampler;
};

} // namespace

TEST_F(LogSamplerTest, ValueStandsOnlyInTheRowInWhichItWasRead)
{
    setElement("D", 0, 1);
    EXPECT_EQ(row(), "- pending, - pending");
    m_session->step();
    EXPECT_EQ(row(), "1 good, - pending");
    EXPECT_EQ(row(), "- not read, - pending");
    m_session->step();
    m_session->step();
    EXPECT_EQ(row(), "1 good, 0 good");
}

TEST_F(LogSamplerTest, ValueOfARequestThatWasGivenUpIsStaleAndEmpty)
{
    m_session->step();
    EXPECT_EQ(row(), "0 good, - pending");
    m_spoil = silence;
    for (int i = 0; i < 9; ++i)
        m_session->step();
    EXPECT_EQ(row(), "- stale, - stale");
}

TEST_F(LogSamplerTest, RowIsNewsWhenAValueOrAQualityIsAnother)
{
    const auto isNews = [this](int steps) {
        for (int i = 0; i < steps; ++i)
            m_session->step();
        bool news = false;
        row(&news);
        return news;
    };
    EXPECT_TRUE(isNews(2));  // the first values
    EXPECT_FALSE(isNews(2)); // the same again
    EXPECT_FALSE(isNews(0)); // none
    setElement("D", 100, 5);
    EXPECT_TRUE(isNews(2));
    m_spoil = silence;
    EXPECT_TRUE(isNews(9));
    EXPECT_FALSE(isNews(3));
}

TEST_F(LogSamplerTest, EmptyTextIsAValue)
{
    begin({"D0/text"});
    bool isNews = false;
    setElement("D", 0, 'A');
    m_session->step();
    EXPECT_EQ(row(), "A good");
    setElement("D", 0, 0);
    m_session->step();
    EXPECT_EQ(row(&isNews), " good");
    EXPECT_TRUE(isNews);
}
