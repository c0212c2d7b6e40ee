#include "video/MpvVideoItem.h"

#include "video/MpvVideoPlayer.h"
#include "video/MpvVideoRenderer.h"

namespace mediashell {

MpvVideoItem::MpvVideoItem(QQuickItem* parent)
    : QQuickFramebufferObject(parent)
{
}

MpvVideoItem::~MpvVideoItem() = default;

QObject* MpvVideoItem::player() const
{
    return m_player;
}

void MpvVideoItem::setPlayer(QObject* player)
{
    if (player == m_player)
        return;
    if (m_player)
        disconnect(m_player, nullptr, this, nullptr);
    m_player = player;
    // The next frame frees the render context, and with it the core.
    if (m_player)
        connect(m_player, &QObject::destroyed, this, &QQuickItem::update);
    update();
    emit playerChanged();
}

MpvController* MpvVideoItem::controller() const
{
    const auto* const mpvPlayer = qobject_cast<const MpvVideoPlayer*>(m_player.data());
    return mpvPlayer ? mpvPlayer->controller() : nullptr;
}

QQuickFramebufferObject::Renderer* MpvVideoItem::createRenderer() const
{
    return new MpvVideoRenderer;
}

} // namespace mediashell
