#include "session.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr qint32 MOST_IN_CALL = 600; // more than a queue holds, and longer than a frame
constexpr qint32 MOST_ELEMENTS = 1500;
constexpr qint32 RECIPE_WORDS = 1024;
constexpr int REPORTS_DEEP = 2; // a callback that writes is called back again

void require(bool holds, const char *what)
{
    if (holds)
        return;
    fprintf(stderr, "session: %s\n", what);
    abort();
}

bool isBitArea(const QString &area)
{
    for (const char *name : {"X", "Y", "M", "S", "T", "C", "TV_bit"}) {
        if (area == QLatin1String(name))
            return true;
    }
    return false;
}

int hexValue(char character)
{
    const char *const digits = "0123456789ABCDEF";
    const char *const found = character ? strchr(digits, character) : nullptr;
    return found ? static_cast<int>(found - digits) : -1;
}

// A frame is a line, and one of digit pairs alone has the right LRC. Others come of stations and
// counts that are no numbers of two or four digits.
void requireFrame(const FRAME_PRO &frame)
{
    require(frame.frameLen >= 0 && frame.frameLen <= FRAME_CHARS, "length of a frame");
    if (frame.frameLen == 0)
        return;
    require(frame.frameLen >= 7 && frame.frame[0] == ':', "start of a frame");
    const int end = frame.frameLen - 2;
    require(frame.frame[end] == '\r' && frame.frame[end + 1] == '\n', "end of a frame");
    int sum = 0;
    for (int i = 1; i < end; i += 2) {
        const int high = hexValue(frame.frame[i]);
        const int low = hexValue(frame.frame[i + 1]);
        if (high < 0 || low < 0)
            return;
        sum += high * 16 + low;
    }
    require(end % 2 == 1 && sum % 256 == 0, "LRC of a frame");
}

} // namespace

class Session::Host {
public:
    explicit Host(ByteSource &bytes) : m_bytes(bytes), m_recipe(2 * RECIPE_WORDS)
    {
        m_status[STATUS_RECIPE_DOWNLOAD] = 0;
        m_status[STATUS_RECIPE_UPLOAD] = 0;
        current = this;
        initialise();
        intf_setAddrValueChangeCallBack(report);
    }

    ~Host()
    {
        intf_setAddrValueChangeCallBack(nullptr);
        current = nullptr;
    }

    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;

    void call();

    bool isOver() const
    {
        return m_bytes.isEmpty();
    }
    std::uint64_t hash() const
    {
        return m_digest.value();
    }

private:
    static qint32 report(qint32 devId, qint32 station, QString area, qint32 address)
    {
        return current->takeReport(devId, station, area, address);
    }

    qint32 takeReport(qint32 devId, qint32 station, const QString &area, qint32 address);
    qint32 elements();
    KEY_ADDRESS keyAddress();
    QByteArray property();
    QByteArray reply();
    QByteArray dataReply();

    void initialise();
    void identity();
    void setCallback();
    void setRecipes();
    void checkAddress();
    void catalogue();
    void series();
    void merge();
    void readOnce();
    void send();
    void takeReply();
    void requestRecipe();
    void getValues();
    void setValues();

    static Host *current;

    ByteSource &m_bytes;
    Digest m_digest;
    static std::vector<quint8> m_status; // one for all sessions: it is large
    std::vector<quint8> m_recipe;
    QMutex m_mutex;
    FRAME_PRO m_sent;
    qint32 m_elementsLeft = MOST_ELEMENTS;
    int m_reportsDeep = 0;
};

Session::Host *Session::Host::current = nullptr;
std::vector<quint8> Session::Host::m_status(STATUS_BLOCK_BYTES);

void Session::Host::call()
{
    const int choice = m_bytes.below(32);
    if (choice < 8)
        send();
    else if (choice < 16)
        takeReply();
    else if (choice < 19)
        setValues();
    else if (choice < 22)
        getValues();
    else if (choice < 24)
        merge();
    else if (choice < 26)
        readOnce();
    else if (choice < 27)
        requestRecipe();
    else if (choice < 28)
        setRecipes();
    else if (choice < 29)
        checkAddress();
    else if (choice < 30)
        series();
    else if (choice < 31)
        catalogue();
    else
        identity();
}

qint32 Session::Host::takeReport(qint32 devId, qint32 station, const QString &area, qint32 address)
{
    m_digest.number(devId);
    m_digest.number(station);
    m_digest.text(area);
    m_digest.number(address);
    if (m_reportsDeep >= REPORTS_DEEP)
        return 0;
    ++m_reportsDeep;
    const int choice = m_bytes.below(8);
    if (choice == 1)
        getValues();
    else if (choice == 2)
        setValues();
    else if (choice == 3)
        readOnce();
    --m_reportsDeep;
    return choice;
}

