#include "foundation/HomeFolder.h"

#include <QDir>
#include <QMutex>
#include <QMutexLocker>

namespace {

constexpr qsizetype kShortestTrustedHome = 5;

struct State {
    QMutex mutex;
    QString home;
};

State& state()
{
    static State instance;
    return instance;
}

} // namespace

QString HomeFolder::path()
{
    State& s = state();
    QString home;
    {
        const QMutexLocker locker(&s.mutex);
        home = s.home;
    }
    if (home.isEmpty())
        home = QDir::homePath();
    return home.length() < kShortestTrustedHome ? fallback() : home;
}

void HomeFolder::set(const QString& home)
{
    State& s = state();
    const QMutexLocker locker(&s.mutex);
    s.home = home;
    while (s.home.length() > 1 && s.home.endsWith(QLatin1Char('/')))
        s.home.chop(1);
}
