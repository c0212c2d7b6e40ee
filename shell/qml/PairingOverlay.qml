import QtQuick
import Vireo.Shell.Views

// The phone remote's pairing code, in the top right corner of the title-safe frame,
// while a browser waits to pair.
Rectangle {
    id: overlay

    required property PairingView pairing

    visible: pairing.code !== ""
    x: ThemeView.titleSafeFrame.x + ThemeView.titleSafeFrame.width - width
    y: ThemeView.titleSafeFrame.y
    width: Math.max(code.implicitWidth, address.implicitWidth) + 2 * ThemeView.progressPadding
    height: column.implicitHeight + 2 * ThemeView.progressPadding
    radius: ThemeView.progressRadius
    color: ThemeView.progressPanel
    border.color: ThemeView.promptBorder
    border.width: ThemeView.lineWidth

    Column {
        id: column

        anchors.centerIn: parent

        StyledText {
            anchors.horizontalCenter: parent.horizontalCenter
            textStyle: ThemeView.previewBodyStyle
            text: qsTr("Phone Remote code")
        }
        StyledText {
            id: code

            anchors.horizontalCenter: parent.horizontalCenter
            objectName: "pairingCode"
            textStyle: ThemeView.headerStyle
            font.letterSpacing: textStyle.pixelSize / 3
            text: overlay.pairing.code
        }
        StyledText {
            id: address

            anchors.horizontalCenter: parent.horizontalCenter
            textStyle: ThemeView.previewBodyStyle
            text: overlay.pairing.pageUrl
        }
    }
}
