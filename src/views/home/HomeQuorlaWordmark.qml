import QtQuick
import QtQuick.Layouts
import Quorla.Views

// The product's name beside its waveform.
RowLayout {
    spacing: 10
    Accessible.role: Accessible.Heading
    Accessible.name: "Quorla"

    Rectangle {
        implicitWidth: 40
        implicitHeight: 40
        radius: 10
        color: AppTheme.accentMutedBackground
        SymbolImage { anchors.centerIn: parent; symbol: "waveform.mid"; size: 24; tint: AppTheme.accent }
    }
    Text {
        text: "Quorla"
        color: AppTheme.heroTitle
        font.pixelSize: 30
        font.weight: Font.Bold
    }
}
