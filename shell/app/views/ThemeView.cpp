#include "ThemeView.h"

#include "SceneMapping.h"

namespace mediashell {

ThemeView::ThemeView(QObject* parent)
    : QObject(parent)
{
}

ThemeView::~ThemeView() = default;

QRectF ThemeView::titleSafeFrame() const
{
    return SceneMapping::toView(theme().titleSafeFrame());
}

} // namespace mediashell
