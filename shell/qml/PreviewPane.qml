import QtQuick

// The focused row's preview: the cover (a file, a resource or a URL) or the icon,
// with its reflection; below it the title, description, cast, directors, producers,
// running time and copyright, as far as the preview has them.
Item {
    id: pane

    required property QtObject shell
    readonly property var preview: shell.preview
    readonly property bool shown: preview.image !== undefined
    readonly property bool showsMetadata: shown && preview.showsMetadata
    readonly property color labelColor: "#9a9aa4"
    readonly property color bodyColor: "#d8d8de"

    visible: shown

    // A new preview fades in.
    onPreviewChanged: fade.restart()
    NumberAnimation {
        id: fade
        target: pane
        property: "opacity"
        from: 0.0
        to: 1.0
        duration: 120
    }

    ReflectedImage {
        id: cover

        source: pane.shown ? pane.preview.image : ""
        x: 0
        y: 0
        width: pane.width
        height: pane.showsMetadata ? pane.height * 0.56 : pane.height * 0.8
        imageBottom: height * 0.82
        reflection: 0.35
        reflectionOffset: 0.02
        reflectionHeight: 0.2
    }

    Column {
        id: facts

        visible: pane.showsMetadata
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: cover.bottom
        anchors.topMargin: 4
        spacing: 6

        StyledText {
            width: facts.width
            textStyle: ({ family: pane.shell.listStyle.family, pixelSize: 26, weight: Font.Bold, color: "white" })
            text: pane.shown ? pane.preview.title : ""
            visible: text !== ""
        }
        StyledText {
            width: facts.width
            textStyle: ({ family: pane.shell.listStyle.family, pixelSize: 17, color: pane.bodyColor })
            text: pane.shown ? pane.preview.description : ""
            visible: text !== ""
            wrapMode: Text.WordWrap
            maximumLineCount: 4
        }
        Repeater {
            model: [
                { label: qsTr("Starring"), value: pane.shown ? pane.preview.cast : "" },
                { label: qsTr("Director"), value: pane.shown ? pane.preview.directors : "" },
                { label: qsTr("Producer"), value: pane.shown ? pane.preview.producers : "" },
                { label: qsTr("Running Time"), value: pane.shown ? pane.preview.duration : "" }
            ]
            delegate: Row {
                required property var modelData

                visible: modelData.value !== ""
                width: facts.width
                spacing: 8

                StyledText {
                    id: label
                    textStyle: ({ family: pane.shell.listStyle.family, pixelSize: 16, color: pane.labelColor })
                    text: parent.modelData.label
                }
                StyledText {
                    width: facts.width - label.width - 8
                    textStyle: ({ family: pane.shell.listStyle.family, pixelSize: 16, color: pane.bodyColor })
                    text: parent.modelData.value
                }
            }
        }
        StyledText {
            width: facts.width
            textStyle: ({ family: pane.shell.listStyle.family, pixelSize: 13, color: pane.labelColor })
            text: pane.shown ? pane.preview.copyright : ""
            visible: text !== ""
            wrapMode: Text.WordWrap
            maximumLineCount: 2
        }
    }
}
