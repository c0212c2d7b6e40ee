import QtQuick

// A question in the middle of the screen: its title, then the primary and secondary
// texts above the answers (the answers are RowList, at the menu's list frame).
Item {
    id: screen

    required property QtObject shell

    StyledText {
        id: heading

        textStyle: screen.shell.headerStyle
        text: screen.shell.centeredTitle
        x: screen.shell.titleSafeFrame.x
        width: screen.shell.titleSafeFrame.width
        y: screen.shell.titleSafeFrame.y
        horizontalAlignment: Text.AlignHCenter
    }

    Column {
        x: screen.shell.titleSafeFrame.x + screen.shell.titleSafeFrame.width * 0.1
        width: screen.shell.titleSafeFrame.width * 0.8
        anchors.top: heading.bottom
        anchors.topMargin: 28
        spacing: 18

        StyledText {
            width: parent.width
            textStyle: screen.shell.primaryStyle
            text: screen.shell.primaryText
            visible: text !== ""
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            elide: Text.ElideNone
        }
        StyledText {
            width: parent.width
            textStyle: screen.shell.secondaryStyle
            text: screen.shell.secondaryText
            visible: text !== ""
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            elide: Text.ElideNone
        }
    }
}
