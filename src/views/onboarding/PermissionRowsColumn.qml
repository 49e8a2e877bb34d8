import QtQuick
import QtQuick.Layouts
import Quorla.Views

// The microphone, keyboard and accessibility rows, recomputed as the model changes.
ColumnLayout {
    id: column
    required property QtObject presenter

    Layout.fillWidth: true
    spacing: 10

    Repeater {
        model: column.presenter.permissionRows
        delegate: ColumnLayout {
            required property var modelData
            required property int index
            Layout.fillWidth: true
            Rectangle { Layout.fillWidth: true; implicitHeight: 1; color: AppTheme.border }
            OnboardingPermissionRow {
                objectName: "permissionRow" + index
                title: modelData.title
                detail: modelData.detail
                statusText: modelData.statusText
                tone: modelData.tone
                buttonTitle: modelData.buttonTitle
                isProminent: modelData.isProminent
                onActionRequested: column.presenter.performRowAction(index)
            }
        }
    }
}
