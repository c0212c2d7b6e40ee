import QtQuick
import QtQuick.Window
import Vireo.Shell.Views

// The shell's window. Everything in it is a view of the toolkit's state as the shell
// view hands it over: no row, focus or player rules live here. The scene (1280 x 720
// units) is scaled to fit the window and centred; the views have already turned the toolkit's
// frames (origin bottom-left) into the scene's (origin top-left).
Window {
    id: window

    required property ShellView shell
    readonly property int kind: shell.screen.kind

    visible: false
    width: ThemeView.sceneWidth
    height: ThemeView.sceneHeight
    color: ThemeView.backdrop
    title: "mediashell"

    // The video, full screen at the window's own resolution, under the scene; made
    // only while a player with pictures is on top, so its render context goes with it.
    Loader {
        anchors.fill: parent
        active: window.kind === ScreenView.Player && window.shell.player.hasVideo
        Component.onCompleted: setSource("VideoSurface.qml", { player: window.shell.player })
    }

    Item {
        id: scene

        width: ThemeView.sceneWidth
        height: ThemeView.sceneHeight
        anchors.centerIn: parent
        scale: Math.min(window.width / width, window.height / height)

        Backdrop {
            anchors.fill: parent
            visible: window.kind !== ScreenView.Player
        }

        Item {
            id: screen

            property int shownSerial: -1

            anchors.fill: parent

            MenuScreen {
                anchors.fill: parent
                menu: window.shell.menu
                preview: window.shell.preview
                visible: window.kind === ScreenView.Menu
            }
            CenteredScreen {
                anchors.fill: parent
                centered: window.shell.centered
                visible: window.kind === ScreenView.Centered
            }
            // One list for both kinds of menu, at the list frame of the one on top.
            RowList {
                menu: window.shell.menu
                visible: window.kind === ScreenView.Menu || window.kind === ScreenView.Centered
                centered: window.kind === ScreenView.Centered
            }
            ControlsLayer {
                anchors.fill: parent
                controls: window.shell.controls
            }
            PlayerOverlay {
                anchors.fill: parent
                player: window.shell.player
                visible: window.kind === ScreenView.Player
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
                target: window.shell.screen
                function onChanged() {
                    if (screen.shownSerial !== window.shell.screen.serial) {
                        screen.shownSerial = window.shell.screen.serial
                        fadeIn.restart()
                    }
                }
            }
        }

        // Over every screen, and not faded with a new one.
        PairingOverlay {
            pairing: window.shell.pairing
        }
    }

    // Over everything, the video too: a paused movie dims like a menu.
    ScreensaverLayer {
        anchors.fill: parent
        screensaver: window.shell.screensaver
        sceneScale: scene.scale
    }
}
