// Searches for strays that make a false answer count as confirmed: all short sequences, and long
// random runs. KMR_EXCHANGES in the environment sets the length of these.
#include "tests/host/line/stray_line.h"

#include <gtest/gtest.h>

#include <random>

using namespace kmr;
using std::chrono::microseconds;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds TIMEOUT(50);

// Requests of a sequence with one stray, and with two. The deep tests search the long ones.
#ifdef KMR_LONG_SEARCH
constexpr std::size_t LONGEST_WITH_ONE = 4;
constexpr std::size_t LONGEST_WITH_TWO = 3;
constexpr int PAIRS_FOR_A_FALSE_ANSWER = 50;
#else
constexpr std::size_t LONGEST_WITH_ONE = 3;
constexpr std::size_t LONGEST_WITH_TWO = 2;
constexpr int PAIRS_FOR_A_FALSE_ANSWER = 40;
#endif

QByteArray request(int function, int address, int quantity)
{
    QByteArray message(1, '\x01');
    message += static_cast<char>(function);
    for (const int word : {address, quantity}) {
        message += static_cast<char>(word >> 8);
        message += static_cast<char>(word & 0xFF);
    }
    if (function == 0x10) {
        message += static_cast<char>(2 * quantity);
        message += QByteArray(2 * quantity, '\x07');
    }
    return modbus::encodeLine(message);
}

// The shapes of the driver's requests.
const QByteArray EIGHT_WORDS = request(0x03, 0x1064, 8);
const QByteArray OTHER_EIGHT = request(0x03, 0x106C, 8);
const QByteArray SEVEN_WORDS = request(0x03, 0x1074, 7);
const QByteArray ONE_BLOCK = request(0x02, 0x0800, 16);
const QByteArray TWO_BLOCKS = request(0x02, 0x0810, 32);
const QByteArray WRITTEN_WORD = request(0x10, 0x1000, 1);

// A host on a line with strays. The driver sends the requests of the plan in turn.
class Host {
public:
    Host(std::vector<QByteArray> plan, StrayLine::StraysOf straysOf)
        : m_plan(std::move(plan)), m_line(std::move(straysOf)),
          m_loop(functions(), m_line, settings(), m_stop, m_line.clock())
    {
        s_host = this;
        m_loop.setObserver([this](const Exchange &exchange) { note(exchange); });
        m_loop.setStepObserver([this](const StepNews &news) { note(news); });
        m_line.beginRequest();
    }

    void step(int times = 1)
    {
        for (int i = 0; i < times; ++i)
            m_loop.step();
    }
    void confirm()
    {
        m_loop.confirm(true);
    }

    int confirmed() const
    {
        return m_confirmed;
    }
    int wrong() const
    {
        return m_wrong;
    }
    int longestWrong() const // confirmed wrong answers in a row
    {
        return m_longestWrong;
    }
    std::uint64_t exchanges() const
    {
        return m_exchanges;
    }

private:
    static PollSettings settings()
    {
        PollSettings settings;
        settings.timeout = TIMEOUT;
        settings.echo = EchoMode::Off;
        return settings;
    }

    static const DriverFunctions &functions()
    {
        static const DriverFunctions FUNCTIONS = [] {
            DriverFunctions functions;
            functions.getSendFrame = [](FRAME_PRO *frame) noexcept { return s_host->send(*frame); };
            functions.dealRcvFrame = [](QByteArray &reply, QString &) noexcept {
                return s_host->take(reply);
            };
            return functions;
        }();
        return FUNCTIONS;
    }

    qint32 send(FRAME_PRO &frame)
    {
        const QByteArray &next = m_plan[m_next % m_plan.size()];
        std::copy(next.begin(), next.end(), frame.frame);
        frame.frameLen = static_cast<qint32>(next.size());
        frame.var.station = 1;
        return 1;
    }

    // As the driver: exceptions and silence are sent again, twice.
    qint32 take(const QByteArray &reply)
    {
        m_isTrue = m_line.isTrue(m_plan[m_next % m_plan.size()], reply);
        if (reply.isEmpty() && ++m_bad < 3)
            return 8;
        m_bad = 0;
        ++m_next;
        m_line.beginRequest();
        return reply.isEmpty() ? 2 : 1;
    }

