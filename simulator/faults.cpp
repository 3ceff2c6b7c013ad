#include "simulator/faults.h"

#include "modbus/ascii.h"
#include "modbus/protocol.h"

#include <QLatin1String>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace simulator {

namespace {

using std::chrono::milliseconds;

constexpr int LONG_LINE_DIGITS = 2 * modbus::MAX_LINE_CHARS;
constexpr int MAX_MILLISECONDS = 600000;

enum class ValueKind { None, Milliseconds, ExceptionCode };

struct KindRow {
    FaultKind kind;
    const char *name;
    ValueKind valueKind;
    int usual; // value if none is typed
    const char *meaning;
};

constexpr KindRow KINDS[] = {
    {FaultKind::Deaf, "deaf", ValueKind::None, 0, "the request does not reach the controller"},
    {FaultKind::Close, "close", ValueKind::Milliseconds, 500,
     "the link closes instead of an answer, for that time"},
    {FaultKind::Silence, "silence", ValueKind::None, 0, "executed, but no answer comes"},
    {FaultKind::Exception, "exception", ValueKind::ExceptionCode, 4,
     "refused with that exception, not executed"},
    {FaultKind::Station, "station", ValueKind::None, 0, "the answer has another station's number"},
    {FaultKind::Long, "long", ValueKind::None, 0, "the answer is longer than any frame"},
    {FaultKind::NoLineFeed, "no-lf", ValueKind::None, 0, "the answer's LF is missing"},
    {FaultKind::Noise, "noise", ValueKind::None, 0, "1 to 20 characters before the answer's ':'"},
    {FaultKind::Echo, "echo", ValueKind::None, 0, "the request comes back before the answer"},
    {FaultKind::Lose, "lose", ValueKind::None, 0, "one to three characters are lost"},
    {FaultKind::Double, "double", ValueKind::None, 0, "one to three characters come twice"},
    {FaultKind::Flip, "flip", ValueKind::None, 0, "one character has its lowest bit flipped"},
    {FaultKind::Late, "late", ValueKind::Milliseconds, 1500, "everything comes that much later"},
    {FaultKind::Pieces, "pieces", ValueKind::Milliseconds, 20,
     "comes in two to five pieces with that pause between them"},
};

const KindRow *findKind(const QString &name)
{
    for (const KindRow &row : KINDS) {
        if (name == QLatin1String(row.name))
            return &row;
    }
    return nullptr;
}

QString nameOf(FaultKind kind)
{
    for (const KindRow &row : KINDS) {
        if (row.kind == kind)
            return QLatin1String(row.name);
    }
    return {};
}

QString kindNames()
{
    QStringList names;
    for (const KindRow &row : KINDS)
        names.append(QLatin1String(row.name));
    return names.join(", ");
}

// Each of these returns what is wrong, or an empty text.

QString readValue(const KindRow &row, const QString &text, int &value)
{
    if (row.valueKind == ValueKind::None)
        return QString("%1 takes no value").arg(QLatin1String(row.name));
    bool ok = false;
    if (row.valueKind == ValueKind::ExceptionCode) {
        value = text.toInt(&ok);
        return ok && value >= 1 && value <= 255
                   ? QString()
                   : QString("exception=%1: expected its code, 1 to 255").arg(text);
    }
    value = text.endsWith("ms") ? text.left(text.size() - 2).toInt(&ok) : 0;
    return ok && value >= 0 && value <= MAX_MILLISECONDS
               ? QString()
               : QString("%1=%2: expected a time of 0ms to %3ms, for example %1=%4ms")
                     .arg(QLatin1String(row.name), text)
                     .arg(MAX_MILLISECONDS)
                     .arg(row.usual);
}

QString readChoice(const QString &name, const QString &text, Fault &fault)
{
    bool ok = false;
    if (name == "every") {
        fault.every = text.toInt(&ok);
        return ok && fault.every >= 1
                   ? QString()
                   : QString("every=%1: expected a whole number from 1 on").arg(text);
    }
    if (name == "probability") {
        fault.probability = text.toDouble(&ok);
        return ok && fault.probability >= 0 && fault.probability <= 1
                   ? QString()
                   : QString("probability=%1: expected 0 to 1, for example 0.02").arg(text);
    }
    return QString("\"%1\": after the kind only every=N and probability=P are known").arg(name);
}

QString readFault(const QString &text, Fault &fault)
{
    const QStringList items = text.split(',');
    const QString kind = items.first().section('=', 0, 0);
    const KindRow *row = findKind(kind);
    if (!row)
        return QString("there is no kind \"%1\", only %2").arg(kind, kindNames());
    fault = {row->kind, row->usual, 1, 1};
    if (items.first().contains('=')) {
        QString error = readValue(*row, items.first().section('=', 1), fault.value);
        if (!error.isEmpty())
            return error;
    }
    for (const QString &item : items.mid(1)) {
        QString error = readChoice(item.section('=', 0, 0), item.section('=', 1), fault);
        if (!error.isEmpty())
            return error;
    }
    return {};
}

const Fault *find(const std::vector<Fault> &hits, FaultKind kind)
{
    const auto hit = std::find_if(hits.begin(), hits.end(),
                                  [kind](const Fault &fault) { return fault.kind == kind; });
    return hit == hits.end() ? nullptr : &*hit;
}

bool isDamage(const Fault &fault)
{
    return fault.kind == FaultKind::Lose || fault.kind == FaultKind::Double ||
           fault.kind == FaultKind::Flip;
}

QByteArray exceptionLine(const QByteArray &request, int code)
{
    QByteArray message = modbus::decodeLine(request).message.left(2);
    message[1] = static_cast<char>(message.at(1) | static_cast<char>(modbus::EXCEPTION_BIT));
    return modbus::encodeLine(message + static_cast<char>(code));
}

// The answer with the next station's number.
QByteArray fromOtherStation(const QByteArray &answer)
{
    QByteArray message = modbus::decodeLine(answer).message;
    message[0] = static_cast<char>(message.at(0) % modbus::MAX_STATION + 1);
    return modbus::encodeLine(message);
}

// What the controller does and answers, before faults act on its answer.
Exchange meet(Controller &controller, const QByteArray &line, const std::vector<Fault> &hits)
{
    Exchange exchange;
    if (find(hits, FaultKind::Deaf)) {
        exchange = understand(line);
        exchange.outcome = Outcome::NotHeard;
    } else if (const Fault *exception = find(hits, FaultKind::Exception)) {
        exchange = understand(line);
        exchange.outcome = Outcome::Refused;
        exchange.exception = static_cast<std::uint8_t>(exception->value);
        exchange.answer = exceptionLine(line, exception->value);
    } else {
        exchange = controller.carryOut(line);
    }
    if (find(hits, FaultKind::Silence) || find(hits, FaultKind::Close))
        exchange.answer.clear();
    for (const Fault &fault : hits)
        exchange.faults.append(nameOf(fault.kind));
    return exchange;
}

Plan undisturbed(const QByteArray &answer)
{
    Plan plan;
    if (!answer.isEmpty())
        plan.pieces.push_back({milliseconds(0), answer});
    return plan;
}

} // namespace

