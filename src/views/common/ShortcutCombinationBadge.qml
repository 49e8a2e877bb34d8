import QtQuick
import QtQuick.Layouts
import Quorla.Views

// Two key caps joined by "+", as in trigger + Space.
RowLayout {
    property string first
    property string second

    spacing: 6
    Accessible.role: Accessible.StaticText
    Accessible.name: first + " + " + second

    ShortcutBadge { text: parent.first }
    Text {
        text: "+"
        color: AppTheme.secondaryText
        font.pixelSize: 12
        font.weight: Font.DemiBold
    }
    ShortcutBadge { text: parent.second }
}
