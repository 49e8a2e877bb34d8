import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// One saved term, or a rule with the replacement it turns into.
RowLayout {
    id: row
    property string term
    property string replacement
    property bool hasReplacement
    signal removeRequested()

    Layout.fillWidth: true
    spacing: 10

    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2
        Text {
            Layout.fillWidth: true
            text: row.term
            color: AppTheme.primaryText
            font.weight: Font.DemiBold
            elide: Text.ElideRight
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        RowLayout {
            visible: row.hasReplacement
            spacing: 6
            SymbolImage { symbol: "arrow.turn.down.right"; tint: AppTheme.secondaryText; size: 14 }
            Text {
                Layout.fillWidth: true
                text: row.replacement
                color: AppTheme.secondaryText
                elide: Text.ElideRight
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }
    Button {
        text: "Remove"
        Accessible.name: "Remove"
        Accessible.description: row.term
        onClicked: row.removeRequested()
    }
}
