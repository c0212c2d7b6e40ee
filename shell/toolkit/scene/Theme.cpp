#include "toolkit/scene/Theme.h"

#include "toolkit/scene/Scene.h"

#include <QFontDatabase>
#include <QGuiApplication>

namespace shell {

namespace {

    // fonts-dejavu-core installs these; the theme measures and draws with them so that a
    // layout computed in a test is the layout on the television.
    const char* const kFontFiles[] = {
        "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
        "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf",
    };
    const QColor kLabelGrey(0xb4, 0xb4, 0xb4);
    const QColor kDimGrey(0x9a, 0x9a, 0xa4);
    const QColor kBodyGrey(0xd8, 0xd8, 0xde);

    TextStyle style(const char* name, qreal pixelSize, QFont::Weight weight, const QColor& color)
    {
        return TextStyle { QString::fromLatin1(name), Theme::fontFamily(), pixelSize, weight,
            color };
    }

} // namespace

const Theme& Theme::shared()
{
    static const Theme theme;
    return theme;
}

QString Theme::fontFamily()
{
    static const QString family = [] {
        QString found;
        if (qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
            for (const char* file : kFontFiles) {
                const int id = QFontDatabase::addApplicationFont(QString::fromLatin1(file));
                const QStringList families = QFontDatabase::applicationFontFamilies(id);
                if (found.isEmpty() && !families.isEmpty())
                    found = families.first();
            }
        }
        return found.isEmpty() ? QStringLiteral("DejaVu Sans") : found;
    }();
    return family;
}

QRectF Theme::titleSafeFrame() const
{
    return QRectF(
        0.05 * Scene::kWidth, 0.05 * Scene::kHeight, 0.9 * Scene::kWidth, 0.9 * Scene::kHeight);
}

// The scene counts up from the bottom: a shorter frame at the same y leaves the room
// at the top.
QRectF Theme::listFrame() const
{
    const QRectF safe = titleSafeFrame();
    return QRectF(safe.x() + 0.55 * safe.width(), safe.y(), 0.45 * safe.width(),
        safe.height() - metrics().titleBand);
}

qreal Theme::listRowHeight() const
{
    return 48;
}

qreal Theme::settingsAboutRowHeight() const
{
    return 40;
}

qreal Theme::listIconHeight() const
{
    return 120;
}

int Theme::downsampleSize() const
{
    return 512;
}

TextStyle Theme::listStyle() const
{
    return style("list", 28, QFont::Normal, Qt::white);
}

TextStyle Theme::headerStyle() const
{
    return style("header", 36, QFont::Bold, Qt::white);
}

TextStyle Theme::iconMessageBodyStyle() const
{
    return style("iconMessageBody", 22, QFont::Normal, kLabelGrey);
}

TextStyle Theme::settingsAboutLabelStyle() const
{
    return style("settingsAboutLabel", 24, QFont::Normal, kLabelGrey);
}

TextStyle Theme::settingsAboutValueStyle() const
{
    return style("settingsAboutValue", 24, QFont::Bold, Qt::white);
}

TextStyle Theme::listArrowStyle() const
{
    return style("listArrow", listStyle().pixelSize * 1.3, QFont::Normal, kDimGrey);
}

// The preview's secondary texts stay at least 28 pixels high on a 1080p screen, where a
// scene unit is 1.5 pixels: readable from the sofa.
TextStyle Theme::previewTitleStyle() const
{
    return style("previewTitle", 26, QFont::Bold, Qt::white);
}

TextStyle Theme::previewBodyStyle() const
{
    return style("previewBody", 20, QFont::Normal, kBodyGrey);
}

TextStyle Theme::previewLabelStyle() const
{
    return style("previewLabel", 19, QFont::Normal, kDimGrey);
}

TextStyle Theme::previewValueStyle() const
{
    return style("previewValue", 19, QFont::Normal, kBodyGrey);
}

TextStyle Theme::previewCopyrightStyle() const
{
    return style("previewCopyright", 19, QFont::Normal, kDimGrey);
}

TextStyle Theme::playerPositionStyle() const
{
    return style("playerPosition", 22, QFont::Normal, Qt::white);
}

TextStyle Theme::playerDurationStyle() const
{
    return style("playerDuration", 22, QFont::Normal, QColor(0xb0, 0xb0, 0xba));
}

TextStyle Theme::playerMessageStyle() const
{
    return style("playerMessage", 26, QFont::Normal, Qt::white);
}

TextStyle Theme::screensaverClockStyle() const
{
    return style("screensaverClock", 96, QFont::Light, kDimGrey);
}

const Theme::Palette& Theme::palette() const
{
    static const Palette palette {
        .backdrop = Qt::black,
        .backdropGlow = QColor(0x1b, 0x1d, 0x26),
        .focusTop = QColor(0x5a, 0x67, 0x85),
        .focusBottom = QColor(0x32, 0x3b, 0x52),
        .focusBorder = QColor(0x8e, 0x9b, 0xbb),
        .focusedText = Qt::white,
        .rowText = QColor(0xd2, 0xd2, 0xd8),
        .divider = QColor(0x5c, 0x5c, 0x66),
        .promptRow = QColor(0x10, 0x10, 0x14, 0xcc),
        .promptFocusedRow = QColor(0x4b, 0x56, 0x70),
        .promptBorder = QColor(0x3a, 0x3a, 0x44),
        .promptText = QColor(0xc8, 0xc8, 0xd0),
        .progressPanel = QColor(0, 0, 0, 0xb0),
        .progressTrack = QColor(0x50, 0x50, 0x5a),
        .progressFill = QColor(0xd8, 0xdc, 0xea),
        .screensaverShade = QColor(0, 0, 0, 0xe8),
    };
    return palette;
}

const Theme::Metrics& Theme::metrics() const
{
    static const Metrics metrics {
        .cornerRadius = 8,
        .lineWidth = 1,
        .rowInset = 12,
        .rowIconInset = 10,
        .rowTextInset = 16,
        .rowArrowInset = 14,
        .titleBand = 60,
        .listTitleGap = 14,
        .centeredTitleGap = 28,
        .centeredTextSpacing = 18,
        .previewFactsGap = 4,
        .previewFactsSpacing = 6,
        .previewLabelGap = 8,
        .promptWidth = 520,
        .promptSpacing = 6,
        .progressBottom = 60,
        .progressHeight = 56,
        .progressPadding = 12,
        .progressRadius = 10,
        .progressTrackHeight = 10,
        .screensaverCoverHeight = 320,
    };
    return metrics;
}

} // namespace shell
