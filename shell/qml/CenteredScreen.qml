import QtQuick
import Vireo.Shell.Views

// A question in the middle of the screen: its title, then the primary and secondary
// texts above the answers (the answers are RowList, at the menu's list frame).
Item {
    id: screen

    required property CenteredView centered

    StyledText {
        id: heading

        textStyle: ThemeView.headerStyle
        text: screen.centered.title
        x: ThemeView.titleSafeFrame.x
        width: ThemeView.titleSafeFrame.width
        y: ThemeView.titleSafeFrame.y
        horizontalAlignment: Text.AlignHCenter
    }

    Column {
        x: ThemeView.titleSafeFrame.x + ThemeView.titleSafeFrame.width * 0.1
        width: ThemeView.titleSafeFrame.width * 0.8
        anchors.top: heading.bottom
        anchors.topMargin: ThemeView.centeredTitleGap
        spacing: ThemeView.centeredTextSpacing

        StyledText {
            width: parent.width
            textStyle: screen.centered.primaryStyle
            text: screen.centered.primaryText
            visible: text !== ""
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            elide: Text.ElideNone
        }
        StyledText {
            width: parent.width
            textStyle: screen.centered.secondaryStyle
            text: screen.centered.secondaryText
            visible: text !== ""
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            elide: Text.ElideNone
        }
    }
}
