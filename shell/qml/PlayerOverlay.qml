import QtQuick

// What the player shows over the movie: the resume prompt's two rows, the position
// bar while paused or just after a seek, and why a movie cannot play.
Item {
    id: overlay

    required property QtObject shell
    readonly property string playerState: shell.playerState

    // Without a picture (the simulated player) the screen stays black.
    Rectangle {
        anchors.fill: parent
        color: "black"
        visible: !overlay.shell.hasVideo
    }

    Column {
        id: prompt

        visible: overlay.playerState === "prompt"
        anchors.centerIn: parent
        width: 520
        spacing: 6

        Repeater {
            model: overlay.shell.promptRows

            delegate: Rectangle {
                required property int index
                required property string modelData
                readonly property bool focused: index === overlay.shell.promptFocus

                width: prompt.width
                height: overlay.shell.rowHeight
                radius: 8
                color: focused ? "#4b5670" : "#cc101014"
                border.color: focused ? "#8e9bbb" : "#3a3a44"
                border.width: 1
                Behavior on color { ColorAnimation { duration: 100 } }

                StyledText {
                    anchors.centerIn: parent
                    textStyle: overlay.shell.listStyle
                    text: parent.modelData
                    color: parent.focused ? "white" : "#c8c8d0"
                }
            }
        }
    }

    Item {
        id: bar

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.leftMargin: overlay.shell.titleSafeFrame.x
        anchors.rightMargin: overlay.shell.titleSafeFrame.x
        anchors.bottomMargin: 60
        height: 56
        opacity: overlay.shell.showsProgress ? 1.0 : 0.0
        visible: opacity > 0
        Behavior on opacity { NumberAnimation { duration: 120 } }

        Rectangle {
            anchors.fill: parent
            anchors.margins: -12
            radius: 10
            color: "#b0000000"
        }
        Rectangle {
            id: track

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            height: 10
            radius: 5
            color: "#50505a"

            Rectangle {
                height: parent.height
                radius: parent.radius
                color: "#d8dcea"
                width: overlay.shell.durationMS > 0
                    ? parent.width * Math.min(1, overlay.shell.positionMS / overlay.shell.durationMS) : 0
                Behavior on width { NumberAnimation { duration: 120 } }
            }
        }
        StyledText {
            anchors.left: parent.left
            anchors.bottom: parent.bottom
            textStyle: ({ family: overlay.shell.listStyle.family, pixelSize: 22, color: "white" })
            text: overlay.shell.positionText + (overlay.playerState === "paused" ? "   " + qsTr("Paused") : "")
        }
        StyledText {
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            textStyle: ({ family: overlay.shell.listStyle.family, pixelSize: 22, color: "#b0b0ba" })
            text: overlay.shell.durationMS > 0 ? overlay.shell.durationText : ""
        }
    }

    StyledText {
        visible: overlay.playerState === "error"
        anchors.centerIn: parent
        width: overlay.shell.titleSafeFrame.width * 0.7
        textStyle: ({ family: overlay.shell.listStyle.family, pixelSize: 26, color: "white" })
        text: overlay.shell.playerError
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        elide: Text.ElideNone
    }
}
