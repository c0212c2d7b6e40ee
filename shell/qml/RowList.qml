import QtQuick
import Vireo.Shell.Views

// The list of the menu on top, at its list frame. The rows come from the menu view's
// rows model, which asks the data source only for the rows this view shows: a
// 10,000-row folder makes about a screenful of delegates. The focus is the
// controller's; the view only follows it.
ListView {
    id: list

    required property MenuView menu
    property bool centered: false

    objectName: "rowList"

    x: menu.listFrame.x
    y: menu.listFrame.y
    width: menu.listFrame.width
    height: menu.listFrame.height

    model: menu.rows
    currentIndex: menu.focusedRow
    interactive: false
    keyNavigationEnabled: false
    clip: true
    cacheBuffer: 0
    reuseItems: true
    boundsBehavior: Flickable.StopAtBounds

    highlightFollowsCurrentItem: true
    highlightMoveDuration: menu.focusJumped ? 0 : 100
    highlightMoveVelocity: -1
    highlightResizeDuration: 0
    highlightRangeMode: ListView.ApplyRange
    preferredHighlightBegin: height * 0.3
    preferredHighlightEnd: height * 0.7 - ThemeView.rowHeight

    // Sized by the list to the focused row.
    highlight: Rectangle {
        radius: ThemeView.cornerRadius
        gradient: Gradient {
            GradientStop { position: 0.0; color: ThemeView.focusTop }
            GradientStop { position: 1.0; color: ThemeView.focusBottom }
        }
        border.color: ThemeView.focusBorder
        border.width: ThemeView.lineWidth
    }

    delegate: Item {
        id: row

        required property int index
        required property string title
        required property bool arrow
        required property bool dividerAbove
        required property string icon
        required property bool partlyWatched
        required property real watchedFraction
        readonly property bool focused: ListView.isCurrentItem

        width: ListView.view.width
        height: ThemeView.rowHeight

        Rectangle {
            visible: row.dividerAbove
            anchors.top: parent.top
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.leftMargin: ThemeView.rowInset
            anchors.rightMargin: ThemeView.rowInset
            height: ThemeView.lineWidth
            color: ThemeView.divider
        }
        Image {
            id: rowIcon

            visible: row.icon !== ""
            source: row.icon
            anchors.left: parent.left
            anchors.leftMargin: ThemeView.rowIconInset
            anchors.verticalCenter: parent.verticalCenter
            width: visible ? parent.height - ThemeView.rowIconInset : 0
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
            textStyle: (row.ListView.view as RowList).menu.rowStyle
            text: row.title
            anchors.left: rowIcon.visible ? rowIcon.right : parent.left
            anchors.leftMargin: ThemeView.rowTextInset
            anchors.right: arrowMark.visible ? arrowMark.left : parent.right
            anchors.rightMargin: ThemeView.rowInset
            anchors.verticalCenter: parent.verticalCenter
            horizontalAlignment: (row.ListView.view as RowList).centered ? Text.AlignHCenter
                                                                        : Text.AlignLeft
            color: row.focused ? ThemeView.focusedText : ThemeView.rowText
        }
        // A partly watched movie: a thin bar filled up to its resume point, or only a
        // short mark when its length is not known.
        Item {
            visible: row.partlyWatched
            anchors.left: parent.left
            anchors.leftMargin: ThemeView.rowTextInset
            anchors.right: parent.right
            anchors.rightMargin: ThemeView.rowInset
            anchors.bottom: parent.bottom
            anchors.bottomMargin: ThemeView.lineWidth * 2
            height: ThemeView.lineWidth * 2

            Rectangle {
                visible: row.watchedFraction > 0
                anchors.fill: parent
                radius: height / 2
                color: ThemeView.progressTrack
            }
            Rectangle {
                width: row.watchedFraction > 0 ? parent.width * row.watchedFraction
                                               : parent.height * 6
                height: parent.height
                radius: height / 2
                color: ThemeView.progressFill
            }
        }
        StyledText {
            id: arrowMark

            visible: row.arrow
            textStyle: ThemeView.listArrowStyle
            text: "\u203a"
            anchors.right: parent.right
            anchors.rightMargin: ThemeView.rowArrowInset
            anchors.verticalCenter: parent.verticalCenter
            color: row.focused ? ThemeView.focusedText : ThemeView.listArrowStyle.color
        }
    }
}
