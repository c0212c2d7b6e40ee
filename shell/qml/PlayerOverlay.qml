pragma ComponentBehavior: Bound
import QtQuick
import Vireo.Shell.Views

// What the player shows over the movie: the resume prompt's two rows, the position
// bar while paused or just after a seek, and why a movie cannot play.
Item {
    id: overlay

    required property PlayerView player

    // Without a picture (the simulated player) the screen stays black.
    Rectangle {
        anchors.fill: parent
        color: ThemeView.backdrop
        visible: !overlay.player.hasVideo
    }

    Column {
        id: prompt

        visible: overlay.player.state === PlayerView.Prompt
        anchors.centerIn: parent
        width: ThemeView.promptWidth
        spacing: ThemeView.promptSpacing

        Repeater {
            model: overlay.player.promptRows

            delegate: Rectangle {
                id: promptRow

                required property int index
                required property string modelData
                readonly property bool focused: index === overlay.player.promptFocus

                width: prompt.width
                height: ThemeView.rowHeight
                radius: ThemeView.cornerRadius
                color: focused ? ThemeView.promptFocusedRow : ThemeView.promptRow
                border.color: focused ? ThemeView.focusBorder : ThemeView.promptBorder
                border.width: ThemeView.lineWidth
                Behavior on color { ColorAnimation { duration: 100 } }

                StyledText {
                    anchors.centerIn: parent
                    textStyle: ThemeView.listStyle
                    text: promptRow.modelData
                    color: promptRow.focused ? ThemeView.focusedText : ThemeView.promptText
                }
            }
        }
    }

    Item {
        id: bar

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.leftMargin: ThemeView.titleSafeFrame.x
        anchors.rightMargin: ThemeView.titleSafeFrame.x
        anchors.bottomMargin: ThemeView.progressBottom
        height: ThemeView.progressHeight
        opacity: overlay.player.showsProgress ? 1.0 : 0.0
        visible: opacity > 0
        Behavior on opacity { NumberAnimation { duration: 120 } }

        Rectangle {
            anchors.fill: parent
            anchors.margins: -ThemeView.progressPadding
            radius: ThemeView.progressRadius
            color: ThemeView.progressPanel
        }
        Rectangle {
            id: track

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            height: ThemeView.progressTrackHeight
            radius: height / 2
            color: ThemeView.progressTrack

            Rectangle {
                height: parent.height
                radius: parent.radius
                color: ThemeView.progressFill
                width: parent.width * overlay.player.progress
                Behavior on width { NumberAnimation { duration: 120 } }
            }
        }
        StyledText {
            anchors.left: parent.left
            anchors.bottom: parent.bottom
            textStyle: ThemeView.playerPositionStyle
            text: overlay.player.positionText
                + (overlay.player.state === PlayerView.Paused ? "   " + qsTr("Paused") : "")
        }
        StyledText {
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            textStyle: ThemeView.playerDurationStyle
            text: overlay.player.durationText
        }
    }

    StyledText {
        visible: overlay.player.state === PlayerView.Error
        anchors.centerIn: parent
        width: ThemeView.titleSafeFrame.width * 0.7
        textStyle: ThemeView.playerMessageStyle
        text: overlay.player.error
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        elide: Text.ElideNone
    }
}
