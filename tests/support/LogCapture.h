#pragma once

#include <QStringList>
#include <QtGlobal>

// Collects what the project's own log categories ("vireo.*") write while it is
// installed, so tests can look for the exact messages. Debug output must be on for
// those categories (the test environment sets QT_LOGGING_RULES).
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // Every line since the capture began or was last cleared.
    static QStringList& lines();
    // The lines that contain `text`.
    static QStringList containing(const QString& text);

private:
    QtMessageHandler m_previous = nullptr;
};
