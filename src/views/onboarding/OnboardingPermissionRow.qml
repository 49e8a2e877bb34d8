import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// One permission: its state and the button that fixes it.
RowLayout {
    id: row
    property string title
    property string detail
    property string statusText
    property string tone
    property string buttonTitle
    property bool isProminent
    signal actionRequested()

    Layout.fillWidth: true
    spacing: 12
    Accessible.role: Accessible.Grouping
    Accessible.name: title + ": " + statusText

    ColumnLayout {
        Layout.fillWidth: true
        spacing: 4
        RowLayout {
            spacing: 8
            Text { text: row.title; color: AppTheme.primaryText; font.weight: Font.DemiBold }
            StatusPill { objectName: "statusPill"; text: row.statusText; tone: row.tone }
        }
        Text {
            objectName: "detail"
            Layout.fillWidth: true
            text: row.detail
            color: AppTheme.secondaryText
            wrapMode: Text.Wrap
        }
    }
    Button {
        objectName: "actionButton"
        text: row.buttonTitle
        highlighted: row.isProminent
        Accessible.name: text
        Accessible.description: row.title
        onClicked: row.actionRequested()
    }
}
