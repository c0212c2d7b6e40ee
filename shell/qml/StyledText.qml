import QtQuick

// A text in one of the theme's styles: {family, pixelSize, weight, color}.
Text {
    property var textStyle: ({})

    font.family: textStyle.family !== undefined ? textStyle.family : "DejaVu Sans"
    font.pixelSize: textStyle.pixelSize !== undefined ? textStyle.pixelSize : 24
    font.weight: textStyle.weight !== undefined ? textStyle.weight : Font.Normal
    color: textStyle.color !== undefined ? textStyle.color : "white"
    textFormat: Text.PlainText
    elide: Text.ElideRight
}
