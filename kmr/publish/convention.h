// How a publisher presents itself and its values to the broker: in topics of its own (PlainTopics)
// or by Sparkplug B (SparkplugNode).
#pragma once

#include "kmr/publish/broker.h"
#include "kmr/publish/message.h"
#include "kmr/publish/payload.h"
#include "kmr/publish/published_tags.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace kmr {

class Convention {
public:
    Convention() = default;
    virtual ~Convention() = default;
    Convention(const Convention &) = delete;
    Convention &operator=(const Convention &) = delete;

    // What is published, for a person: "plant/line1/...".
    virtual QString name() const = 0;

    // Whether a message that an earlier run left in the spool can be sent.
    virtual bool isOurs(const Message &message) const = 0;

    // For the polling: the message of a tag's value, and of the answer to a request.
    virtual Message value(const PublishedTag &tag, const Sample &sample) = 0;
    virtual Message outcome(Message answer) = 0;

    // All below is for the thread of the network.

    // What is to be subscribed to.
    virtual QStringList filters() const = 0;

    // What the broker is to publish when the next connection fails. noteWillSent(): it has it.
    virtual Message will() = 0;
    virtual void noteWillSent() {}

    // The first message of a connection. `lastNumber`: of the last message in the outbox so far.
    virtual Message birth(std::uint64_t lastNumber) = 0;

    // The last one.
    virtual Message death() = 0;

    // The message that carries these of the outbox, in their order: mostTogether() of them or
    // fewer. noteDataSent(): it was sent.
    virtual Message data(const std::vector<Message> &messages) = 0;
    virtual void noteDataSent() {}
    virtual std::size_t mostTogether() const
    {
        return 1;
    }

    struct Commands {
        std::vector<Incoming> requests; // as WriteDesk takes them
        bool wantsBirth = false;        // birth() is to be sent again before anything else
    };

    // What a received message asks for. Throws Error (Usage) when it asks for nothing that exists.
    virtual Commands commands(const Incoming &incoming) = 0;
};

} // namespace kmr
