#include "toolkit/scene/TextControl.h"

#include <QFontMetricsF>
#include <QTextLayout>

namespace shell {

TextControl::TextControl()
    : Control(Kind::Text)
{
}

TextControl::~TextControl() = default;

void TextControl::setText(const QString& text, const TextStyle& style)
{
    m_text = text;
    m_style = style;
}

QSizeF TextControl::renderedSize() const
{
    const QFont font = m_style.font();
    const QFontMetricsF metrics(font);
    const qreal width = frame().width();
    if (width <= 0 || m_maximumLines == 1)
        return QSizeF(metrics.horizontalAdvance(m_text), metrics.height());

    QTextLayout layout(m_text, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WordWrap);
    layout.setTextOption(option);
    qreal widest = 0;
    int lines = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        widest = std::max(widest, line.naturalTextWidth());
        if (++lines == m_maximumLines)
            break;
    }
    layout.endLayout();
    // The same height as one unwrapped line when the text fits on one.
    return QSizeF(widest, metrics.height() + (std::max(lines, 1) - 1) * metrics.lineSpacing());
}

} // namespace shell
