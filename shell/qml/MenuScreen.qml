import QtQuick
import Vireo.Shell.Views

// A media menu: its title above the list (the list itself is RowList), and on the
// left the focused row's preview.
Item {
    id: screen

    required property MenuView menu
    required property PreviewView preview

    StyledText {
        textStyle: ThemeView.headerStyle
        text: screen.menu.title
        x: screen.menu.listFrame.x
        width: screen.menu.listFrame.width
        y: screen.menu.listFrame.y - height - ThemeView.listTitleGap
        horizontalAlignment: Text.AlignHCenter
    }

    PreviewPane {
        preview: screen.preview
        x: screen.menu.previewFrame.x
        y: screen.menu.previewFrame.y
        width: screen.menu.previewFrame.width
        height: screen.menu.previewFrame.height
    }
}
