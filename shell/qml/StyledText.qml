import QtQuick
import Vireo.Shell.Views

// A text in one of the theme's styles.
Text {
    required property textStyle textStyle

    font.family: textStyle.family
    font.pixelSize: textStyle.pixelSize
    font.weight: textStyle.weight
    color: textStyle.color
    textFormat: Text.PlainText
    elide: Text.ElideRight
}
