// Stores of words, and repeated exchanges with them.
#pragma once

#include "benchmarks/panel.h"

namespace bench {

enum { READ_WORDS = 8 }; // words that an exchange reads

// Which eight words of the store are read: always the first, always the last, or 125 runs in turn
// that are spread evenly over the store (fewer, and so all of it, in a store below 1,000).
enum Blocks { FIRST, LAST, IN_TURN };

// The runs to poll in a store of `areas` words.
std::vector<Run> pollPlan(Blocks blocks, int areas);

// Gives the driver a store of `areas` words of area "D", 10,000 each of station 1, 2 and so on,
// that polls `plan`. A large store takes seconds to build, so it is kept while the same size is
// asked for.
void openStore(int areas, const std::vector<Run> &plan);

// Polls every run of `plan` twice and requires that each value arrives and each change is reported.
// The store holds READ_8_VALUES then.
void checkReads(const std::vector<Run> &plan);

// Exchanges over a plan of `runs` runs. Once checkReads has passed, the replies bring no change or,
// with `changes`, change every word.
class ReadLoop {
public:
    ReadLoop(size_t runs, bool changes) : m_runs(runs), m_changes(changes), m_reply(changes ? 1 : 0)
    {
    }

    void exchange()
    {
        m_functions.getSendFrame(&m_frame);
        m_functions.dealRcvFrame(m_replies[m_reply], m_errorInfo);
        if (m_changes && ++m_done == m_runs) {
            m_done = 0;
            m_reply = 1 - m_reply;
        }
    }

private:
    const kmr::DriverFunctions &m_functions = intf();
    QByteArray m_replies[2] = {received(READ_8_REPLY), received(OTHER_READ_8_REPLY)};
    FRAME_PRO m_frame;
    QString m_errorInfo;
    size_t m_runs;
    bool m_changes;
    size_t m_reply;
    size_t m_done = 0;
};

// A write to station 1, and its characters on the line.
struct Write {
    const char *area;
    qint32 address;
    qint32 count; // elements
    std::vector<quint8> data;
    const char *request;
    const char *acknowledgement;
};

// Writes of eight words to "D" 0 and of bit "M" 0.
extern const Write WRITE_8_WORDS;
extern const Write WRITE_BIT;

// Gives the driver a store of 100 areas that polls the words "D" 0 to 7, and requires that `write`
// goes out.
void checkWrites(const Write &write);

// Repeats three writes and the read that follows them. To be used after checkWrites.
class WriteLoop {
public:
    explicit WriteLoop(const Write &write) : m_write(write) {}

    void exchangeFour()
    {
        for (int i = 0; i < 3; ++i) {
            m_functions.setData(1, m_area, m_write.address, m_write.count, m_write.data.data(), 0);
            m_functions.getSendFrame(&m_frame);
            m_functions.dealRcvFrame(m_acknowledgement, m_errorInfo);
        }
        m_functions.getSendFrame(&m_frame);
        m_functions.dealRcvFrame(m_readReply, m_errorInfo);
    }

private:
    const kmr::DriverFunctions &m_functions = intf();
    Write m_write;
    QString m_area = QString::fromLatin1(m_write.area);
    QByteArray m_acknowledgement = received(m_write.acknowledgement);
    QByteArray m_readReply = received(READ_8_REPLY);
    FRAME_PRO m_frame;
    QString m_errorInfo;
};

} // namespace bench
