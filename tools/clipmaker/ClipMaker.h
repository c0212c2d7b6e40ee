#pragma once

#include <QString>
#include <QStringList>

// Short playable clips for the demo library, made by ffmpeg from its generated
// (lavfi) sources: H.264 video at 640 x 360 with an AAC tone, in an MP4 container.
class ClipMaker {
public:
    ClipMaker() = delete;

    // ffmpeg on the PATH, or an empty text.
    static QString ffmpegPath();

    // `videoSource` is a lavfi video graph (size and rate included). Writes `output`
    // or answers false with the reason in `error`.
    static bool make(
        const QString& videoSource, int toneHz, int seconds, const QString& output, QString& error);

    static QStringList arguments(
        const QString& videoSource, int toneHz, int seconds, const QString& output);
};