// A number of elements, taken from what the session may still use. Negative ones are bounded too:
// a request's length in characters is their multiple, which wraps round at 32 bits.
qint32 Session::Host::elements()
{
    const bool many = m_bytes.below(64) == 0;
    const qint32 most = std::min(many ? MOST_IN_CALL : 20, m_elementsLeft);
    const qint32 count = std::max(m_bytes.numberUpTo(most), -MOST_IN_CALL);
    m_elementsLeft -= std::max(count, 0);
    return count;
}

KEY_ADDRESS Session::Host::keyAddress()
{
    KEY_ADDRESS key;
    key.station = m_bytes.station();
    key.area = m_bytes.area();
    key.address = m_bytes.number();
    key.elemKind = isBitArea(key.area) == (m_bytes.below(8) > 0) ? -1 : m_bytes.number();
    key.count = elements();
    return key;
}

// "device#writeQueueOff#third#retryLimit#groupLimit", sometimes short or no numbers at all.
QByteArray Session::Host::property()
{
    if (m_bytes.below(8) == 0)
        return m_bytes.text().toLatin1();
    QByteArray text = QByteArray::number(m_bytes.below(2)) + '#';
    text += QByteArray::number(m_bytes.below(8) == 0 ? m_bytes.number() : 0) + '#';
    text += QByteArray::number(m_bytes.number()) + '#';
    text += QByteArray::number(m_bytes.below(4) == 0 ? m_bytes.number() : 2) + '#';
    text += QByteArray::number(m_bytes.below(4) == 0 ? m_bytes.number() : 8);
    return text;
}

void Session::Host::initialise()
{
    const int withheld = m_bytes.below(64); // 1 to 5: one pointer is null
    const QByteArray text = property();
    qint32 result = -1;
    m_digest.number(intf_initProperty(
        withheld == 1 ? nullptr : m_status.data(), this, withheld == 2 ? nullptr : m_recipe.data(),
        withheld == 3 ? nullptr : &result, withheld == 4 ? nullptr : text.constData(),
        withheld == 5 ? nullptr : &m_mutex));
    m_digest.number(result);
}

void Session::Host::identity()
{
    const int choice = m_bytes.below(8);
    QString text = QString::fromLatin1("before");
    qint32 type = -1;
    if (choice == 0)
        intf_getProtocolType(&type);
    else if (choice == 1)
        intf_getProtocolType(nullptr);
    else if (choice == 2)
        intf_getDriverParameter(text);
    else if (choice == 3)
        intf_getDriverPropertyPage(text);
    else if (choice == 4)
        intf_SetDriverPropertyPage(text);
    else if (choice == 5)
        setCallback();
    else if (choice == 6)
        initialise();
    m_digest.number(type);
    m_digest.text(text);
}

void Session::Host::setCallback()
{
    intf_setAddrValueChangeCallBack(m_bytes.below(4) == 0 ? nullptr : report);
}

void Session::Host::setRecipes()
{
    if (m_bytes.below(8) == 0) {
        m_digest.number(intf_setRcpAddress(nullptr));
        return;
    }
    QVector<_RCP_VAR_PRO> list;
    const int size = m_bytes.below(5);
    for (int i = 0; i < size; ++i) {
        _RCP_VAR_PRO entry;
        entry.devId = m_bytes.below(2);
        entry.station = m_bytes.station();
        entry.area = m_bytes.area();
        entry.address = m_bytes.number();
        entry.count = elements();
        // One word more than the entry says: an upload of a counter stores both its words.
        entry.bufWord = m_bytes.numberUpTo(RECIPE_WORDS - MOST_IN_CALL - 1);
        list.append(entry);
    }
    m_digest.number(intf_setRcpAddress(&list));
}

void Session::Host::checkAddress()
{
    const QString area = m_bytes.area();
    const QString text = m_bytes.text();
    const qint32 count = m_bytes.number();
    const qint32 type = m_bytes.below(4) - 1;
    qint32 address = -12345;
    qint32 *const out = m_bytes.below(8) == 0 ? nullptr : &address;
    const qint32 valid = intf_checkAddrValidity(area, text, out, count, type);
    require(valid >= 0 && valid <= 4, "result of intf_checkAddrValidity");
    m_digest.number(valid);
    m_digest.number(address);
    const qint32 checked = intf_checkAddr(area, text, out, type, count);
    require(checked >= 0 && checked <= 5, "result of intf_checkAddr");
    m_digest.number(checked);
    m_digest.number(address);
}

void Session::Host::catalogue()
{
    QStringList out;
    m_digest.number(intf_getRegDiscription(m_bytes.area(), out));
    m_digest.number(intf_getRegListByType(m_bytes.number(), out));
    for (const QString &text : out)
        m_digest.text(text);
}

void Session::Host::series()
{
    const QString area = m_bytes.area();
    const qint32 start = m_bytes.number();
    const qint32 n = m_bytes.numberUpTo(64);
    const qint32 step = m_bytes.below(2) == 0 ? -2 : m_bytes.number();
    const int withheld = m_bytes.below(8);
    QVector<QString> texts;
    QVector<qint32> numbers;
    m_digest.number(intf_multiCopy(area, start, n, step, withheld == 1 ? nullptr : &texts,
                                   withheld == 2 ? nullptr : &numbers));
    for (const QString &text : texts)
        m_digest.text(text);
    for (const qint32 number : numbers)
        m_digest.number(number);
}

