import QtQuick

// The list of the menu on top, at its list frame. The rows come from ShellView's
// rows model, which asks the data source only for the rows this view shows: a
// 10,000-row folder makes about a screenful of delegates. The focus is the
// controller's; the view only follows it.
ListView {
    id: list

    required property QtObject shell
    property bool centered: false

    objectName: "rowList"

    x: shell.listFrame.x
    y: shell.listFrame.y
    width: shell.listFrame.width
    height: shell.listFrame.height

    model: shell.rows
    currentIndex: shell.focusedRow
    interactive: false
    keyNavigationEnabled: false
    clip: true
    cacheBuffer: 0
    reuseItems: true
    boundsBehavior: Flickable.StopAtBounds

    highlightFollowsCurrentItem: true
    highlightMoveDuration: shell.focusJumped ? 0 : 100
    highlightMoveVelocity: -1
    highlightResizeDuration: 0
    highlightRangeMode: ListView.ApplyRange
    preferredHighlightBegin: height * 0.3
    preferredHighlightEnd: height * 0.7 - shell.rowHeight

    highlight: Rectangle {
        width: list.width
        height: list.shell.rowHeight
        radius: 8
        gradient: Gradient {
            GradientStop { position: 0.0; color: "#5a6785" }
            GradientStop { position: 1.0; color: "#323b52" }
        }
        border.color: "#8e9bbb"
        border.width: 1
    }

    delegate: Item {
        id: row

        required property int index
        required property string title
        required property bool arrow
        required property bool dividerAbove
        required property string icon
        readonly property bool focused: ListView.isCurrentItem

        width: ListView.view.width
        height: list.shell.rowHeight

        Rectangle {
            visible: row.dividerAbove
            anchors.top: parent.top
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.leftMargin: 12
            anchors.rightMargin: 12
            height: 1
            color: "#5c5c66"
        }
        Image {
            id: rowIcon

            visible: row.icon !== ""
            source: row.icon
            anchors.left: parent.left
            anchors.leftMargin: 10
            anchors.verticalCenter: parent.verticalCenter
            width: visible ? parent.height - 10 : 0
            height: width
            fillMode: Image.PreserveAspectFit
            // Decoded at the size it is drawn: a 512-pixel icon in a 50-pixel row
            // would otherwise be uploaded whole and mipmapped.
            sourceSize.width: width
            sourceSize.height: height
            smooth: true
            cache: false
        }
        StyledText {
            textStyle: list.shell.listStyle
            text: row.title
            anchors.left: rowIcon.visible ? rowIcon.right : parent.left
            anchors.leftMargin: 16
            anchors.right: arrowMark.visible ? arrowMark.left : parent.right
            anchors.rightMargin: 12
            anchors.verticalCenter: parent.verticalCenter
            horizontalAlignment: list.centered ? Text.AlignHCenter : Text.AlignLeft
            color: row.focused ? "white" : "#d2d2d8"
        }
        StyledText {
            id: arrowMark

            visible: row.arrow
            textStyle: list.shell.listStyle
            text: "\u203a"
            font.pixelSize: list.shell.listStyle.pixelSize * 1.3
            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            color: row.focused ? "white" : "#9a9aa4"
        }
    }
}