std::optional<Fault> parseFault(const QString &text, QString &error)
{
    Fault fault;
    const QString wrong = readFault(text, fault);
    if (wrong.isEmpty())
        return fault;
    error = QString("bad fault \"%1\": %2\n(a fault is KIND[=VALUE][,every=N][,probability=P], for "
                    "example late=800ms,every=50; kinds: %3)")
                .arg(text, wrong, kindNames());
    return std::nullopt;
}

QString faultHelp()
{
    QString help;
    for (const KindRow &row : KINDS) {
        QString example = QLatin1String(row.name);
        if (row.valueKind == ValueKind::Milliseconds)
            example += QString("=%1ms").arg(row.usual);
        else if (row.valueKind == ValueKind::ExceptionCode)
            example += QString("=%1").arg(row.usual);
        help += QString("  %1 %2\n").arg(example, -14).arg(QLatin1String(row.meaning));
    }
    return help;
}

Faults::Faults(std::vector<Fault> faults, std::uint64_t seed)
    : m_faults(std::move(faults)), m_random(seed)
{
    std::stable_sort(m_faults.begin(), m_faults.end(),
                     [](const Fault &left, const Fault &right) { return left.kind < right.kind; });
}

Plan Faults::answer(Controller &controller, const QByteArray &line)
{
    if (!controller.isAddressedBy(line))
        return undisturbed(controller.answer(line));
    const std::vector<Fault> hits = draw();
    const Exchange exchange = meet(controller, line, hits);
    controller.report(exchange);
    QByteArray bytes = exchange.answer;
    for (const Fault &fault : hits)
        spoil(fault, line, bytes);
    if (const Fault *close = find(hits, FaultKind::Close))
        return {{}, milliseconds(close->value)};
    if (bytes.isEmpty())
        return {};

    const Fault *pieces = find(hits, FaultKind::Pieces);
    const Fault *late = find(hits, FaultKind::Late);
    Plan plan = pieces ? Plan{cut(bytes, milliseconds(pieces->value)), {}} : undisturbed(bytes);
    plan.pieces.front().after = milliseconds(late ? late->value : 0);
    return plan;
}

