import QtQuick
import Vireo.Shell.Views

// The focused row's preview: the cover (a file, a resource or a URL) or the icon,
// with its reflection; below it the title, description, cast, directors, producers,
// running time and copyright, as far as the preview has them.
Item {
    id: pane

    required property PreviewView preview

    visible: preview.shown

    // One fact, its label and then its value; nothing without a value.
    component Fact: Row {
        id: fact

        required property string label
        required property string value

        visible: value !== ""
        width: parent.width
        spacing: ThemeView.previewLabelGap

        StyledText {
            id: factLabel
            textStyle: ThemeView.previewLabelStyle
            text: fact.label
        }
        StyledText {
            width: fact.width - factLabel.width - fact.spacing
            textStyle: ThemeView.previewValueStyle
            text: fact.value
        }
    }

    // A new preview fades in, and so does the first.
    Component.onCompleted: fade.restart()
    Connections {
        target: pane.preview
        function onChanged() { fade.restart() }
    }
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

        source: pane.preview.imageUrl
        fallbackSource: pane.preview.fallbackImageUrl
        x: 0
        y: 0
        width: pane.width
        height: pane.preview.showsMetadata ? pane.height * 0.56 : pane.height * 0.8
        imageBottom: height * 0.82
        reflection: 0.35
        reflectionOffset: 0.02
        reflectionHeight: 0.2
    }

    // Never below the pane: whatever does not fit is cut off at its bottom edge.
    Column {
        id: facts

        visible: pane.preview.showsMetadata
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: cover.bottom
        anchors.topMargin: ThemeView.previewFactsGap
        anchors.bottom: parent.bottom
        spacing: ThemeView.previewFactsSpacing
        clip: true

        StyledText {
            width: facts.width
            textStyle: ThemeView.previewTitleStyle
            text: pane.preview.title
            visible: text !== ""
        }
        StyledText {
            objectName: "previewResume"
            width: facts.width
            textStyle: ThemeView.previewValueStyle
            text: pane.preview.resumeText
            visible: text !== ""
        }
        StyledText {
            width: facts.width
            textStyle: ThemeView.previewBodyStyle
            text: pane.preview.description
            visible: text !== ""
            wrapMode: Text.WordWrap
            maximumLineCount: 3
        }
        Fact {
            label: qsTr("Starring")
            value: pane.preview.cast
        }
        Fact {
            label: qsTr("Director")
            value: pane.preview.directors
        }
        Fact {
            label: qsTr("Producer")
            value: pane.preview.producers
        }
        Fact {
            label: qsTr("Running Time")
            value: pane.preview.durationText
        }
        StyledText {
            width: facts.width
            textStyle: ThemeView.previewCopyrightStyle
            text: pane.preview.copyright
            visible: text !== ""
        }
    }
}
