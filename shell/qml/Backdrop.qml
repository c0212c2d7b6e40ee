import QtQuick

// The dark stage behind every menu: black, with a faint glow from the top.
Rectangle {
    color: "black"

    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        height: parent.height * 0.6
        gradient: Gradient {
            GradientStop { position: 0.0; color: "#1b1d26" }
            GradientStop { position: 1.0; color: "#000000" }
        }
    }
}
