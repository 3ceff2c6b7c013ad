// The convention of SCADA systems: Sparkplug B (Eclipse Sparkplug Specification 3.0.0,
// chapter "Operational Behavior"). The publisher is an edge node without devices, its tags are the
// node's metrics.
//
//   spBv1.0/GROUP/NBIRTH/NODE  all metrics with their values, first in each connection
//   spBv1.0/GROUP/NDATA/NODE   those that changed since
//   spBv1.0/GROUP/NDEATH/NODE  the broker's will, and at the end
//   spBv1.0/GROUP/NCMD/NODE    commands: a rebirth, or values to write
//
// An outbox's message is one encoded metric; it becomes a part of an NDATA when it is sent. What a
// birth overtook was not sent at its time: it is marked as historical.
#pragma once

#include "kmr/publish/convention.h"
#include "kmr/publish/sparkplug_fields.h"
#include "kmr/publish/topics.h"

#include <functional>
#include <map>
#include <mutex>

namespace kmr {

class SparkplugNode : public Convention {
public:
    // `topics`: of the prefix GROUP/NODE. `bdSeqFile` keeps the number of the connection, which
    // births and deaths have in common, over restarts; `report` takes a line for a person when it
    // can't be written, once. Throws Error (Usage) for a prefix of another form and for names that
    // Sparkplug reserves.
    SparkplugNode(const Topics &topics, const std::vector<PublishedTag> &tags, bool takesRequests,
                  QString bdSeqFile, std::function<void(const QString &)> report);

    QString name() const override;
    bool isOurs(const Message &message) const override;
    Message value(const PublishedTag &tag, const Sample &sample) override;
    Message outcome(Message answer) override;
    QStringList filters() const override;
    Message will() override;
    void noteWillSent() override;
    Message birth(std::uint64_t lastNumber) override;
    Message death() override;
    Message data(const std::vector<Message> &messages) override;
    void noteDataSent() override;
    std::size_t mostTogether() const override;
    Commands commands(const Incoming &incoming) override;

private:
    QByteArray topic(const char *type) const;
    Message message(const char *type, qint64 time, const QByteArray &payload) const;
    Message keep(const QString &name, qint64 time, const QByteArray &metric);
    Message deathOf(int bdSeq) const;
    sparkplug::DataType typeOf(const QString &name) const;

    const Topics m_topics;
    const bool m_takesRequests;
    const QString m_bdSeqFile;
    const std::function<void(const QString &)> m_report;
    std::map<QString, sparkplug::DataType> m_types;
    std::mutex m_mutex;
    std::map<QString, QByteArray> m_latest; // metrics as they are now; guarded by the mutex
    int m_bdSeq = 0;                        // of this connection, 0 to 255
    int m_nextBdSeq = 0;
    bool m_hasReportedFailure = false;
    int m_seq = 0;                 // of the next message, 0 to 255
    std::uint64_t m_overtaken = 0; // messages up to this number are older than the birth
};

} // namespace kmr
