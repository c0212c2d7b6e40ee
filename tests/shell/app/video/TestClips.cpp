#include "TestClips.h"

#include <QFile>
#include <QProcess>
#include <QRandomGenerator>

namespace {

// Generous for a 30 s clip at this size (half a second on a slow box), and bounded.
constexpr int kFfmpegTimeoutMS = 30'000;

QStringList lavfiInput(const QString& graph)
{
    return { QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"), graph };
}

} // namespace

TestClips::TestClips() = default;

QString TestClips::ffmpeg(const QString& name, const QStringList& arguments)
{
    const QString out = path(name);
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("ffmpeg"),
        QStringList { QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"),
            QStringLiteral("-y") }
            + arguments + QStringList { out });
    if (!process.waitForFinished(kFfmpegTimeoutMS)) {
        process.kill();
        process.waitForFinished(5'000);
        m_error = QStringLiteral("ffmpeg did not finish: ") + process.errorString();
        return {};
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        m_error = QStringLiteral("ffmpeg failed: ") + QString::fromLocal8Bit(process.readAll());
        return {};
    }
    return out;
}

QString TestClips::movie(int seconds)
{
    const QString duration = QString::number(seconds);
    return ffmpeg(QStringLiteral("Movie %1s.m4v").arg(duration),
        lavfiInput(QStringLiteral("testsrc=size=160x120:rate=10:duration=") + duration)
            + lavfiInput(QStringLiteral("sine=frequency=440:duration=") + duration)
            + QStringList { QStringLiteral("-c:v"), QStringLiteral("libx264"),
                QStringLiteral("-preset"), QStringLiteral("ultrafast"), QStringLiteral("-g"),
                QStringLiteral("10"), QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"),
                QStringLiteral("-c:a"), QStringLiteral("aac"), QStringLiteral("-b:a"),
                QStringLiteral("32k"), QStringLiteral("-shortest"), QStringLiteral("-f"),
                QStringLiteral("mp4") });
}

QString TestClips::redOverBlue(int seconds)
{
    const QString duration = QString::number(seconds);
    return ffmpeg(QStringLiteral("Red over blue.m4v"),
        lavfiInput(QStringLiteral("color=c=red:size=160x120:rate=10:duration=") + duration)
            + QStringList { QStringLiteral("-vf"),
                QStringLiteral("drawbox=x=0:y=60:w=160:h=60:color=blue:t=fill"),
                QStringLiteral("-c:v"), QStringLiteral("libx264"), QStringLiteral("-preset"),
                QStringLiteral("ultrafast"), QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"),
                QStringLiteral("-f"), QStringLiteral("mp4") });
}

QString TestClips::brokenMovie()
{
    const QString out = path(QStringLiteral("Broken.m4v"));
    QFile file(out);
    if (!file.open(QIODevice::WriteOnly)) {
        m_error = file.errorString();
        return {};
    }
    // Fixed seed: the same garbage on every run.
    QRandomGenerator random(20'240'601);
    QByteArray bytes(64 * 1024, Qt::Uninitialized);
    random.fillRange(reinterpret_cast<quint32*>(bytes.data()), bytes.size() / 4);
    file.write(bytes);
    return out;
}

QString TestClips::movieWithoutDecoder()
{
    const QString made = ffmpeg(QStringLiteral("Unknown codec source.mkv"),
        lavfiInput(QStringLiteral("testsrc=size=160x120:rate=10:duration=3"))
            + QStringList { QStringLiteral("-c:v"), QStringLiteral("libx264"),
                QStringLiteral("-preset"), QStringLiteral("ultrafast") });
    if (made.isNull())
        return {};
    QFile source(made);
    if (!source.open(QIODevice::ReadOnly)) {
        m_error = source.errorString();
        return {};
    }
    // The codec ID is a plain string in the track header: same length, unknown name.
    QByteArray bytes = source.readAll();
    const QByteArray known = "V_MPEG4/ISO/AVC";
    if (!bytes.contains(known)) {
        m_error = QStringLiteral("no H.264 codec ID in the Matroska file");
        return {};
    }
    bytes.replace(known, "V_VIREO/NOCODEC");
    const QString out = path(QStringLiteral("Unknown codec.mkv"));
    QFile file(out);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        m_error = file.errorString();
        return {};
    }
    return out;
}
