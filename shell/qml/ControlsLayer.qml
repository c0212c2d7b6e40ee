import QtQuick

// The top controller's controls, each at its frame, in the order they were added:
// headers and texts in their theme styles, images (from the image store, one key per
// control and image) with their reflections.
Item {
    id: layer

    required property QtObject shell

    Repeater {
        model: layer.shell.controls

        delegate: Item {
            id: control

            required property var modelData

            x: modelData.x
            y: modelData.y
            width: modelData.width
            height: modelData.height

            StyledText {
                visible: control.modelData.kind !== "image"
                textStyle: control.modelData.style !== undefined ? control.modelData.style : ({})
                text: control.modelData.text !== undefined ? control.modelData.text : ""
                width: control.width > 0 ? control.width : implicitWidth
                wrapMode: control.modelData.maximumLines === 1 ? Text.NoWrap : Text.WordWrap
                maximumLineCount: control.modelData.maximumLines > 0 ? control.modelData.maximumLines : 1000
                verticalAlignment: Text.AlignTop
            }

            ReflectedImage {
                visible: control.modelData.kind === "image"
                anchors.fill: parent
                source: control.modelData.kind === "image" ? control.modelData.image : ""
                reflection: control.modelData.reflection !== undefined ? control.modelData.reflection : 0
                reflectionOffset: control.modelData.reflectionOffset !== undefined ? control.modelData.reflectionOffset : 0
            }
        }
    }
}
