#include "ClipMaker.h"

#include <QProcess>
#include <QStandardPaths>

namespace {

constexpr int kTimeoutMS = 300000;

// False, with the reason where the caller asked for it.
bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

QStringList commonArguments()
{
    return { QStringLiteral("-hide_banner"), QStringLiteral("-loglevel"), QStringLiteral("error"),
        QStringLiteral("-nostdin"), QStringLiteral("-y") };
}

// The encoders of every clip.
QStringList codecArguments()
{
    return { QStringLiteral("-c:v"), QStringLiteral("libx264"), QStringLiteral("-preset"),
        QStringLiteral("veryfast"), QStringLiteral("-crf"), QStringLiteral("28"),
        QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"), QStringLiteral("-c:a"),
        QStringLiteral("aac"), QStringLiteral("-b:a"), QStringLiteral("96k") };
}

QString formatName(ClipMaker::Container container)
{
    return container == ClipMaker::Container::Flv ? QStringLiteral("flv") : QStringLiteral("mp4");
}

QStringList containerArguments(ClipMaker::Container container)
{
    if (container == ClipMaker::Container::Flv)
        return { QStringLiteral("-f"), QStringLiteral("flv") };
    return { QStringLiteral("-movflags"), QStringLiteral("+faststart"), QStringLiteral("-f"),
        QStringLiteral("mp4") };
}

} // namespace

QString ClipMaker::ffmpegPath()
{
    return QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
}

QStringList ClipMaker::arguments(
    const QString& videoSource, int toneHz, int seconds, const QString& output, Container container)
{
    return commonArguments()
        + QStringList { QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
              videoSource, QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
              QStringLiteral("sine=frequency=%1:sample_rate=44100").arg(toneHz),
              QStringLiteral("-map"), QStringLiteral("0:v"), QStringLiteral("-map"),
              QStringLiteral("1:a"), QStringLiteral("-t"), QString::number(seconds) }
    + codecArguments() + containerArguments(container) + QStringList { output };
}

QStringList ClipMaker::seriesArguments(const QString& videoSource, const QString& audioSource,
    int count, int seconds, const QString& outputPattern, Container container)
{
    // A key frame at every cut, so that each clip plays from its first frame.
    return commonArguments()
        + QStringList { QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
              videoSource, QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
              audioSource, QStringLiteral("-map"), QStringLiteral("0:v"), QStringLiteral("-map"),
              QStringLiteral("1:a"), QStringLiteral("-t"), QString::number(count * seconds) }
    + codecArguments()
        + QStringList { QStringLiteral("-force_key_frames"),
              QStringLiteral("expr:gte(t,n_forced*%1)").arg(seconds), QStringLiteral("-f"),
              QStringLiteral("segment"), QStringLiteral("-segment_time"), QString::number(seconds),
              QStringLiteral("-segment_format"), formatName(container),
              QStringLiteral("-reset_timestamps"), QStringLiteral("1"), outputPattern };
}

bool ClipMaker::makeSeries(const QString& videoSource, const QString& audioSource, int count,
    int seconds, const QString& outputPattern, QString* error, Container container)
{
    return run(seriesArguments(videoSource, audioSource, count, seconds, outputPattern, container),
        outputPattern, error);
}

QStringList ClipMaker::stillsArguments(
    const QString& videoSource, int count, const QString& outputPattern)
{
    return commonArguments()
        + QStringList { QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
              videoSource, QStringLiteral("-frames:v"), QString::number(count),
              QStringLiteral("-q:v"), QStringLiteral("4"), QStringLiteral("-f"),
              QStringLiteral("image2"), outputPattern };
}

bool ClipMaker::make(const QString& videoSource, int toneHz, int seconds, const QString& output,
    QString* error, Container container)
{
    return run(arguments(videoSource, toneHz, seconds, output, container), output, error);
}

bool ClipMaker::makeStills(
    const QString& videoSource, int count, const QString& outputPattern, QString* error)
{
    return run(stillsArguments(videoSource, count, outputPattern), outputPattern, error);
}

bool ClipMaker::run(const QStringList& arguments, const QString& output, QString* error)
{
    const QString ffmpeg = ffmpegPath();
    if (ffmpeg.isEmpty())
        return fail(error,
            QStringLiteral("ffmpeg not found on the PATH (scripts/install-deps installs it)"));
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(ffmpeg, arguments);
    if (!process.waitForStarted() || !process.waitForFinished(kTimeoutMS)) {
        process.kill();
        process.waitForFinished();
        return fail(error, QStringLiteral("ffmpeg did not finish: ") + output);
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        const QString reason = QString::fromLocal8Bit(process.readAllStandardError())
                                   .trimmed()
                                   .section(QLatin1Char('\n'), 0, 0);
        return fail(
            error, QStringLiteral("ffmpeg failed for ") + output + QStringLiteral(": ") + reason);
    }
    return true;
}
