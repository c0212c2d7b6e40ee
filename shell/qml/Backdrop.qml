import QtQuick
import Vireo.Shell.Views

// The dark stage behind every menu, with a faint glow from the top.
Rectangle {
    color: ThemeView.backdrop

    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        height: parent.height * 0.6
        gradient: Gradient {
            GradientStop { position: 0.0; color: ThemeView.backdropGlow }
            GradientStop { position: 1.0; color: ThemeView.backdrop }
        }
    }
}
