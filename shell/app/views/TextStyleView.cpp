#include "TextStyleView.h"

#include "toolkit/scene/TextStyle.h"

namespace mediashell {

TextStyleView::TextStyleView()
    : TextStyleView(shell::TextStyle {})
{
}

TextStyleView::TextStyleView(const shell::TextStyle& style)
    : m_family(style.family)
    , m_pixelSize(style.pixelSize)
    , m_weight(int(style.weight))
    , m_color(style.color)
{
}

} // namespace mediashell
