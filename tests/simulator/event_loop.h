// Runs Qt's event loop in tests until a condition holds.
#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <functional>

// Handles events until `happened` returns true. Returns false when it has not after ten seconds.
inline bool waitUntil(const std::function<bool()> &happened)
{
    QTimer deadline;
    deadline.setSingleShot(true);
    deadline.start(10000);
    while (!happened()) {
        if (!deadline.isActive())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}
