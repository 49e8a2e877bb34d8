import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// Exact terms and replacement rules: add, review, remove.
DetailPage {
    id: page
    required property QtObject appModel
    title: "Dictionary"
    subtitle: "Terms Quorla should keep exact, with optional replacements."

    DictionaryPresenter {
        id: dictionary
        objectName: "dictionaryPresenter"
        model: page.appModel
        onTermAdded: termField.forceActiveFocus()
    }

    SectionCard {
        title: "Add term"
        detail: "Names, products, companies, emails, or custom replacements."

        Switch {
            objectName: "useReplacementSwitch"
            text: "Use replacement"
            checked: dictionary.usesReplacement
            Accessible.name: text
            onToggled: dictionary.usesReplacement = checked
        }
        RowLayout {
            Layout.fillWidth: true
            spacing: 10
            TextField {
                id: termField
                objectName: "termField"
                Layout.fillWidth: true
                placeholderText: "Spoken term"
                text: dictionary.termDraft
                Accessible.name: "Spoken term"
                onTextEdited: dictionary.termDraft = text
                onAccepted: dictionary.addTerm()
            }
            SymbolImage {
                visible: dictionary.usesReplacement
                symbol: "arrow.turn.down.right"
                tint: AppTheme.secondaryText
            }
            TextField {
                objectName: "replacementField"
                Layout.fillWidth: true
                visible: dictionary.usesReplacement
                placeholderText: "Replacement output"
                text: dictionary.replacementDraft
                Accessible.name: "Replacement output"
                onTextEdited: dictionary.replacementDraft = text
                onAccepted: dictionary.addTerm()
            }
            Button {
                objectName: "addTermButton"
                text: "Add"
                enabled: dictionary.canAddTerm
                highlighted: true
                Accessible.name: "Add"
                onClicked: dictionary.addTerm()
            }
        }
        Text {
            Layout.fillWidth: true
            text: "Entries are applied during transcription and cleanup. Turn on replacement to map one spoken term to another."
            color: AppTheme.secondaryText
            wrapMode: Text.Wrap
        }
    }

    SectionCard {
        title: "Saved entries"
        detail: "Review or remove anything Quorla should no longer prioritize."

        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            Text { text: "Custom dictionary"; color: AppTheme.primaryText; font.weight: Font.DemiBold }
            StatusPill { objectName: "dictionarySummaryPill"; text: dictionary.summaryText; tone: "active" }
            Item { Layout.fillWidth: true }
            Button {
                objectName: "clearDictionaryButton"
                text: "Clear All"
                enabled: dictionary.hasEntries
                Accessible.name: "Clear All"
                onClicked: dictionary.clearAll()
            }
        }
        Text {
            objectName: "emptyDictionaryText"
            Layout.fillWidth: true
            visible: !dictionary.hasEntries
            text: "No entries yet. Add a term or a replacement rule and Quorla will apply it during dictation."
            color: AppTheme.secondaryText
            wrapMode: Text.Wrap
        }
        Repeater {
            model: dictionary.entries
            delegate: ColumnLayout {
                required property var modelData
                required property int index
                Layout.fillWidth: true
                Rectangle { Layout.fillWidth: true; implicitHeight: 1; color: AppTheme.border; visible: index > 0 }
                DictionaryEntryRow {
                    objectName: "dictionaryRow" + index
                    term: modelData.term
                    replacement: modelData.replacement
                    hasReplacement: modelData.hasReplacement
                    onRemoveRequested: dictionary.removeEntry(index)
                }
            }
        }
    }
}
