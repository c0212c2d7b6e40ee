#include "toolkit/media/DefaultMediaImages.h"
#include "toolkit/media/XmlMediaAsset.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QUrl>

namespace {

using shell::DefaultMediaImages;
using shell::MediaType;

TEST(DefaultMediaImages, onePerType)
{
    const QImage movie = DefaultMediaImages::imageForMediaType(MediaType::movie);
    const QImage trailer = DefaultMediaImages::imageForMediaType(MediaType::movieTrailer);
    EXPECT_EQ(movie.size(), QSize(DefaultMediaImages::kSide, DefaultMediaImages::kSide));
    EXPECT_NE(movie, trailer);
}

TEST(XmlMediaAsset, coverArtPrefersGivenThenLocalPreviewThenDefault)
{
    shell::XmlMediaAsset asset;
    asset.setValue("mediaType", int(MediaType::movieTrailer));
    asset.setValue("previewURL", "http://example.org/cover.jpg");
    EXPECT_EQ(asset.coverArt(), DefaultMediaImages::imageForMediaType(MediaType::movieTrailer));

    QTemporaryDir dir;
    QImage image(3, 5, QImage::Format_RGB32);
    image.fill(Qt::blue);
    ASSERT_TRUE(image.save(dir.filePath("c.png")));
    asset.setValue("previewURL", QUrl::fromLocalFile(dir.filePath("c.png")).toString());
    EXPECT_EQ(asset.coverArt().size(), QSize(3, 5));
    image.fill(Qt::green);
    asset.setValue("coverArt", image);
    EXPECT_EQ(asset.coverArt(), image);
}

} // namespace
