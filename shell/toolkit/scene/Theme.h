#pragma once

#include "toolkit/scene/TextStyle.h"

#include <QColor>
#include <QRectF>
#include <QString>

namespace shell {

// The look shared by every screen: the title-safe frame of the 1280 x 720 scene, row
// heights, icon sizes, text styles, and the colours and spacing the front end paints
// its furniture with (focus, dividers, the player's overlay). Values are in scene
// units (origin bottom-left); the front end takes every colour and size from here.
class Theme {
public:
    // Colours besides the text styles' own.
    struct Palette {
        QColor backdrop; // behind every screen, and what reflections fade into
        QColor backdropGlow; // the faint glow from the top of a menu's backdrop
        QColor focusTop; // the focused row's gradient, top to bottom
        QColor focusBottom;
        QColor focusBorder;
        QColor focusedText; // a focused row's text and arrow
        QColor rowText; // a row's text without the focus
        QColor divider;
        QColor promptRow; // the resume prompt's rows over the movie
        QColor promptFocusedRow;
        QColor promptBorder;
        QColor promptText;
        QColor progressPanel; // the position bar: its panel, track and elapsed part
        QColor progressTrack;
        QColor progressFill;
        QColor screensaverShade; // over the whole screen while the shell is dimmed
    };
    // Spacing and sizes of the front end's furniture, in scene units.
    struct Metrics {
        qreal cornerRadius; // the focus and the prompt's rows
        qreal lineWidth; // borders and dividers
        qreal rowInset; // a divider's ends, a row text's right end
        qreal rowIconInset; // before a row's icon; the icon is the row height less this
        qreal rowTextInset; // before a row's text
        qreal rowArrowInset; // after a folder row's arrow
        qreal titleBand; // above a menu's list, inside the safe frame: its title and gap
        qreal listTitleGap; // between a menu's title and its list
        qreal centeredTitleGap; // between a centred menu's title and its texts
        qreal centeredTextSpacing;
        qreal previewFactsGap; // between the preview's cover and its facts
        qreal previewFactsSpacing;
        qreal previewLabelGap; // between a fact's label and its value
        qreal promptWidth;
        qreal promptSpacing;
        qreal progressBottom; // the position bar's distance from the bottom edge
        qreal progressHeight;
        qreal progressPadding; // the panel's margin around the bar
        qreal progressRadius;
        qreal progressTrackHeight;
        qreal screensaverCoverHeight; // the cover the dimmed shell shows
    };

    static const Theme& shared();

    // The part of the scene a TV shows whole even when it overscans: 5% in from each
    // edge. Every text and focus frame stays inside it.
    QRectF titleSafeFrame() const;
    // Where a menu's list stands by default: the right 45% of the title-safe frame,
    // below the band that holds the menu's title.
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
    // A folder row's arrow: the list's text, larger, dimmed without the focus.
    TextStyle listArrowStyle() const;
    // The preview's title, description, facts (label and value) and copyright.
    TextStyle previewTitleStyle() const;
    TextStyle previewBodyStyle() const;
    TextStyle previewLabelStyle() const;
    TextStyle previewValueStyle() const;
    TextStyle previewCopyrightStyle() const;
    // The player's position and duration beside the bar, and why a movie cannot play.
    TextStyle playerPositionStyle() const;
    TextStyle playerDurationStyle() const;
    TextStyle playerMessageStyle() const;
    // The clock of the dimmed shell.
    TextStyle screensaverClockStyle() const;

    const Palette& palette() const;
    const Metrics& metrics() const;

    // The family of the font file the project installs; registered with the font
    // database on first use (needs a QGuiApplication).
    static QString fontFamily();

private:
    Theme() = default;
};

} // namespace shell
