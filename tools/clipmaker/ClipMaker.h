#pragma once

#include <QString>
#include <QStringList>

// Short playable clips and stills for the demos, made by ffmpeg from its generated
// (lavfi) sources: H.264 video with an AAC tone, in an MP4 or an FLV container, and
// JPEG stills.
class ClipMaker {
public:
    ClipMaker() = delete;

    enum class Container { Mp4, Flv };

    // ffmpeg on the PATH, or an empty text.
    static QString ffmpegPath();

    // `videoSource` is a lavfi video graph (size and rate included). Writes `output`
    // or answers false with the reason in `error`.
    static bool make(const QString& videoSource, int toneHz, int seconds, const QString& output,
        QString* error, Container container = Container::Mp4);

    static QStringList arguments(const QString& videoSource, int toneHz, int seconds,
        const QString& output, Container container = Container::Mp4);

    // `count` clips of `seconds` each, cut from one run of the lavfi sources (a video
    // graph and an audio graph) and written as `outputPattern`, an ffmpeg pattern such
    // as "/dir/clip-%02d.flv" numbered from 0; each clip starts on a key frame at time 0.
    // One encoder for the lot: a dozen short clips in about the time of one.
    static bool makeSeries(const QString& videoSource, const QString& audioSource, int count,
        int seconds, const QString& outputPattern, QString* error,
        Container container = Container::Mp4);

    static QStringList seriesArguments(const QString& videoSource, const QString& audioSource,
        int count, int seconds, const QString& outputPattern, Container container);

    // The first `count` frames of `videoSource` as JPEG files named by `outputPattern`,
    // an ffmpeg image sequence pattern such as "/dir/still-%02d.jpg" (numbered from 1).
    // One ffmpeg run for the lot, which is what keeps a demo quick.
    static bool makeStills(
        const QString& videoSource, int count, const QString& outputPattern, QString* error);

    static QStringList stillsArguments(
        const QString& videoSource, int count, const QString& outputPattern);

private:
    static bool run(const QStringList& arguments, const QString& output, QString* error);
};
