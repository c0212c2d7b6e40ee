import QtQuick
import Vireo.Shell.Views

// An image fitted into the item (aspect kept, standing on `imageBottom`
// from the top), with its mirror image fading out below it: `reflection` is the
// mirror's opacity at its top (0: none), `reflectionOffset` the gap as a fraction of
// the image's height. When `source` cannot be loaded, `fallbackSource` is drawn.
Item {
    id: root

    property url source
    property url fallbackSource
    property bool sourceFailed: false
    property real reflection: 0.0
    property real reflectionOffset: 0.0
    // How much of the image the reflection shows, from its bottom edge.
    property real reflectionHeight: 0.35
    property color fadeColor: ThemeView.backdrop
    // Where the image's bottom edge stands, from the item's top.
    property real imageBottom: height
    readonly property real fitScale: picture.implicitWidth > 0 && picture.implicitHeight > 0
        ? Math.min(width / picture.implicitWidth, imageBottom / picture.implicitHeight) : 0

    onSourceChanged: sourceFailed = false

    Image {
        id: picture

        objectName: "picture"
        source: root.sourceFailed ? root.fallbackSource : root.source
        onStatusChanged: {
            if (status === Image.Error)
                root.sourceFailed = true
        }
        width: implicitWidth * root.fitScale
        height: implicitHeight * root.fitScale
        x: (root.width - width) / 2
        y: root.imageBottom - height
        asynchronous: false
        // Decoded at the size it is drawn, so the renderer samples the texture one to
        // one: without a GPU, a large picture scaled down at every frame costs more than
        // the rest of the screen. Shared with the mirror below: one decode and one
        // texture for both.
        sourceSize.width: Math.max(1, Math.round(root.width))
        sourceSize.height: Math.max(1, Math.round(root.imageBottom))
        cache: true
        smooth: true
    }

    Item {
        id: mirror

        visible: root.reflection > 0 && picture.status === Image.Ready
        x: picture.x
        y: picture.y + picture.height * (1 + root.reflectionOffset)
        width: picture.width
        height: picture.height * root.reflectionHeight
        clip: true

        Image {
            width: picture.width
            height: picture.height
            source: picture.source
            sourceSize: picture.sourceSize
            cache: true
            smooth: true
            opacity: root.reflection
            transform: Scale { origin.y: picture.height / 2; yScale: -1 }
        }
        Rectangle {
            anchors.fill: parent
            gradient: Gradient {
                GradientStop { position: 0.0; color: Qt.rgba(root.fadeColor.r, root.fadeColor.g, root.fadeColor.b, 0.0) }
                GradientStop { position: 1.0; color: root.fadeColor }
            }
        }
    }
}
