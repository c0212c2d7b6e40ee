import QtQuick
import Vireo.Shell

// The movie, drawn by mpv over the whole window.
Rectangle {
    id: surface

    required property QtObject shell

    color: "black"

    MpvVideoItem {
        anchors.fill: parent
        player: surface.shell.videoPlayer
    }
}
