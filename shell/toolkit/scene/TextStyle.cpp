#include "toolkit/scene/TextStyle.h"

namespace shell {

QFont TextStyle::font() const
{
    QFont font(family);
    font.setPixelSize(qMax(1, qRound(pixelSize)));
    font.setWeight(weight);
    // Measured sizes must not depend on the screen's hinting settings.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

} // namespace shell
