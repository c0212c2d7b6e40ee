#include "toolkit/player/MediaTrack.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>

namespace shell {

QString MediaTrack::displayName() const
{
    const QLocale::Language known = language.isEmpty()
        ? QLocale::AnyLanguage
        : QLocale::codeToLanguage(language, QLocale::AnyLanguageCode);
    // "und" and codes Qt does not know name no language.
    const QString languageName
        = known == QLocale::AnyLanguage ? QString() : QLocale::languageToString(known);
    if (!languageName.isEmpty() && !title.isEmpty() && title != languageName)
        return QStringLiteral("%1 (%2)").arg(languageName, title);
    if (!languageName.isEmpty())
        return languageName;
    if (!title.isEmpty())
        return title;
    return QCoreApplication::translate("shell::MediaTrack", "Track %1").arg(id);
}

bool MediaTrack::select(QList<MediaTrack>& tracks, Type type, int id)
{
    const bool exists = id == 0
        || std::any_of(tracks.cbegin(), tracks.cend(),
            [&](const MediaTrack& track) { return track.type == type && track.id == id; });
    if (!exists)
        return false;
    for (MediaTrack& track : tracks) {
        if (track.type == type)
            track.selected = track.id == id;
    }
    return true;
}

int MediaTrack::selectedId(const QList<MediaTrack>& tracks, Type type)
{
    for (const MediaTrack& track : tracks) {
        if (track.type == type && track.selected)
            return track.id;
    }
    return 0;
}

} // namespace shell
