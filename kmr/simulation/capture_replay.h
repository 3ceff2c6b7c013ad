// The answers of a captured controller, for those who ask it the same again.
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

    // What the capture received after it sent `request`, ':' to LF, with the same delays: the first
    // time after the first such request, then after the next, after the last of them again and
    // again. Without pieces if nothing was received. Nothing if the capture never sent it.
    std::optional<simulator::Plan> answer(const QByteArray &request);

private:
    struct Answers {
        std::vector<simulator::Plan> plans; // one for each time that the request was sent
        std::size_t next = 0;
    };

    std::map<QByteArray, Answers> m_answers; // by request
};

} // namespace kmr
