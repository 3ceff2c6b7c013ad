// What a recording or a capture holds that the window shows on pages of its own.
#pragma once

#include "view/recording.h"
#include "view/traffic_model.h"

#include <deque>
#include <memory>

namespace kmr {

struct OpenedFile {
    std::unique_ptr<Recording> recording; // null: it holds no values
    bool isCapture = false;
    QString link;                   // of a capture
    std::deque<TrafficRow> traffic; // of a capture
    QString cut;                    // names an incomplete last line, which is left out; else empty
};

// Whether a file with this name is a recording, rather than a capture.
bool isRecordingName(const QString &path);

// Reads either. Throws Error (Usage).
OpenedFile readFile(const QString &path, const ReadProgress &progress = {});

} // namespace kmr
