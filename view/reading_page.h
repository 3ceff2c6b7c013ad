// Stands in the place of a file's pages while it is read, in a thread of its own.
#pragma once

#include "view/opened_file.h"

#include <QThread>
#include <QWidget>

#include <atomic>
#include <memory>

namespace kmr {

class ReadingPage : public QWidget {
    Q_OBJECT

public:
    explicit ReadingPage(QString path, QWidget *parent = nullptr);
    ~ReadingPage() override; // waits for the thread

    // Ends reading, and deletes this as soon as it has ended.
    void cancel();

    // What was read, once, after finished(). Throws Error if it could not be read.
    OpenedFile take();

    const QString &path() const
    {
        return m_path;
    }

signals:
    void finished(); // not after cancel()
    void cancelWanted();

private:
    void read();

    const QString m_path;
    std::atomic<bool> m_isToStop{false};
    std::atomic<int> m_percent{-1}; // as of ReadProgress
    std::unique_ptr<QThread> m_thread;
    OpenedFile m_file; // the thread's, until it has ended
    QString m_fault;   // the same
};

} // namespace kmr