    void note(const Exchange &exchange)
    {
        ++m_exchanges;
        if (exchange.outcome == Exchange::Outcome::Good)
            m_held[exchange.number] = m_isTrue;
    }

    void note(const StepNews &news)
    {
        if (news.kind != StepNews::Kind::Confirmed) {
            m_held.clear();
            return;
        }
        while (!m_held.empty() && m_held.begin()->first <= news.upTo) {
            ++m_confirmed;
            m_inARow = m_held.begin()->second ? 0 : m_inARow + 1;
            m_wrong += m_inARow > 0 ? 1 : 0;
            m_longestWrong = std::max(m_longestWrong, m_inARow);
            m_held.erase(m_held.begin());
        }
    }

    static inline Host *s_host = nullptr;
    const std::vector<QByteArray> m_plan;
    StrayLine m_line;
    const std::atomic<bool> m_stop{false};
    PollLoop m_loop;
    std::size_t m_next = 0;
    int m_bad = 0;
    bool m_isTrue = false;
    std::map<std::uint64_t, bool> m_held; // by number: whether the answer is the true one
    int m_confirmed = 0;
    int m_wrong = 0;
    int m_inARow = 0;
    int m_longestWrong = 0;
    std::uint64_t m_exchanges = 0;
};

// All ways in which one answer strays: repeated, or late, at the times between those of answers.
std::vector<Stray> allStrays(int answers)
{
    std::vector<Stray> strays;
    for (int answer = 0; answer < answers; ++answer) {
        for (int quarter = 1; quarter < 26; quarter += 2)
            strays.push_back({answer, microseconds(quarter * 2500), false});
        for (const int timeouts : {0, 1, 2, 3, 4, 5, 10, 20})
            strays.push_back({answer, milliseconds(45) + timeouts * TIMEOUT, true});
    }
    return strays;
}

StrayLine::StraysOf exactly(const std::vector<Stray> &strays)
{
    return [strays](int answer) {
        std::vector<Stray> matching;
        for (const Stray &stray : strays) {
            if (stray.answer == answer)
                matching.push_back(stray);
        }
        return matching;
    };
}

void expectTrue(const std::vector<QByteArray> &plan, const std::vector<Stray> &strays)
{
    for (const std::size_t rounds : {1u, 6u}) {
        Host host(plan, exactly(strays));
        for (std::size_t i = 0; i < rounds * plan.size(); ++i)
            host.step();
        host.confirm();
        ASSERT_EQ(host.wrong(), 0)
            << "rounds " << rounds << " of " << plan.size() << ", answer " << strays.front().answer
            << (strays.front().isLate ? " late" : " twice") << " after "
            << strays.front().after.count() << " us";
        ASSERT_TRUE(!strays.empty() || host.confirmed() > 0);
    }
}

// Calls `task` with all sequences of `length` of the shapes.
void forAllPlans(const std::vector<QByteArray> &shapes, std::size_t length,
                 const std::function<void(const std::vector<QByteArray> &)> &task)
{
    std::vector<std::size_t> digits(length, 0);
    for (;;) {
        std::vector<QByteArray> plan;
        for (const std::size_t digit : digits)
            plan.push_back(shapes[digit]);
        task(plan);
        std::size_t place = 0;
        while (place < length && ++digits[place] == shapes.size())
            digits[place++] = 0;
        if (place == length)
            return;
    }
}

std::uint64_t wantedExchanges()
{
    const int wanted = qEnvironmentVariableIntValue("KMR_EXCHANGES");
    return wanted > 0 ? static_cast<std::uint64_t>(wanted) : 100000;
}

const std::vector<QByteArray> ALL_SHAPES = {EIGHT_WORDS, OTHER_EIGHT, SEVEN_WORDS,
                                            ONE_BLOCK,   TWO_BLOCKS,  WRITTEN_WORD};

const std::vector<QByteArray> THREE_SHAPES = {EIGHT_WORDS, OTHER_EIGHT, SEVEN_WORDS};

const std::vector<std::vector<QByteArray>> PLANS = {
    {EIGHT_WORDS, SEVEN_WORDS, request(0x03, 0x107B, 6), request(0x03, 0x1081, 8),
     request(0x03, 0x1089, 7), request(0x03, 0x1090, 4)},
    {EIGHT_WORDS, SEVEN_WORDS, ONE_BLOCK, TWO_BLOCKS},
    {EIGHT_WORDS, OTHER_EIGHT},
    {EIGHT_WORDS}};

