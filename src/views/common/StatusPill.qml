import QtQuick
import Quorla.Views

// A capsule that tells a state: "success", "warning" or "active".
Rectangle {
    id: pill
    property string text
    property string tone: "success"

    implicitWidth: label.implicitWidth + 16
    implicitHeight: label.implicitHeight + 10
    radius: height / 2
    color: AppTheme.toneBackground(tone)
    border.width: 1
    border.color: AppTheme.toneBorder(tone)
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Text {
        id: label
        anchors.centerIn: parent
        text: pill.text
        color: AppTheme.toneText(pill.tone)
        font.pixelSize: 12
        font.weight: Font.DemiBold
    }
}
