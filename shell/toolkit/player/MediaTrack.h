#pragma once

#include <QList>
#include <QString>

namespace shell {

// One audio or subtitle track of the media a player holds, as the track menu offers it.
struct MediaTrack {
    enum class Type { Audio, Subtitle };

    Type type = Type::Audio;
    // The player's number for the track among those of its type, from 1; 0 stands for
    // "none of this type" (subtitles off).
    int id = 0;
    QString title; // as the media names it; may be empty
    QString language; // an ISO 639 code as the media gives it; may be empty
    bool external = false; // from a file beside the movie
    bool selected = false;

    // What the menu shows: the language's name and the title ("French (Commentary)"),
    // either alone, or "Track N" when the media names neither (an unknown language code
    // names none).
    QString displayName() const;

    // Marks track `id` of `type` as the one selected and the others of that type not;
    // id 0 selects none. False, and nothing changed, when there is no such track.
    static bool select(QList<MediaTrack>& tracks, Type type, int id);
    // The id of the selected track of `type`, 0 when none is.
    static int selectedId(const QList<MediaTrack>& tracks, Type type);

    bool operator==(const MediaTrack&) const = default;
};

} // namespace shell
