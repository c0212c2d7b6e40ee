#pragma once

#include <QColor>
#include <QFont>
#include <QString>

namespace shell {

// How one kind of text is set: the theme hands these out, text controls measure and
// the front end draws with them.
struct TextStyle {
    QString name; // "list", "header", "iconMessageBody", "settingsAboutLabel", ...
    QString family; // a family the project installs (see Theme::fontFamily)
    qreal pixelSize = 24;
    QFont::Weight weight = QFont::Normal;
    QColor color = Qt::white;

    QFont font() const;
};

} // namespace shell
