import QtQuick
import Vireo.Shell.Views

// The movie, drawn by mpv over the whole window.
Rectangle {
    id: surface

    required property PlayerView player

    color: ThemeView.backdrop

    MpvVideoItem {
        anchors.fill: parent
        player: surface.player.videoPlayer
    }
}
