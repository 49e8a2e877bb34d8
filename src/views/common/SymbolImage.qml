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
    source: AppTheme.symbolSource(symbol, tint)
    Accessible.ignored: true
}
