#include "view/opened_file.h"

#include "view/capture_values.h"

#include <QFileInfo>

namespace kmr {

bool isRecordingName(const QString &path)
{
    return QStringList{"csv", "sqlite", "sqlite3", "db"}.contains(
        QFileInfo(path).suffix().toLower());
}

OpenedFile readFile(const QString &path, const ReadProgress &progress)
{
    OpenedFile file;
    file.recording = std::make_unique<Recording>();
    if (isRecordingName(path)) {
        readRecording(path, *file.recording, progress);
        return file;
    }
    const Capture capture = readCapture(path, progress);
    const std::vector<TrafficNews> traffic = trafficOf(capture);
    file.isCapture = true;
    file.link = capture.link;
    file.cut = capture.cut;
    if (!readValues(traffic, *file.recording, progress))
        file.recording.reset();
    file.traffic = rowsOf(traffic, progress);
    return file;
}

} // namespace kmr
