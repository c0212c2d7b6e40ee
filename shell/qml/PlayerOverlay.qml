pragma ComponentBehavior: Bound
import QtQuick
import Vireo.Shell.Views

// What the player shows over the movie: the resume prompt under the movie's title, the
// overlay (title and clock above, the position bar with its times below), the bar
// alone while paused or just after a seek, the track menu, and why a movie cannot play.
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

        StyledText {
            width: prompt.width
            textStyle: ThemeView.headerStyle
            text: overlay.player.title
            horizontalAlignment: Text.AlignHCenter
        }
        StyledText {
            width: prompt.width
            textStyle: ThemeView.playerDurationStyle
            text: overlay.player.promptText
            horizontalAlignment: Text.AlignHCenter
        }
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
        id: heading

        x: ThemeView.titleSafeFrame.x
        y: ThemeView.titleSafeFrame.y
        width: ThemeView.titleSafeFrame.width
        height: ThemeView.progressHeight
        opacity: overlay.player.showsOverlay ? 1.0 : 0.0
        visible: opacity > 0
        Behavior on opacity { NumberAnimation { duration: 120 } }

        Rectangle {
            anchors.fill: parent
            anchors.margins: -ThemeView.progressPadding
            radius: ThemeView.progressRadius
            color: ThemeView.progressPanel
        }
        StyledText {
            anchors.left: parent.left
            anchors.right: clock.left
            anchors.rightMargin: ThemeView.progressPadding
            anchors.verticalCenter: parent.verticalCenter
            textStyle: ThemeView.headerStyle
            text: overlay.player.title
        }
        StyledText {
            id: clock

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            textStyle: ThemeView.playerPositionStyle
            text: overlay.player.clockText
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
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottom: parent.bottom
            visible: overlay.player.showsOverlay
            textStyle: ThemeView.playerDurationStyle
            text: overlay.player.endsAtText
        }
        StyledText {
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            textStyle: ThemeView.playerDurationStyle
            text: overlay.player.remainingText
        }
    }

    Rectangle {
        anchors.fill: tracks
        anchors.margins: -ThemeView.progressPadding
        radius: ThemeView.progressRadius
        color: ThemeView.progressPanel
        visible: tracks.visible
    }
    Column {
        id: tracks

        visible: overlay.player.trackRows.length > 0
        anchors.right: parent.right
        anchors.rightMargin: ThemeView.titleSafeFrame.x
        anchors.verticalCenter: parent.verticalCenter
        width: ThemeView.promptWidth
        spacing: ThemeView.promptSpacing

        Repeater {
            model: overlay.player.trackRows

            delegate: Column {
                id: trackRow

                required property int index
                required property var modelData
                readonly property bool focused: index === overlay.player.trackFocus

                width: tracks.width
                spacing: ThemeView.promptSpacing

                StyledText {
                    visible: text !== ""
                    width: trackRow.width
                    textStyle: ThemeView.previewLabelStyle
                    text: trackRow.modelData.heading
                }
                Rectangle {
                    width: trackRow.width
                    height: ThemeView.rowHeight
                    radius: ThemeView.cornerRadius
                    color: trackRow.focused ? ThemeView.promptFocusedRow : ThemeView.promptRow
                    border.color: trackRow.focused ? ThemeView.focusBorder : ThemeView.promptBorder
                    border.width: ThemeView.lineWidth

                    // The track playing now.
                    Rectangle {
                        id: mark

                        x: ThemeView.rowTextInset
                        anchors.verticalCenter: parent.verticalCenter
                        width: ThemeView.progressTrackHeight
                        height: width
                        radius: width / 2
                        color: ThemeView.progressFill
                        visible: trackRow.modelData.selected
                    }
                    StyledText {
                        anchors.left: mark.right
                        anchors.leftMargin: ThemeView.rowTextInset
                        anchors.right: parent.right
                        anchors.rightMargin: ThemeView.rowInset
                        anchors.verticalCenter: parent.verticalCenter
                        textStyle: ThemeView.listStyle
                        text: trackRow.modelData.title
                        color: trackRow.focused ? ThemeView.focusedText : ThemeView.promptText
                    }
                }
            }
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
