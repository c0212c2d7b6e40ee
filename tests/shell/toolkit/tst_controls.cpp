#include "toolkit/media/DefaultMediaImages.h"
#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/scene/TextControl.h"
#include "toolkit/scene/Theme.h"

#include <gtest/gtest.h>

#include <QFontInfo>
#include <QFontMetricsF>
#include <QTemporaryDir>
#include <QUrl>

namespace {

using shell::Theme;

TEST(ControlsTheme, stylesUseTheInstalledFontInPixels)
{
    ASSERT_FALSE(Theme::fontFamily().isEmpty());
    const shell::TextStyle style = Theme::shared().listStyle();
    // A family that was never registered would silently fall back to another one.
    EXPECT_EQ(QFontInfo(style.font()).family(), Theme::fontFamily());
    // Scene units are pixels; a size in points would change with the screen's resolution.
    EXPECT_EQ(QFontInfo(style.font()).pixelSize(), qRound(style.pixelSize));
}

TEST(TextControl, measuresWithItsFontAndWrapsAtTheFrameUpToTheMaximumLines)
{
    const QString text = QStringLiteral("A retired thief takes one last job in a city that never "
                                        "sleeps, and the detective who has chased him for years "
                                        "finally closes in on the crew and the money.");
    const shell::TextStyle style = Theme::shared().listStyle();
    const QFontMetricsF metrics(style.font());
    shell::TextControl control;
    const auto size = [&](qreal width, int maximumLines) {
        control.setText(text, style);
        control.setFrame(QRectF(100, 100, width, 0));
        control.setMaximumLines(maximumLines);
        return control.renderedSize();
    };
    // No frame width, or one line allowed: one line at its natural width.
    const QSizeF oneLine = size(0, 0);
    EXPECT_NEAR(oneLine.width(), metrics.horizontalAdvance(text), 2);
    EXPECT_NEAR(oneLine.height(), metrics.height(), 2);
    EXPECT_EQ(size(300, 1), oneLine);

    const QSizeF three = size(300, 3);
    EXPECT_LE(three.width(), 300.5);
    EXPECT_NEAR(three.height(), 3 * metrics.lineSpacing(), 3);
    EXPECT_GT(size(300, 0).height(), three.height());
}

TEST(XmlMediaAsset, coverArtPrefersGivenThenLocalPreviewThenTheDefaultOfItsType)
{
    using shell::DefaultMediaImages;
    const QImage trailerDefault
        = DefaultMediaImages::imageForMediaType(shell::MediaType::movieTrailer);
    EXPECT_NE(trailerDefault, DefaultMediaImages::imageForMediaType(shell::MediaType::movie));
    shell::XmlMediaAsset asset;
    asset.setValue("mediaType", int(shell::MediaType::movieTrailer));
    asset.setValue("previewURL", "http://example.org/cover.jpg");
    EXPECT_EQ(asset.coverArt(), trailerDefault);

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
