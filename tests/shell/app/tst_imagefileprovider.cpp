// Covers are files somebody else put in the library: the provider QML loads them
// through must answer at once, whatever the file turns out to be.
#include "ImageFileProvider.h"

#include "foundation/FileSystem.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <cstdio>

#include <sys/stat.h>

using mediashell::ImageFileProvider;

namespace {

class ImageFileProviderTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return m_dir.filePath(name); }
    QImage request(const QString& file, QSize requested = {})
    {
        const QString url = ImageFileProvider::urlFor(file);
        EXPECT_TRUE(url.startsWith("image://file/")) << qPrintable(url);
        return m_provider.requestImage(url.mid(13), nullptr, requested);
    }

    QTemporaryDir m_dir;
    ImageFileProvider m_provider;
};

TEST_F(ImageFileProviderTest, ACoverIsReadWhateverItsNameAndAtTheSizeAskedFor)
{
    // Characters a URL would otherwise read as its own: '#', '?', '%', a space.
    const QString file = path("Été #1? 100% (2).png");
    QImage cover(300, 200, QImage::Format_RGB32);
    cover.fill(Qt::darkCyan);
    ASSERT_TRUE(cover.save(file, "PNG"));
    EXPECT_EQ(request(file, QSize(60, 60)).size(), QSize(60, 40));
    EXPECT_EQ(request(file, QSize(0, 20)).size(), QSize(30, 20));

    // A link to a cover is followed, as the library's links are.
    ASSERT_TRUE(QFile::link(file, path("link.png")));
    EXPECT_EQ(request(path("link.png")).size(), QSize(300, 200));

    // A name saved in Latin-1: its byte 0xE9 is not UTF-8 and must reach the file as is.
    const QByteArray latin1 = QFile::encodeName(path("Caf")) + "\xE9.png";
    ASSERT_EQ(std::rename(QFile::encodeName(file).constData(), latin1.constData()), 0);
    EXPECT_EQ(request(FileSystem::decodeName(latin1)).size(), QSize(300, 200));
}

TEST_F(ImageFileProviderTest, WhatIsNoCoverAnswersNoImageAtOnce)
{
    const auto write = [this](const char* name, const QByteArray& bytes, qint64 size = 0) {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        EXPECT_TRUE(size == 0 || file.resize(size));
    };
    // A FIFO: QML's own loading would open it and wait for a writer.
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("fifo.png")).constData(), 0600), 0);
    // A picture whose decoded size would be 1.6 GB, refused before decoding.
    write("huge.ppm", "P6\n20000 20000\n255\n" + QByteArray(3 * 64, '\x7f'));
    // A file over the cover limit, sparse so that it costs no disk.
    write("big.png", {}, 40 << 20);
    write("garbage.png", "\x89PNG\r\n\x1a\nnot really");
    ASSERT_TRUE(QDir(m_dir.path()).mkdir("folder.png"));
    for (const char* name :
        { "fifo.png", "huge.ppm", "big.png", "garbage.png", "folder.png", "missing.png" })
        EXPECT_TRUE(request(path(QString::fromLatin1(name))).isNull()) << name;
    EXPECT_TRUE(m_provider.requestImage("not base64!", nullptr, {}).isNull());
}

} // namespace
