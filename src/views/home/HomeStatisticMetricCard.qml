import QtQuick
import QtQuick.Layouts
import Quorla.Views

// One lifetime number.
Rectangle {
    id: card
    property string title
    property string value
    property string detail

    Layout.fillWidth: true
    Layout.preferredWidth: 1
    Layout.fillHeight: true
    implicitHeight: column.implicitHeight + 28
    radius: 10
    color: AppTheme.secondarySurface
    Accessible.role: Accessible.StaticText
    Accessible.name: title + ": " + value

    ColumnLayout {
        id: column
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 14
        spacing: 4
        Text { text: card.title; color: AppTheme.secondaryText }
        Text {
            objectName: "metricValue"
            text: card.value
            color: AppTheme.metricValue
            font.pixelSize: 24
            font.weight: Font.Bold
        }
        Text {
            Layout.fillWidth: true
            visible: card.detail.length > 0
            text: card.detail
            color: AppTheme.secondaryText
            font.pixelSize: 11
            wrapMode: Text.Wrap
        }
    }
}
