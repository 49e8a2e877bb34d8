import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Quorla.Views

// Home: how to dictate, the status line, lifetime usage and the recent transcripts.
DetailPage {
    id: page
    required property QtObject appModel
    title: "Quorla"
    showsHeader: false

    HomePresenter { id: home; objectName: "homePresenter"; model: page.appModel }

    HomeQuorlaWordmark {}

    ColumnLayout {
        Layout.fillWidth: true
        spacing: 10
        RowLayout {
            spacing: 10
            ShortcutBadge { text: home.triggerDisplay; minWidth: 44 }
            ShortcutCombinationBadge {
                first: home.toggleFirstKey
                second: home.toggleSecondKey
                Accessible.name: home.toggleDisplay
            }
        }
        Text {
            objectName: "pushToTalkHelp"
            Layout.fillWidth: true
            text: home.pushToTalkHelpText
            color: AppTheme.primaryText
            wrapMode: Text.Wrap
        }
        Text {
            objectName: "statusLine"
            Layout.fillWidth: true
            visible: text.length > 0
            text: page.appModel.statusMessage
            color: AppTheme.secondaryText
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StatusBar
            Accessible.name: text
        }
        InlineNotice {
            objectName: "errorLine"
            Layout.fillWidth: true
            visible: text.length > 0
            text: page.appModel.errorMessage
        }
    }

    SectionCard {
        title: "Quick access"
        RowLayout {
            Layout.fillWidth: true
            spacing: 12
            Button {
                objectName: "recordButton"
                text: home.recordButtonText
                enabled: home.canToggleRecording
                highlighted: page.appModel.isRecording
                Accessible.name: text
                onClicked: home.toggleRecording()
            }
            Item { Layout.fillWidth: true }
            ColumnLayout {
                spacing: 2
                Text {
                    Layout.alignment: Qt.AlignRight
                    text: home.followsInputLanguageText
                    color: AppTheme.secondaryText
                    font.pixelSize: 11
                }
                StatusPill {
                    objectName: "inputLanguagePill"
                    Layout.alignment: Qt.AlignRight
                    text: home.inputLanguageText
                    tone: "active"
                }
            }
        }
    }

    SectionCard {
        title: "Usage"
        detail: "Lifetime totals for completed inserts."
        RowLayout {
            Layout.fillWidth: true
            spacing: 12
            HomeStatisticMetricCard {
                objectName: "charactersMetric"
                title: "Characters"
                value: home.characterCountText
                detail: "Characters include spaces and punctuation."
            }
            HomeStatisticMetricCard { objectName: "wordsMetric"; title: "Words"; value: home.wordCountText }
            HomeStatisticMetricCard {
                objectName: "timeSavedMetric"
                title: "Time saved"
                value: home.estimatedTimeSavedText
            }
        }
        Flow {
            objectName: "noUsageText"
            Layout.fillWidth: true
            visible: !home.hasUsage
            spacing: 6
            Accessible.role: Accessible.StaticText
            Accessible.name: home.noUsageText
            Text { height: hold.height; verticalAlignment: Text.AlignVCenter; text: "No inserts yet. Hold"; color: AppTheme.secondaryText }
            ShortcutBadge { id: hold; text: home.toggleFirstKey }
            Text { height: hold.height; verticalAlignment: Text.AlignVCenter; text: home.noUsageTail; color: AppTheme.secondaryText }
        }
    }

    SectionCard {
        title: "Recent dictation"
        RowLayout {
            Layout.fillWidth: true
            Text { text: "History"; color: AppTheme.primaryText; font.weight: Font.DemiBold }
            StatusPill { objectName: "historySummaryPill"; text: home.transcriptSummaryText; tone: "active" }
            Item { Layout.fillWidth: true }
            Button {
                objectName: "clearHistoryButton"
                text: "Clear"
                enabled: home.transcripts.length > 0
                Accessible.name: "Clear"
                onClicked: home.clearTranscripts()
            }
        }
        Text {
            objectName: "emptyHistoryText"
            visible: home.transcripts.length === 0
            text: "Your next dictation appears here."
            color: AppTheme.secondaryText
        }
        Repeater {
            model: home.transcripts
            delegate: ColumnLayout {
                required property var modelData
                required property int index
                Layout.fillWidth: true
                Rectangle { Layout.fillWidth: true; implicitHeight: 1; color: AppTheme.border; visible: index > 0 }
                TranscriptEntryRow {
                    objectName: "transcriptRow" + index
                    text: modelData.text
                    timeText: modelData.timeText
                    isLatest: modelData.isLatest
                    onCopyRequested: home.copyTranscript(index)
                }
            }
        }
    }
}
