#include "toolkit/scene/HeaderControl.h"
#include "toolkit/scene/ImageControl.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/scene/TextControl.h"
#include "toolkit/scene/Theme.h"

#include <gtest/gtest.h>

#include <QFontInfo>
#include <QFontMetricsF>
#include <QJsonArray>

namespace {

using shell::TextControl;
using shell::Theme;

const QString kLongText = QStringLiteral(
    "A retired thief takes one last job in a city that never sleeps, and the detective who "
    "has chased him for years finally closes in on the crew, the money and the night they "
    "all thought would set them free for good.");

TEST(ControlsTheme, framesSitInsideWhatATelevisionShows)
{
    const QRectF safe = Theme::shared().titleSafeFrame();
    EXPECT_EQ(safe, QRectF(128, 72, 1024, 576));

    const QRectF list = Theme::shared().listFrame();
    EXPECT_DOUBLE_EQ(list.right(), safe.right());
    EXPECT_NEAR(list.width(), 0.45 * safe.width(), 0.5);
    EXPECT_GE(list.top(), safe.top());
    EXPECT_LE(list.bottom(), safe.bottom());
}

TEST(ControlsTheme, stylesUseTheInstalledFont)
{
    ASSERT_FALSE(Theme::fontFamily().isEmpty());
    const shell::TextStyle style = Theme::shared().listStyle();
    EXPECT_EQ(style.family, Theme::fontFamily());
    // A family that was never registered would silently fall back to another one.
    EXPECT_EQ(QFontInfo(style.font()).family(), Theme::fontFamily());
    // Scene units are pixels; a size in points would change with the screen's resolution.
    EXPECT_EQ(QFontInfo(style.font()).pixelSize(), qRound(style.pixelSize));
}

class TextControlTest : public ::testing::Test {
protected:
    TextControl& text(const QString& value, qreal frameWidth = 0, int maximumLines = 0)
    {
        control.setText(value, style);
        control.setFrame(QRectF(100, 100, frameWidth, 0));
        control.setMaximumLines(maximumLines);
        return control;
    }

    shell::TextStyle style = Theme::shared().listStyle();
    QFontMetricsF metrics { style.font() };
    TextControl control;
};

TEST_F(TextControlTest, oneLineMeasuresWithTheFontsMetrics)
{
    const QSizeF heat = text("Heat").renderedSize();
    const QSizeF longer = text("Heat and Ronin and Alien").renderedSize();
    EXPECT_GT(longer.width(), heat.width());
    EXPECT_DOUBLE_EQ(longer.height(), heat.height());

    for (const QString& value : { QStringLiteral("Heat"), QStringLiteral("Serial Number") }) {
        SCOPED_TRACE(value.toStdString());
        const QSizeF size = text(value).renderedSize();
        EXPECT_NEAR(size.width(), metrics.horizontalAdvance(value), 2);
        EXPECT_GE(size.height(), metrics.height() - 1);
        EXPECT_LE(size.height(), metrics.lineSpacing() + 1);
    }

    // Twice the pixel size, twice the height: the style's size reaches the font.
    const QSizeF small = text("Heat").renderedSize();
    style.pixelSize *= 2;
    const QSizeF large = text("Heat").renderedSize();
    EXPECT_NEAR(large.height() / small.height(), 2.0, 0.15);
}

TEST_F(TextControlTest, wrapsAtTheFrameWidthUpToTheMaximumLines)
{
    const qreal width = 300;
    const QSizeF oneLine = text(kLongText).renderedSize();
    EXPECT_NEAR(oneLine.width(), metrics.horizontalAdvance(kLongText), 2);

    // One line allowed: the natural width, whatever the frame says.
    EXPECT_EQ(text(kLongText, width, 1).renderedSize(), oneLine);

    const QSizeF unlimited = text(kLongText, width).renderedSize();
    EXPECT_LE(unlimited.width(), width + 0.5);
    EXPECT_GT(unlimited.height(), 4 * oneLine.height());

    const QSizeF three = text(kLongText, width, 3).renderedSize();
    EXPECT_LE(three.width(), width + 0.5);
    EXPECT_LT(three.height(), unlimited.height());
    EXPECT_GE(three.height(), 3 * metrics.height() - 2);
    EXPECT_LE(three.height(), 3 * metrics.lineSpacing() + 2);

    // A short text stays one line even when more are allowed.
    EXPECT_DOUBLE_EQ(text("Heat", width, 3).renderedSize().height(), oneLine.height());
}

TEST(ImageControl, downsamplesKeepingTheAspectAndNeverUpsamples)
{
    struct Row {
        QSize in;
        int side;
        QSize out;
    };
    const Row rows[] = {
        { { 400, 200 }, 100, { 100, 50 } },
        { { 200, 400 }, 100, { 50, 100 } },
        { { 1000, 1000 }, 256, { 256, 256 } },
        { { 100, 100 }, 100, { 100, 100 } },
        { { 60, 30 }, 100, { 60, 30 } },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.in.width() << "x" << row.in.height());
        QImage image(row.in, QImage::Format_RGB32);
        image.fill(Qt::red);
        shell::ImageControl control;
        control.setImage(image, row.side);
        EXPECT_EQ(control.image().size(), row.out);
        EXPECT_EQ(
            control.image().pixelColor(row.out.width() / 2, row.out.height() / 2), QColor(Qt::red));
    }

    shell::ImageControl control;
    control.setImage(QImage(400, 200, QImage::Format_RGB32));
    EXPECT_EQ(control.image().size(), QSize(400, 200));
}

TEST(Control, describeReportsKindTextAndFrame)
{
    const QRectF frame(12.5, 40, 300, 60.25);
    const QJsonArray described { 12.5, 40, 300, 60.25 };

    shell::HeaderControl header;
    header.setTitle("About");
    header.setFrame(frame);
    EXPECT_EQ(header.describe(),
        QJsonObject({ { "kind", "header" }, { "text", "About" }, { "frame", described } }));

    TextControl text;
    text.setText("Serial Number", Theme::shared().settingsAboutLabelStyle());
    text.setFrame(frame);
    EXPECT_EQ(text.describe(),
        QJsonObject({ { "kind", "text" }, { "text", "Serial Number" }, { "frame", described } }));

    shell::ImageControl image;
    image.setFrame(frame);
    EXPECT_EQ(image.describe(),
        QJsonObject({ { "kind", "image" }, { "text", QJsonValue::Null }, { "frame", described } }));
}

TEST(ControlsScene, redrawIsCountedAndAnnounced)
{
    shell::Scene scene;
    int requested = 0;
    QObject::connect(&scene, &shell::Scene::redrawRequested, [&] { ++requested; });
    scene.redraw();
    scene.redraw();
    EXPECT_EQ(scene.redrawCount(), 2);
    EXPECT_EQ(requested, 2);
}

} // namespace
