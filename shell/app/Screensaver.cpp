#include "Screensaver.h"

#include "ShellLog.h"

#include <QSettings>

namespace mediashell {

namespace {

    // The whole number `key` holds, from 0 to `max`; the default when it is absent
    // or, logged, when it holds anything else.
    int wholeNumber(const QSettings& settings, const QString& key, int max, int fallback)
    {
        const QVariant value = settings.value(key);
        if (!value.isValid())
            return fallback;
        // INI reads "1,2" as a list; it is no number either.
        const QString text = value.typeId() == QMetaType::QStringList
            ? value.toStringList().join(QLatin1Char(','))
            : value.toString();
        bool ok = false;
        const int number = text.trimmed().toInt(&ok);
        if (ok && number >= 0 && number <= max)
            return number;
        qCWarning(lcShell).noquote()
            << QStringLiteral("Warning: ignoring %1, not a whole number from 0 to %2:")
                   .arg(key)
                   .arg(max)
            << text;
        return fallback;
    }

} // namespace

Screensaver::Screensaver(int idleMS, QObject* parent)
    : QObject(parent)
{
    m_idle.setSingleShot(true);
    m_idle.setInterval(std::max(0, idleMS));
    connect(&m_idle, &QTimer::timeout, this, [this] { setDimmed(true); });
    restartIdleTime();
}

Screensaver::~Screensaver() = default;

int Screensaver::idleMSFromSettings(const QSettings& settings)
{
    const int minutes = wholeNumber(
        settings, QStringLiteral("screensaver/idleMinutes"), kMaxIdleMinutes, kDefaultIdleMinutes);
    const int seconds = wholeNumber(
        settings, QStringLiteral("screensaver/idleSeconds"), kMaxIdleMinutes * 60, minutes * 60);
    return seconds * 1000;
}

bool Screensaver::takeKey()
{
    const bool woke = m_dimmed;
    setDimmed(false);
    restartIdleTime();
    return woke;
}

void Screensaver::setPlaying(bool playing)
{
    if (playing == m_playing)
        return;
    m_playing = playing;
    if (playing)
        setDimmed(false);
    restartIdleTime();
}

void Screensaver::setDimmed(bool dimmed)
{
    if (dimmed == m_dimmed)
        return;
    m_dimmed = dimmed;
    qCDebug(lcShell) << (dimmed ? "Dimming the screen" : "Waking the screen");
    emit dimmedChanged(dimmed);
}

void Screensaver::restartIdleTime()
{
    if (m_playing || m_idle.interval() == 0)
        m_idle.stop();
    else
        m_idle.start();
}

} // namespace mediashell
