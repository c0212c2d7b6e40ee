import QtQuick
import Vireo.Shell.Views

// The dimmed shell: a shade over everything, and on it the focused cover or the clock,
// standing where the view's drift puts it within the title-safe area of the scene.
Item {
    id: layer

    required property ScreensaverView screensaver
    // The scene's scale in the window, as the screens are drawn.
    required property real sceneScale

    visible: opacity > 0
    opacity: screensaver.dimmed ? 1.0 : 0.0
    // Waking is at once; dimming fades in no longer than a screenshot waits.
    Behavior on opacity {
        enabled: layer.screensaver.dimmed
        NumberAnimation { duration: 150 }
    }

    Rectangle {
        anchors.fill: parent
        color: ThemeView.screensaverShade
    }

    Item {
        id: room

        x: (layer.width - ThemeView.sceneWidth * layer.sceneScale) / 2
            + ThemeView.titleSafeFrame.x * layer.sceneScale
        y: (layer.height - ThemeView.sceneHeight * layer.sceneScale) / 2
            + ThemeView.titleSafeFrame.y * layer.sceneScale
        width: ThemeView.titleSafeFrame.width * layer.sceneScale
        height: ThemeView.titleSafeFrame.height * layer.sceneScale

        Item {
            id: shown

            readonly property bool cover: layer.screensaver.coverUrl !== ""

            width: (cover ? picture.width : clock.implicitWidth) * layer.sceneScale
            height: (cover ? picture.height : clock.implicitHeight) * layer.sceneScale
            x: layer.screensaver.drift.x * Math.max(0, room.width - width)
            y: layer.screensaver.drift.y * Math.max(0, room.height - height)

            Image {
                id: picture

                visible: shown.cover
                source: layer.screensaver.coverUrl
                sourceSize.height: Math.round(ThemeView.screensaverCoverHeight * layer.sceneScale)
                height: ThemeView.screensaverCoverHeight
                width: implicitHeight > 0 ? implicitWidth * height / implicitHeight : 0
                fillMode: Image.PreserveAspectFit
                transformOrigin: Item.TopLeft
                scale: layer.sceneScale
            }
            StyledText {
                id: clock

                visible: !shown.cover
                textStyle: ThemeView.screensaverClockStyle
                text: layer.screensaver.clockText
                transformOrigin: Item.TopLeft
                scale: layer.sceneScale
            }
        }
    }
}
