#include "view/opened_file.h"

#include "view/capture_values.h"

#include <QFileInfo>

namespace kmr {

bool isRecordingName(const QString &path)
{
    return QStringList{"csv", "sqlite", "sqlite3", "db"}.contains(
        QFileInfo(path).suffix().toLower());
}

namespace {

constexpr int CAPTURE_STAGES = 3;

// Reports the percent of one stage, the first being 0, as those of all.
ReadProgress ofAllStages(const ReadProgress &progress, int stage)
{
    if (!progress)
        return {};
    return [&progress, stage](int percent) {
        return progress((stage * 100 + percent) / CAPTURE_STAGES);
    };
}

} // namespace

OpenedFile readFile(const QString &path, const ReadProgress &progress)
{
    OpenedFile file;
    file.recording = std::make_unique<Recording>();
    if (isRecordingName(path)) {
        readRecording(path, *file.recording, progress);
        return file;
    }
    const Capture capture = readCapture(path, ofAllStages(progress, 0));
    const std::vector<TrafficNews> traffic = trafficOf(capture);
    file.isCapture = true;
    file.link = capture.link;
    file.cut = capture.cut;
    if (!readValues(traffic, *file.recording, ofAllStages(progress, 1)))
        file.recording.reset();
    file.traffic = rowsOf(traffic, ofAllStages(progress, 2));
    return file;
}

} // namespace kmr
