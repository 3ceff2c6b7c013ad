// A page of its own for the trends of a recording or a capture.
#pragma once

#include "view/recording.h"
#include "view/trend_view.h"

#include <QComboBox>
#include <QWidget>

#include <memory>

namespace kmr {

class RecordingView : public QWidget {
    Q_OBJECT

public:
    // Shows the tags that moved, and of few tags or few numbers all. The others can be added.
    explicit RecordingView(std::unique_ptr<Recording> recording, QWidget *parent = nullptr);
    ~RecordingView() override;

private:
    void show(const RecordedTag &tag);
    void fillOthers();

    const std::unique_ptr<Recording> m_recording;
    TrendView *m_view;
    QComboBox *m_others;
};

} // namespace kmr
