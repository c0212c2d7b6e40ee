import QtQuick
import QtQuick.Window

// The shell's window. Everything in it is a view of the toolkit's state as ShellView
// hands it over: no row, focus or player rules live here. The 1280 x 720 scene is
// scaled to fit the window and centred; ShellView has already turned the toolkit's
// frames (origin bottom-left) into the scene's (origin top-left).
Window {
    id: window

    required property QtObject shell

    visible: false
    width: 1280
    height: 720
    color: "black"
    title: "mediashell"

    // The video, full screen at the window's own resolution, under the scene.
    Loader {
        anchors.fill: parent
        active: window.shell.screenKind === "player" && window.shell.hasVideo
        sourceComponent: VideoSurface { shell: window.shell }
    }

    Item {
        id: scene

        width: 1280
        height: 720
        anchors.centerIn: parent
        scale: Math.min(window.width / width, window.height / height)

        Backdrop {
            anchors.fill: parent
            visible: window.shell.screenKind !== "player"
        }

        Item {
            id: screen

            property int shownSerial: -1

            anchors.fill: parent

            MenuScreen {
                anchors.fill: parent
                shell: window.shell
                visible: window.shell.screenKind === "menu"
            }
            CenteredScreen {
                anchors.fill: parent
                shell: window.shell
                visible: window.shell.screenKind === "centered"
            }
            // One list for both kinds of menu, at the list frame of the one on top.
            RowList {
                shell: window.shell
                visible: window.shell.screenKind === "menu" || window.shell.screenKind === "centered"
                centered: window.shell.screenKind === "centered"
            }
            ControlsLayer {
                anchors.fill: parent
                shell: window.shell
            }
            PlayerOverlay {
                anchors.fill: parent
                shell: window.shell
                visible: window.shell.screenKind === "player"
            }

            NumberAnimation {
                id: fadeIn
                target: screen
                property: "opacity"
                from: 0.0
                to: 1.0
                duration: 120
                easing.type: Easing.OutQuad
            }
            Connections {
                target: window.shell
                function onScreenChanged() {
                    if (screen.shownSerial !== window.shell.screenSerial) {
                        screen.shownSerial = window.shell.screenSerial
                        fadeIn.restart()
                    }
                }
            }
        }
    }
}
