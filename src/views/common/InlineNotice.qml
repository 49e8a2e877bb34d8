import QtQuick
import QtQuick.Layouts
import Quorla.Views

// A warning that wraps onto as many lines as it needs.
RowLayout {
    id: notice
    property string text

    spacing: 8
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    SymbolImage {
        Layout.alignment: Qt.AlignTop
        symbol: "exclamationmark.triangle.fill"
        tint: AppTheme.warningSymbol
    }
    Text {
        Layout.fillWidth: true
        text: notice.text
        wrapMode: Text.Wrap
        color: AppTheme.primaryText
    }
}
