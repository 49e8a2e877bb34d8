import QtQuick
import Quorla.Views

// A symbol from the icon theme (or the bundled fallback), tinted for its page.
Image {
    property string symbol
    property color tint: AppTheme.primaryText
    property int size: 16

    width: size
    height: size
    sourceSize: Qt.size(size, size)
    fillMode: Image.PreserveAspectFit
    source: symbol.length > 0 ? "image://symbol/%1?color=%2".arg(symbol).arg(tint.toString().slice(1)) : ""
    Accessible.ignored: true
}
