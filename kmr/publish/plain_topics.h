// The convention of kmr itself: a retained topic for each value, see Topics.
#pragma once

#include "kmr/publish/convention.h"
#include "kmr/publish/topics.h"

namespace kmr {

class PlainTopics : public Convention {
public:
    PlainTopics(const Topics &topics, PayloadForm form, bool takesRequests)
        : m_topics(topics), m_form(form), m_takesRequests(takesRequests)
    {
    }

    QString name() const override;
    bool isOurs(const Message &message) const override;
    Message value(const PublishedTag &tag, const Sample &sample) override;
    Message outcome(Message answer) override;
    QStringList filters() const override;
    Message will() override;
    Message birth(std::uint64_t lastNumber) override;
    Message death() override;
    Message data(const std::vector<Message> &messages) override;
    Commands commands(const Incoming &incoming) override;

private:
    Message state(const char *state) const;

    const Topics m_topics;
    const PayloadForm m_form;
    const bool m_takesRequests;
};

} // namespace kmr