std::vector<Stray> someStrays(int answers)
{
    std::vector<Stray> strays;
    for (int answer = 0; answer < answers; ++answer) {
        for (const int quarter : {1, 3, 5, 7})
            strays.push_back({answer, microseconds(quarter * 2500), false});
        for (const int timeouts : {0, 1, 4})
            strays.push_back({answer, milliseconds(45) + timeouts * TIMEOUT, true});
    }
    return strays;
}

// Repeated within three exchanges, or late by up to 20 timeouts.
Stray anyStray(int answer, std::mt19937 &random)
{
    const bool isLate = random() % 2 == 0;
    const auto range = isLate ? 20 * TIMEOUT : milliseconds(35);
    return {answer, microseconds(random() % static_cast<unsigned>(microseconds(range).count())),
            isLate};
}

} // namespace

TEST(InStepSearch, NoSingleStrayMakesAFalseAnswerGoodInAnyShortSequence)
{
    for (std::size_t length = 1; length <= LONGEST_WITH_ONE && !testing::Test::HasFatalFailure();
         ++length) {
        forAllPlans(length < LONGEST_WITH_ONE ? ALL_SHAPES : THREE_SHAPES, length,
                    [](const std::vector<QByteArray> &plan) {
                        for (const Stray &stray : allStrays(6)) {
                            if (!testing::Test::HasFatalFailure())
                                expectTrue(plan, {stray});
                        }
                    });
    }
}

// Needs two that come within the time of one answer and look like those to the next two requests.
TEST(InStepSearch, OfTwoStraysFewShowAFalseAnswerAndTheirShiftIsFound)
{
    int wrong = 0;
    int runs = 0;
    const std::vector<Stray> strays = someStrays(4);
    const auto tryAll = [&](const std::vector<QByteArray> &plan) {
        for (std::size_t i = 0; i < strays.size(); ++i) {
            for (std::size_t k = i + 1; k < strays.size(); ++k) {
                Host host(plan, exactly({strays[i], strays[k]}));
                host.step(20);
                wrong += host.wrong() > 0 ? 1 : 0;
                ++runs;
                if (host.wrong() > 1)
                    host.step(InStep::MOST_BETWEEN_CHECKS);
                const int found = host.wrong();
                host.step(20);
                EXPECT_EQ(host.wrong(), found);
            }
        }
    };
    for (std::size_t length = 1; length <= LONGEST_WITH_TWO; ++length)
        forAllPlans(THREE_SHAPES, length, tryAll);
    EXPECT_LE(wrong * PAIRS_FOR_A_FALSE_ANSWER, runs);
}

TEST(InStepSearch, NoStrayThatComesAloneMakesAFalseAnswerGoodInALongRun)
{
    std::mt19937 random(1);
    int next = 0;
    const auto alone = [&](int answer) -> std::vector<Stray> {
        if (answer < next)
            return {};
        next = answer + 200 + static_cast<int>(random() % 100); // it has come before the next
        return {anyStray(answer, random)};
    };
    for (const std::vector<QByteArray> &plan : PLANS) {
        next = 0;
        Host host(plan, alone);
        while (host.exchanges() < wantedExchanges() / PLANS.size())
            host.step();
        EXPECT_EQ(host.wrong(), 0);
        EXPECT_GT(host.confirmed(), 0);
    }
}

TEST(InStepSearch, ManyStraysAtOnceShowFewFalseAnswersAndNeverALastingShift)
{
    std::mt19937 random(2);
    for (const int perMille : {1, 10, 50}) {
        for (const std::vector<QByteArray> &plan : PLANS) {
            Host host(plan, [&](int answer) -> std::vector<Stray> {
                if (static_cast<int>(random() % 1000) >= perMille)
                    return {};
                return {anyStray(answer, random)};
            });
            while (host.exchanges() < wantedExchanges() / 20)
                host.step();
            EXPECT_LE(host.wrong() * 1000, host.confirmed());
            EXPECT_LE(host.longestWrong(), 3);
        }
    }
}
