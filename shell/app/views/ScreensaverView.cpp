#include "ScreensaverView.h"

#include "PreviewView.h"

#include <QLocale>
#include <QRegularExpression>
#include <QTime>

namespace mediashell {

namespace {

    // One step along one axis, turning back at either edge.
    void bounce(qreal& position, qreal& step)
    {
        position += step;
        if (position < 0 || position > 1) {
            step = -step;
            position = std::clamp<qreal>(position, 0, 1);
        }
    }

    // The locale's short time, to the minute: a clock on a resting screen need not
    // count seconds.
    QString clockNow()
    {
        const QLocale locale;
        QString format = locale.timeFormat(QLocale::ShortFormat);
        format.remove(QRegularExpression(QStringLiteral("[:.]ss?")));
        return locale.toString(QTime::currentTime(), format);
    }

} // namespace

ScreensaverView::ScreensaverView(QObject* parent)
    : QObject(parent)
{
    m_ticks.setInterval(kTickMS);
    connect(&m_ticks, &QTimer::timeout, this, &ScreensaverView::tick);
}

ScreensaverView::~ScreensaverView() = default;

void ScreensaverView::setDimmed(bool dimmed)
{
    if (dimmed == m_dimmed)
        return;
    m_dimmed = dimmed;
    if (dimmed) {
        m_clock = clockNow();
        m_ticks.start();
    } else {
        m_ticks.stop();
    }
    emit changed();
}

void ScreensaverView::follow(const PreviewView& preview)
{
    const QString url = preview.shown() && !preview.isIcon()
            && !preview.imageUrl().startsWith(QLatin1String("qrc:"))
        ? preview.imageUrl()
        : QString();
    if (url == m_cover)
        return;
    m_cover = url;
    if (m_dimmed)
        emit changed();
}

QJsonObject ScreensaverView::describe() const
{
    QJsonValue shows;
    if (m_dimmed)
        shows = m_cover.isEmpty() ? QStringLiteral("clock") : QStringLiteral("cover");
    return { { QStringLiteral("dimmed"), m_dimmed }, { QStringLiteral("shows"), shows } };
}

void ScreensaverView::tick()
{
    m_clock = clockNow();
    bounce(m_drift.rx(), m_step.rx());
    bounce(m_drift.ry(), m_step.ry());
    emit changed();
}

} // namespace mediashell
