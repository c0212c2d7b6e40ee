#pragma once

#include "toolkit/scene/Control.h"
#include "toolkit/scene/TextStyle.h"

#include <QSizeF>

namespace shell {

// A text in one of the theme's styles. renderedSize() measures it with the real
// metrics of the style's font, so layouts computed from it match what is drawn.
class TextControl : public Control {
public:
    TextControl();
    ~TextControl() override;

    void setText(const QString& text, const TextStyle& style);
    QString text() const override { return m_text; }
    TextStyle style() const { return m_style; }

    // 0 = as many lines as the text needs.
    void setMaximumLines(int lines) { m_maximumLines = lines; }
    int maximumLines() const { return m_maximumLines; }

    // The size the text takes when drawn: one line at its natural width when the
    // frame has no width yet or one line is allowed; otherwise wrapped at the frame's
    // width, at most maximumLines() lines high.
    QSizeF renderedSize() const;

private:
    QString m_text;
    TextStyle m_style;
    int m_maximumLines = 0;
};

} // namespace shell
