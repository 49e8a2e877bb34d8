import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// The common frame of every page: an optional title and subtitle over a scrolling body.
ScrollView {
    id: page
    property string title
    property string subtitle
    property bool showsHeader: true
    property real pageWidth: 720
    default property alias content: body.data

    contentWidth: availableWidth
    clip: true

    ColumnLayout {
        width: Math.min(page.availableWidth - 56, page.pageWidth)
        x: Math.max(28, (page.availableWidth - width) / 2)
        spacing: 18

        Item { implicitHeight: 10 }
        ColumnLayout {
            visible: page.showsHeader
            spacing: 4
            Text {
                objectName: "pageTitle"
                text: page.title
                color: AppTheme.heroTitle
                font.pixelSize: 26
                font.weight: Font.Bold
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            Text {
                Layout.fillWidth: true
                visible: page.subtitle.length > 0
                text: page.subtitle
                color: AppTheme.secondaryText
                wrapMode: Text.Wrap
            }
        }
        ColumnLayout {
            id: body
            Layout.fillWidth: true
            spacing: 18
        }
        Item { implicitHeight: 18 }
    }
}
