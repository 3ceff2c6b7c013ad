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

    // The polling: what the outbox gets of a tag, and of the answer to a request.
    virtual Message value(const PublishedTag &tag, const Sample &sample) = 0;
    virtual Message outcome(Message answer) = 0;

    // All below: the network.

    // What is to be subscribed to.
    virtual QStringList filters() const = 0;

    // What the broker is to publish when the next connection fails; then that this was sent to it.
    virtual Message will() = 0;
    virtual void noteWillSent() {}

    // The first message of a connection. `lastNumber`: of the messages that the outbox has so far.
    virtual Message birth(std::uint64_t lastNumber) = 0;

    // The last one.
    virtual Message death() = 0;

    // What is sent for messages of the outbox: no more than mostTogether(), in their order. Then
    // that this was sent.
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

    // What a message that came asks for. Throws Error (Usage), in words, when nothing can be done.
    virtual Commands commands(const Incoming &incoming) = 0;
};

} // namespace kmr
