import QtQuick
import Quorla.Views

// A key cap with the key's label.
Rectangle {
    id: badge
    property string text
    property real minWidth: 0

    implicitWidth: Math.max(minWidth, label.implicitWidth + 20)
    implicitHeight: label.implicitHeight + 12
    radius: 6
    color: AppTheme.secondarySurface
    border.width: 1
    border.color: AppTheme.border
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Text {
        id: label
        anchors.centerIn: parent
        text: badge.text
        color: AppTheme.primaryText
        font.pixelSize: 12
        font.weight: Font.DemiBold
    }
}