void Session::Host::merge()
{
    QList<KEY_ADDRESS> list;
    const int size = m_bytes.below(6);
    for (int i = 0; i < size; ++i)
        list.append(keyAddress());
    m_digest.number(intf_addrMerge(list));
}

void Session::Host::readOnce()
{
    KEY_ADDRESS key = keyAddress();
    m_digest.number(intf_addConditionRead(key, m_bytes.byte()));
}

void Session::Host::send()
{
    FRAME_PRO frame;
    const qint32 result = intf_getSendFrame(m_bytes.below(16) == 0 ? nullptr : &frame);
    require(result == 0 || result == 1, "result of intf_getSendFrame");
    requireFrame(frame);
    m_digest.number(result);
    m_digest.bytes(frame.frame, sizeof frame.frame);
    for (const qint32 number :
         {frame.frameLen, frame.replyLen, frame.replyDataPos, frame.replyDataLen, frame.frameSpare,
          frame.var.reqTag, frame.var.station, frame.var.address, frame.var.count})
        m_digest.number(number);
    m_digest.text(frame.var.area);
    m_digest.bytes(frame.var.data, sizeof frame.var.data);
    m_sent = frame;
}

// A reply of the length that the frame sent last announces, with data from the bytes.
QByteArray Session::Host::dataReply()
{
    QByteArray line(":010300");
    const quint8 pattern = m_bytes.byte();
    const qint32 chars = qBound(0, m_sent.replyDataLen, 4 * MOST_IN_CALL);
    for (qint32 i = 0; i < chars; ++i)
        line += "0123456789ABCDEF"[(pattern + (i % 4 == 3 ? m_bytes.byte() : i)) % 16];
    return line + "00\r\n";
}

QByteArray Session::Host::reply()
{
    switch (m_bytes.below(16)) {
    case 0:
        return QByteArray();
    case 1:
        return QByteArray(":0183027A\r\n");
    case 2:
        return m_bytes.text().toLatin1();
    case 3:
        return dataReply().left(m_bytes.byte());
    case 4:
    case 5:
    case 6:
    case 7:
    case 8:
        return QByteArray(m_bytes.below(2) == 0 ? ":01050000FF00FB\r\n" : ":011006000001E8\r\n");
    default:
        return dataReply();
    }
}

void Session::Host::takeReply()
{
    QByteArray line = reply();
    QString error = QString::fromLatin1("before");
    const qint32 result = intf_dealRcvFrame(line, error);
    require(result == 0 || result == 1 || result == 2 || result == 8,
            "result of intf_dealRcvFrame");
    require(error.isEmpty() == (result == 0), "text of intf_dealRcvFrame");
    m_digest.number(result);
    m_digest.text(error);
    m_digest.bytes(m_recipe.data(), m_recipe.size());
    m_digest.bytes(&m_status[STATUS_RECIPE_DOWNLOAD], 2);
}

void Session::Host::requestRecipe()
{
    m_status[STATUS_RECIPE_DOWNLOAD] = static_cast<quint8>(m_bytes.below(3));
    m_status[STATUS_RECIPE_UPLOAD] = static_cast<quint8>(m_bytes.below(3));
    m_recipe[m_bytes.byte()] = m_bytes.byte();
}

void Session::Host::getValues()
{
    const qint32 station = m_bytes.station();
    const QString area = m_bytes.area();
    const qint32 address = m_bytes.number();
    const qint32 count = elements();
    const qint32 size = std::max(count, 0) * (isBitArea(area) ? 1 : 2);
    // Of exactly the size that is asked for, so that a byte too many is noticed.
    std::vector<quint8> out(static_cast<std::size_t>(size), 0xEE);
    quint8 *const place = m_bytes.below(16) == 0 ? nullptr : out.data();
    m_digest.number(intf_getData(station, area, address, count, place));
    m_digest.bytes(out.data(), out.size());
}

void Session::Host::setValues()
{
    const qint32 station = m_bytes.station();
    const QString area = m_bytes.area();
    const qint32 address = m_bytes.number();
    const qint32 count = elements();
    const qint32 size = std::max(count, 0) * (isBitArea(area) ? 1 : 2);
    std::vector<quint8> data(static_cast<std::size_t>(size));
    const quint8 first = m_bytes.byte();
    for (std::size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<quint8>(first % 3 + i * (first / 3));
    quint8 *const place = m_bytes.below(16) == 0 ? nullptr : data.data();
    m_digest.number(intf_setData(station, area, address, count, place, m_bytes.byte()));
}

Session::Session(ByteSource &bytes) : m_host(new Host(bytes)) {}

Session::~Session() = default;

int Session::run(int most)
{
    int calls = 0;
    for (; calls < most && !m_host->isOver(); ++calls)
        m_host->call();
    return calls;
}

std::uint64_t Session::hash() const
{
    return m_host->hash();
}
