// Opens what 'kmr log' has written, .csv or .sqlite, and what the window exported, for trends.
#pragma once

#include "host/project/text_file.h"
#include "view/history.h"

#include <QString>

#include <vector>

namespace kmr {

struct RecordedTag {
    int id = 0; // in the history
    QString name;
    QString unit;
    bool isBit = false; // never anything but 0 and 1
};

struct Recording {
    std::vector<RecordedTag> tags;
    History history;
};

// Throws Error (Usage) for a file that holds something else, or is damaged.
void readRecording(const QString &path, Recording &recording, const ReadProgress &progress = {});

} // namespace kmr
