import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// One history entry with its copy action.
RowLayout {
    id: row
    property string text
    property string timeText
    property bool isLatest
    signal copyRequested()

    spacing: 12
    Layout.fillWidth: true

    ColumnLayout {
        Layout.fillWidth: true
        spacing: 4
        RowLayout {
            spacing: 8
            Text { text: row.timeText; color: AppTheme.secondaryText; font.pixelSize: 11 }
            StatusPill { visible: row.isLatest; text: "Latest"; tone: "active" }
        }
        Text {
            Layout.fillWidth: true
            text: row.text
            color: AppTheme.primaryText
            wrapMode: Text.Wrap
            maximumLineCount: 4
            elide: Text.ElideRight
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
    Button {
        text: "Copy"
        icon.source: AppTheme.symbolSource("doc.on.doc", AppTheme.primaryText)
        Accessible.name: "Copy"
        Accessible.description: row.text
        onClicked: row.copyRequested()
    }
}
