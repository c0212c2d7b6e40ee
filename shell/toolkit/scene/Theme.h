#pragma once

#include "toolkit/scene/TextStyle.h"

#include <QRectF>
#include <QString>

namespace shell {

// The look shared by every screen: the title-safe frame of the 1280 x 720 scene, row
// heights, icon sizes and text styles. Values are in scene units (origin bottom-left).
class Theme {
public:
    static const Theme& shared();

    // The part of the scene a TV never crops: 10% in from each edge.
    QRectF titleSafeFrame() const;
    // Where a menu's list stands by default: the right 45% of the title-safe frame.
    QRectF listFrame() const;
    qreal listRowHeight() const;
    qreal settingsAboutRowHeight() const;
    qreal listIconHeight() const;
    // The side, in pixels, images are downsampled to before they are shown.
    int downsampleSize() const;

    TextStyle listStyle() const;
    TextStyle headerStyle() const;
    TextStyle iconMessageBodyStyle() const;
    TextStyle settingsAboutLabelStyle() const;
    TextStyle settingsAboutValueStyle() const;

    // The family of the font file the project installs; registered with the font
    // database on first use (needs a QGuiApplication).
    static QString fontFamily();

private:
    Theme() = default;
};

} // namespace shell
