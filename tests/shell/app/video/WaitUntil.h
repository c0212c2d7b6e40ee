#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>

// Runs the event loop until `done()` holds or `ms` have passed; whether it holds.
template <typename Predicate> bool waitUntil(Predicate done, int ms)
{
    QDeadlineTimer deadline(ms);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
    return true;
}
