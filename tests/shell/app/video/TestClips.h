#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// Media made by ffmpeg at run time in a temporary folder that goes with the object.
// Each maker returns the file's path, or a null string with the reason in error().
class TestClips {
public:
    TestClips();

    // A test pattern with a tone, H.264/AAC in an .m4v, a key frame every second.
    QString movie(int seconds);
    // The top half red, the bottom half blue, no sound.
    QString redOverBlue(int seconds);
    // Random bytes under a movie's name.
    QString brokenMovie();
    // A well-formed Matroska file whose only stream is in a codec nobody decodes.
    QString movieWithoutDecoder();

    QString error() const { return m_error; }
    QString path(const QString& name) const { return m_dir.filePath(name); }

private:
    QString ffmpeg(const QString& name, const QStringList& arguments);

    QTemporaryDir m_dir;
    QString m_error;
};