// The faults that hit the next request.
std::vector<Fault> Faults::draw()
{
    ++m_requests;
    std::vector<Fault> hits;
    bool isDamaged = false;
    for (const Fault &fault : m_faults) {
        constexpr double STEPS = 9007199254740992.0; // 2^53, the precision of a double
        const double drawn = static_cast<double>(m_random() >> 11) / STEPS;
        if (m_requests % static_cast<std::uint64_t>(fault.every) != 0 || drawn >= fault.probability)
            continue;
        if (isDamage(fault) && std::exchange(isDamaged, true))
            continue;
        hits.push_back(fault);
    }
    return hits;
}

// Applies the fault to the characters, if it acts on them.
void Faults::spoil(const Fault &fault, const QByteArray &request, QByteArray &bytes)
{
    if (fault.kind == FaultKind::Echo) {
        bytes.prepend(request);
        return;
    }
    if (bytes.isEmpty())
        return;
    const int size = static_cast<int>(bytes.size());
    switch (fault.kind) {
    case FaultKind::Station:
        bytes = fromOtherStation(bytes);
        break;
    case FaultKind::Long:
        bytes = ':' + QByteArray(LONG_LINE_DIGITS, '0') + "\r\n";
        break;
    case FaultKind::NoLineFeed:
        bytes.chop(1);
        break;
    case FaultKind::Noise:
        for (int count = random(1, 20); count > 0; --count)
            bytes.prepend(static_cast<char>(random(0, '9'))); // ends before ':'
        break;
    case FaultKind::Lose: {
        const int count = random(1, 3);
        bytes.remove(random(0, size - count), count);
        break;
    }
    case FaultKind::Double: {
        const int count = random(1, 3);
        const int position = random(0, size - count);
        bytes.insert(position, bytes.mid(position, count));
        break;
    }
    case FaultKind::Flip: {
        const int position = random(0, size - 1);
        bytes[position] = static_cast<char>(bytes.at(position) ^ 1);
        break;
    }
    default: // acts elsewhere
        break;
    }
}

// `bytes`, at least five, in two to five pieces; all but the first after a pause.
std::vector<Plan::Piece> Faults::cut(const QByteArray &bytes, milliseconds pause)
{
    std::vector<Plan::Piece> pieces;
    int begin = 0;
    for (int left = random(2, 5); left > 0; --left) {
        const int rest = static_cast<int>(bytes.size()) - begin;
        const int length = left == 1 ? rest : random(1, rest - left + 1);
        pieces.push_back({pause, bytes.mid(begin, length)});
        begin += length;
    }
    return pieces;
}

// A whole number from `low` to `high`. Not std::uniform_int_distribution, whose results differ
// between standard libraries.
int Faults::random(int low, int high)
{
    return low + static_cast<int>(m_random() % static_cast<std::uint64_t>(high - low + 1));
}

Responder respondAs(Controller &controller, Faults *faults)
{
    if (faults)
        return [&controller, faults](const QByteArray &line) {
            return faults->answer(controller, line);
        };
    return [&controller, none = Faults()](const QByteArray &line) mutable {
        return none.answer(controller, line);
    };
}

} // namespace simulator
