#pragma once

#include <QPointer>
#include <QQuickFramebufferObject>

namespace mediashell {

class MpvController;

// Draws the frames of an MpvVideoPlayer inside the Qt Quick scene (OpenGL render
// API). In QML: `MpvVideoItem { player: ... }` from the module "Vireo.Shell.Views"
// (views/MpvVideoItemType). The window must render with OpenGL
// (QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL)).
class MpvVideoItem : public QQuickFramebufferObject {
    Q_OBJECT
    Q_PROPERTY(QObject* player READ player WRITE setPlayer NOTIFY playerChanged)
public:
    explicit MpvVideoItem(QQuickItem* parent = nullptr);
    ~MpvVideoItem() override;

    QObject* player() const;
    // An MpvVideoPlayer, or anything else (drawn as nothing). The item does not own
    // it; a player destroyed while shown is let go on the next frame.
    void setPlayer(QObject* player);

    // The player's mpv, for the renderer (read while the main thread waits); null
    // for no player, another kind of player, or one whose mpv did not start.
    MpvController* controller() const;

    Renderer* createRenderer() const override;

signals:
    void playerChanged();

private:
    QPointer<QObject> m_player;
};

} // namespace mediashell
