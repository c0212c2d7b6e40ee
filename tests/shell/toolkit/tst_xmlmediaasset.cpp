#include "toolkit/DefaultMediaImages.h"
#include "toolkit/XmlMediaAsset.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QTemporaryDir>
#include <QUrl>

namespace {

using shell::DefaultMediaImages;
using shell::MediaType;
using shell::XmlMediaAsset;

TEST(DefaultMediaImages, OnePerTypeThatSurvivesAPngRoundTrip)
{
    const QImage movie = DefaultMediaImages::imageForMediaType(MediaType::movie);
    const QImage trailer = DefaultMediaImages::imageForMediaType(MediaType::movieTrailer);
    ASSERT_FALSE(movie.isNull());
    EXPECT_EQ(movie.size(), QSize(DefaultMediaImages::kSide, DefaultMediaImages::kSide));
    EXPECT_NE(movie, trailer);
    EXPECT_EQ(movie, DefaultMediaImages::imageForMediaType(MediaType::movie));

    QBuffer png;
    ASSERT_TRUE(png.open(QIODevice::WriteOnly));
    ASSERT_TRUE(trailer.save(&png, "PNG"));
    EXPECT_EQ(QImage::fromData(png.data(), "PNG").convertToFormat(trailer.format()), trailer);
}

TEST(XmlMediaAsset, CoverArtPrefersGivenThenLocalPreviewThenDefault)
{
    XmlMediaAsset asset;
    asset.setValue("mediaType", int(MediaType::movieTrailer));
    asset.setValue("previewURL", "http://example.org/cover.jpg");
    EXPECT_EQ(asset.coverArt(), DefaultMediaImages::imageForMediaType(MediaType::movieTrailer));
    EXPECT_EQ(asset.coverArtID(), "http://example.org/cover.jpg");

    QTemporaryDir dir;
    QImage local(3, 5, QImage::Format_RGB32);
    local.fill(Qt::blue);
    ASSERT_TRUE(local.save(dir.filePath("c.png")));
    asset.setValue("previewURL", QUrl::fromLocalFile(dir.filePath("c.png")).toString());
    EXPECT_EQ(asset.coverArt().size(), QSize(3, 5));

    QImage given(7, 7, QImage::Format_RGB32);
    given.fill(Qt::green);
    asset.setValue("coverArt", given);
    EXPECT_EQ(asset.coverArt(), given);
}

} // namespace
