import QtQuick

// A media menu: its title above the list (the list itself is RowList), and on the
// left the focused row's preview.
Item {
    id: screen

    required property QtObject shell

    StyledText {
        textStyle: screen.shell.headerStyle
        text: screen.shell.listTitle
        x: screen.shell.listFrame.x
        width: screen.shell.listFrame.width
        y: screen.shell.listFrame.y - height - 14
        horizontalAlignment: Text.AlignHCenter
    }

    PreviewPane {
        shell: screen.shell
        x: screen.shell.previewFrame.x
        y: screen.shell.previewFrame.y
        width: screen.shell.previewFrame.width
        height: screen.shell.previewFrame.height
    }
}
