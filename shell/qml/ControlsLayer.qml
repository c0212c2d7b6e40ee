import QtQuick
import Vireo.Shell.Views

// The top controller's controls, each at its frame, in the order they were added:
// headers and texts in their theme styles, images (from the image store, one key per
// control and image) with their reflections.
Item {
    id: layer

    required property ControlsModel controls

    Repeater {
        model: layer.controls

        delegate: Item {
            id: control

            required property int kind
            required property rect frame
            required property string text
            required property textStyle textStyle
            required property int maximumLines
            required property string image
            required property real reflection
            required property real reflectionOffset
            readonly property bool isImage: kind === ControlsModel.Image

            x: frame.x
            y: frame.y
            width: frame.width
            height: frame.height

            StyledText {
                visible: !control.isImage
                textStyle: control.textStyle
                text: control.text
                width: control.width > 0 ? control.width : implicitWidth
                wrapMode: control.maximumLines === 1 ? Text.NoWrap : Text.WordWrap
                maximumLineCount: control.maximumLines > 0 ? control.maximumLines : 1000
                verticalAlignment: Text.AlignTop
            }

            ReflectedImage {
                visible: control.isImage
                anchors.fill: parent
                source: control.image
                reflection: control.reflection
                reflectionOffset: control.reflectionOffset
            }
        }
    }
}
