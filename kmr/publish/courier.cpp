#include "kmr/publish/courier.h"

#include "host/error.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace kmr {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds FIRST_PAUSE(500); // before connecting again; doubled up to the longest
constexpr milliseconds LONGEST_PAUSE(10000);
constexpr milliseconds LONGEST_WAIT(1000); // between two looks at the keep-alive
constexpr std::chrono::seconds LAST_SENDING(5);
constexpr std::chrono::seconds LAST_WAIT(8); // for the thread, which may hang in connecting

} // namespace

WakeUp::WakeUp() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

WakeUp::~WakeUp()
{
    close(m_descriptor);
}

void WakeUp::wake() const
{
    const std::uint64_t one = 1;
    const ssize_t written = write(m_descriptor, &one, sizeof one);
    static_cast<void>(written); // a full counter wakes as well
}

void WakeUp::clear() const
{
    std::uint64_t count = 0;
    const ssize_t got = read(m_descriptor, &count, sizeof count);
    static_cast<void>(got);
}

struct Courier::State {
    State(BrokerSettings theSettings, std::shared_ptr<Convention> theConvention,
          std::shared_ptr<Outbox> theOutbox, std::shared_ptr<WakeUp> theWakeUp, Events theEvents)
        : settings(std::move(theSettings)), convention(std::move(theConvention)),
          outbox(std::move(theOutbox)), wakeUp(std::move(theWakeUp)), events(std::move(theEvents))
    {
    }

    const BrokerSettings settings;
    const std::shared_ptr<Convention> convention;
    const std::shared_ptr<Outbox> outbox;
    const std::shared_ptr<WakeUp> wakeUp;
    const Events events;
    std::atomic<bool> isEnding{false};
    std::mutex mutex;
    std::condition_variable change;
    bool isOver = false;

    // Of the thread alone.
    using Numbers = std::vector<std::uint64_t>;
    std::map<int, Numbers> sent; // message numbers by the broker's ids
    bool isConnected = false;
    bool mustBeBorn = false;
    QString reported; // the last line
    milliseconds pause = FIRST_PAUSE;

    void run();
    void runConnection();
    Broker::Events brokerEvents(Broker *const &broker);
    void noteConnected(Broker &broker);
    void noteAcknowledged(int id, const QString &refusal);
    void noteReceived(const Incoming &incoming);
    bool sendBirth(Broker &broker);
    bool sendAll(Broker &broker);
    void send(Broker &broker, const std::vector<Message> &messages);
    void drop(const Numbers &numbers, const QString &refusal);
    std::vector<Message> takeTogether();
    bool sayGoodbye(Broker &broker);
    void rest();
    void report(const QString &line);
    QString name() const;
};

Courier::Courier(BrokerSettings settings, std::shared_ptr<Convention> convention,
                 std::shared_ptr<Outbox> outbox, std::shared_ptr<WakeUp> wakeUp, Events events)
    : m_state(std::make_shared<State>(std::move(settings), std::move(convention), std::move(outbox),
                                      std::move(wakeUp), std::move(events)))
{
    std::thread([state = m_state] { state->run(); }).detach();
}

Courier::~Courier()
{
    end();
}

void Courier::end()
{
    m_state->isEnding = true;
    m_state->wakeUp->wake();
    std::unique_lock<std::mutex> lock(m_state->mutex);
    if (!std::exchange(m_hasEnded, true))
        m_state->change.wait_for(lock, LAST_WAIT, [this] { return m_state->isOver; });
}

void Courier::State::run()
{
    while (!isEnding) {
        runConnection();
        outbox->setConnected(false);
        sent.clear();
        isConnected = false;
        rest();
    }
    const std::lock_guard<std::mutex> lock(mutex);
    isOver = true;
    change.notify_all();
}

// From connecting to the end of the connection.
void Courier::State::runConnection()
{
    Broker *self = nullptr;
    Broker broker(settings, convention->will(), brokerEvents(self));
    self = &broker;
    bool isAlive = broker.connect();
    if (isAlive)
        convention->noteWillSent();
    while (isAlive && !isEnding) {
        isAlive = sendAll(broker) && broker.wait(wakeUp->descriptor(), LONGEST_WAIT);
        wakeUp->clear();
    }
    if (isAlive && isConnected)
        isAlive = sayGoodbye(broker);
    if (!isAlive && !broker.why().isEmpty()) // a birth that can't be sent was reported
        report(QString("no connection to %1: %2").arg(name(), broker.why()));
}

Broker::Events Courier::State::brokerEvents(Broker *const &broker)
{
    return {[this, &broker] { noteConnected(*broker); },
            [this](int id, const QString &refusal) { noteAcknowledged(id, refusal); },
            [this](const Incoming &incoming) { noteReceived(incoming); },
            [this](const QString &refusal) {
                events.report(
                    QString("%1 does not let us receive writes: %2").arg(name(), refusal));
            }};
}

