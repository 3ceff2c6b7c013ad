// Answers requests as a captured controller did.
#pragma once

#include "host/project/capture.h"
#include "simulator/responder.h"

#include <QByteArray>

#include <map>
#include <optional>
#include <vector>

namespace kmr {

class CaptureReplay {
public:
    explicit CaptureReplay(const Capture &capture);

    // What was received in the capture after `request`, ':' to LF, with the same delays: at first
    // after the first such request, then after the next one; after the last one it is repeated.
    // Without pieces if nothing was received. Nothing if the request is not in the capture.
    std::optional<simulator::Plan> answer(const QByteArray &request);

private:
    struct Answers {
        std::vector<simulator::Plan> plans; // one for each time that the request was sent
        std::size_t next = 0;
    };

    std::map<QByteArray, Answers> m_answers; // by request
};

} // namespace kmr
