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
        0.1 * Scene::kWidth, 0.1 * Scene::kHeight, 0.8 * Scene::kWidth, 0.8 * Scene::kHeight);
}

QRectF Theme::listFrame() const
{
    const QRectF safe = titleSafeFrame();
    return QRectF(safe.x() + 0.55 * safe.width(), safe.y(), 0.45 * safe.width(), safe.height());
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

} // namespace shell
