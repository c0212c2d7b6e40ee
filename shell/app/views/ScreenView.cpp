#include "ScreenView.h"

#include "toolkit/menus/CenteredMenuController.h"
#include "toolkit/menus/MediaMenuController.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/stack/LayerController.h"

namespace mediashell {

namespace {

    ScreenView::Kind kindOf(shell::LayerController* top)
    {
        using Kind = ScreenView::Kind;
        if (!top)
            return Kind::None;
        if (qobject_cast<shell::MediaMenuController*>(top))
            return Kind::Menu;
        if (qobject_cast<shell::CenteredMenuController*>(top))
            return Kind::Centered;
        if (qobject_cast<shell::VideoPlayerController*>(top))
            return Kind::Player;
        return Kind::Layer;
    }

} // namespace

ScreenView::ScreenView(QObject* parent)
    : QObject(parent)
{
}

ScreenView::~ScreenView() = default;

bool ScreenView::update(shell::LayerController* top, int depth)
{
    // A controller destroyed and another made at its address is still a new screen.
    const bool newScreen = top != m_top.data() || (top && !m_top) || (!top && m_topAddress);
    if (newScreen) {
        ++m_serial;
        m_top = top;
        m_topAddress = top;
    }
    const Kind kind = kindOf(top);
    const QString label = top ? top->label() : QString();
    const bool differs = newScreen || kind != m_kind || label != m_label || depth != m_depth;
    m_kind = kind;
    m_label = label;
    m_depth = depth;
    if (differs)
        emit changed();
    return newScreen;
}

} // namespace mediashell
