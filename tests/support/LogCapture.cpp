#include "LogCapture.h"

#include <QByteArrayView>
#include <QMutex>
#include <QMutexLocker>

namespace {

QMutex g_mutex;

void capture(QtMsgType, const QMessageLogContext& context, const QString& message)
{
    if (!QByteArrayView(context.category).startsWith("vireo."))
        return;
    const QMutexLocker locker(&g_mutex);
    LogCapture::lines().append(message);
}

} // namespace

LogCapture::LogCapture()
    : m_previous(qInstallMessageHandler(&capture))
{
    lines().clear();
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
}

QStringList& LogCapture::lines()
{
    static QStringList collected;
    return collected;
}

QStringList LogCapture::containing(const QString& text)
{
    return lines().filter(text);
}
