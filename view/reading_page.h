// Stands in the place of a file's pages while it is read, in a thread of its own.
#pragma once

#include "view/opened_file.h"

#include <QWidget>

#include <future>
#include <memory>
#include <thread>

namespace kmr {

class ReadingPage : public QWidget {
    Q_OBJECT

public:
    explicit ReadingPage(QString path, QWidget *parent = nullptr);

    // Ends reading. A thread that hangs in the system, as on a dead network share, is left alone.
    ~ReadingPage() override;

    // Ends reading, and deletes this later.
    void cancel();

    // What was read, once, after finished(). Throws Error if it could not be read.
    OpenedFile take();

    const QString &path() const;

signals:
    void finished(); // not after cancel()
    void cancelWanted();

private:
    struct Reading; // shared with the thread, which may outlive this

    void start();

    const std::shared_ptr<Reading> m_reading;
    std::future<OpenedFile> m_file;
    std::thread m_thread;
};

} // namespace kmr
