import QtQuick
import QtQuick.Layouts
import Quorla.Views

// Two key caps joined by "+", as in trigger + Space; one cap when the second is empty
// (a chord the desktop binds on its own).
RowLayout {
    property string first
    property string second

    spacing: 6
    Accessible.role: Accessible.StaticText
    Accessible.name: first + " + " + second

    ShortcutBadge { text: parent.first }
    Text {
        visible: parent.second !== ""
        text: "+"
        color: AppTheme.secondaryText
        font.pixelSize: 12
        font.weight: Font.DemiBold
    }
    ShortcutBadge { visible: parent.second !== ""; text: parent.second }
}
