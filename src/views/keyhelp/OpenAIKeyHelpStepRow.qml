import QtQuick
import QtQuick.Layouts
import Quorla.Views

// One numbered step of getting a key.
RowLayout {
    id: row
    property int number
    property string title
    property string detail

    Layout.fillWidth: true
    spacing: 12
    Accessible.role: Accessible.StaticText
    Accessible.name: number + ". " + title + ". " + detail

    Rectangle {
        Layout.alignment: Qt.AlignTop
        implicitWidth: 24
        implicitHeight: 24
        radius: 12
        color: AppTheme.accentMutedBackground
        Text {
            anchors.centerIn: parent
            text: row.number
            color: AppTheme.accent
            font.pixelSize: 12
            font.weight: Font.DemiBold
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2
        Text { text: row.title; color: AppTheme.primaryText; font.weight: Font.DemiBold }
        Text { Layout.fillWidth: true; text: row.detail; color: AppTheme.secondaryText; wrapMode: Text.Wrap }
    }
}
