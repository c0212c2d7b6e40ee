#include "MenuView.h"

#include "RowsModel.h"
#include "SceneMapping.h"

#include "toolkit/menus/MenuController.h"
#include "toolkit/scene/Theme.h"

#include <climits>
#include <cstdlib>

namespace mediashell {

namespace {

    // The gap between a media menu's preview and its list, in scene units.
    constexpr qreal kPreviewGap = 40;

} // namespace

MenuView::MenuView(std::shared_ptr<ImageStore> images, QObject* parent)
    : QObject(parent)
    , m_rows(new RowsModel(std::move(images), this))
{
}

MenuView::~MenuView() = default;

void MenuView::update(shell::LayerController* top, bool newScreen)
{
    auto* const menu = qobject_cast<shell::MenuController*>(top);
    const bool reset = m_rows->setMenu(menu);
    State state;
    if (menu) {
        state.focus = int(std::min<long>(menu->focusedRow(), INT_MAX));
        state.title = menu->list().title();
        const QRectF list = menu->list().frame();
        state.listFrame = SceneMapping::toView(list);
        state.rowStyle = TextStyleView(menu->list().rowStyle());
        const QRectF safe = shell::Theme::shared().titleSafeFrame();
        const qreal previewWidth = std::max<qreal>(0, list.x() - safe.x() - kPreviewGap);
        state.previewFrame
            = SceneMapping::toView(QRectF(safe.x(), safe.y(), previewWidth, safe.height()));
    }
    if (!reset && state.focus >= 0 && state.focus != m_state.focus)
        m_rows->refreshRow(state.focus);
    const bool differs = reset || !(state == m_state);
    const bool jumped = reset || newScreen || std::abs(state.focus - m_state.focus) > 1;
    const bool jumpDiffers = differs && jumped != m_focusJumped;
    if (differs)
        m_focusJumped = jumped;
    m_state = state;
    if (jumpDiffers)
        emit focusJumpedChanged();
    if (differs)
        emit changed();
}

} // namespace mediashell
