#pragma once

#include <QByteArrayView>
#include <QMutex>
#include <QMutexLocker>
#include <QStringList>
#include <QtGlobal>

// Collects what the project's own log categories ("vireo.*") write while it is
// installed, so tests can look for the exact messages. Debug output must be on for
// those categories (the test environment sets QT_LOGGING_RULES).
class LogCapture {
public:
    LogCapture()
        : m_previous(qInstallMessageHandler(&capture))
    {
        lines().clear();
        warnings().clear();
    }
    ~LogCapture() { qInstallMessageHandler(m_previous); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // Every line since the capture began or was last cleared.
    static QStringList& lines()
    {
        static QStringList collected;
        return collected;
    }
    // The lines written as warnings or worse.
    static QStringList& warnings()
    {
        static QStringList collected;
        return collected;
    }
    // The lines that contain `text`.
    static QStringList containing(const QString& text) { return lines().filter(text); }

private:
    static void capture(QtMsgType type, const QMessageLogContext& context, const QString& message)
    {
        static QMutex mutex;
        if (!QByteArrayView(context.category).startsWith("vireo."))
            return;
        const QMutexLocker locker(&mutex);
        lines().append(message);
        if (type != QtDebugMsg && type != QtInfoMsg)
            warnings().append(message);
    }

    QtMessageHandler m_previous = nullptr;
};