void Courier::State::noteConnected(Broker &broker)
{
    isConnected = true;
    broker.subscribe(convention->filters());
    mustBeBorn = true;
}

void Courier::State::noteAcknowledged(int id, const QString &refusal)
{
    const auto known = sent.extract(id); // unless it is a birth's
    if (known)
        pause = FIRST_PAUSE;
    const Numbers numbers = known ? known.mapped() : Numbers();
    if (!refusal.isEmpty())
        return drop(numbers, refusal);
    for (const std::uint64_t number : numbers)
        outbox->acknowledge(number);
}

void Courier::State::noteReceived(const Incoming &incoming)
{
    try {
        Convention::Commands commands = convention->commands(incoming);
        mustBeBorn = mustBeBorn || commands.wantsBirth;
        events.requested(std::move(commands.requests));
    } catch (const Error &error) {
        report(error.text());
    } catch (const std::exception &error) { // libmosquitto, which calls this, is in C
        report(QString("a message to %1 can't be taken: %2")
                   .arg(QString::fromUtf8(incoming.topic.left(200)), error.what()));
    }
}

// False when it can't be sent.
bool Courier::State::sendBirth(Broker &broker)
{
    const QString refusal = broker.publish(convention->birth(outbox->lastNumber())).refusal;
    if (!refusal.isEmpty()) {
        report(QString("%1 does not take the birth, so it gets no data: %2").arg(name(), refusal));
        return false;
    }
    mustBeBorn = false;
    if (outbox->isConnected()) // it was the second birth of this connection
        return true;
    report("connected to " + name());
    outbox->setConnected(true);
    events.connected();
    return true;
}

// False when this connection is of no use.
bool Courier::State::sendAll(Broker &broker)
{
    if (!isConnected)
        return true;
    if (mustBeBorn && !sendBirth(broker))
        return false;
    for (;;) {
        const std::vector<Message> messages = takeTogether();
        if (messages.empty())
            return true;
        send(broker, messages);
    }
}

// Messages that can't be sent together are sent in halves, in their order.
void Courier::State::send(Broker &broker, const std::vector<Message> &messages)
{
    const auto [id, refusal] = broker.publish(convention->data(messages));
    if (refusal.isEmpty()) {
        convention->noteDataSent();
        for (const Message &message : messages)
            sent[id].push_back(message.number);
    } else if (messages.size() == 1) {
        drop({messages.front().number}, refusal);
    } else {
        const auto middle = messages.begin() + static_cast<std::ptrdiff_t>(messages.size() / 2);
        send(broker, {messages.begin(), middle});
        send(broker, {middle, messages.end()});
    }
}

// What the broker refuses.
void Courier::State::drop(const Numbers &numbers, const QString &refusal)
{
    report(QString("%1 does not take a message: %2").arg(name(), refusal));
    events.dropped(numbers.size());
    for (const std::uint64_t number : numbers)
        outbox->acknowledge(number);
}

std::vector<Message> Courier::State::takeTogether()
{
    std::vector<Message> messages;
    while (messages.size() < convention->mostTogether()) {
        std::optional<Message> message = outbox->next();
        if (!message)
            break;
        messages.push_back(*std::move(message));
    }
    return messages;
}

// False when the connection was lost meanwhile.
bool Courier::State::sayGoodbye(Broker &broker)
{
    const steady_clock::time_point end = steady_clock::now() + LAST_SENDING;
    bool isAlive = true;
    while (isAlive && !outbox->isEmpty() && steady_clock::now() < end) {
        isAlive = sendAll(broker) && broker.wait(wakeUp->descriptor(), milliseconds(50));
        wakeUp->clear();
    }
    const auto [id, refusal] = broker.publish(convention->death());
    if (refusal.isEmpty())
        sent[id] = {};
    while (isAlive && sent.count(id) > 0 && steady_clock::now() < end)
        isAlive = broker.wait(wakeUp->descriptor(), milliseconds(50));
    broker.disconnect();
    return isAlive;
}

void Courier::State::rest()
{
    const steady_clock::time_point end = steady_clock::now() + pause;
    pause = std::min(2 * pause, LONGEST_PAUSE);
    while (!isEnding && steady_clock::now() < end)
        std::this_thread::sleep_for(milliseconds(50));
}

// A failure that goes on is reported once.
void Courier::State::report(const QString &line)
{
    if (std::exchange(reported, line) != line && !(isEnding && !isConnected))
        events.report(line);
}

QString Courier::State::name() const
{
    return QString("the broker %1:%2").arg(settings.host).arg(settings.port);
}

} // namespace kmr
