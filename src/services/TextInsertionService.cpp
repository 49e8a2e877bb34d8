#include "TextInsertionService.h"

#include "models/QuorlaError.h"
#include "platform/Accessibility.h"
#include "platform/Clipboard.h"
#include "platform/KeySynthesizer.h"
#include "services/PasteboardSnapshot.h"
#include "services/TextReplacement.h"

#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>

#include <QCoro/QCoroFuture>
#include <QCoro/QCoroTimer>
#include <QPromise>

Q_LOGGING_CATEGORY(lcInsertion, "quorla.insertion", QtWarningMsg)

namespace {

QCoro::Task<void> sleepPrecisely(std::chrono::milliseconds duration)
{
    if (duration.count() <= 0)
        co_return;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    timer.setSingleShot(true);
    timer.start(duration);
    co_await timer;
}

// A route that needs the desktop's consent asks here, before the clipboard is touched.
QCoro::Task<bool> keysReady(KeySynthesizer &keys)
{
    auto ready = std::make_shared<bool>(false);
    auto promise = std::make_shared<QPromise<void>>();
    promise->start();
    const QFuture<void> answered = promise->future();
    // A callback dropped unanswered cancels the future, which ends the wait as well.
    keys.prepare([ready, promise = std::move(promise)](bool keysReady) {
        *ready = keysReady;
        promise->finish();
    });
    co_await answered;
    co_return *ready;
}

QString bringToFrontMessage(const ApplicationHandle &application)
{
    const QString name = application.localizedName().value_or(QStringLiteral("the target app"));
    return QStringLiteral("Couldn't bring ") + name + QStringLiteral(" back to the front.");
}

bool replaceSelection(const QString &text, AccessibleElement &element, bool replaceTriggerSpace)
{
    if (!element.isValueSettable() || !element.isSelectionSettable())
        return false;
    const std::optional<QString> value = element.value();
    const std::optional<TextRange> selected = element.selectedRange();
    if (!value || !selected)
        return false;
    const std::optional<TextRange> range = replacementRange(*value, *selected, replaceTriggerSpace);
    if (!range || !element.replaceText(*range, text))
        return false;
    // The caret after the transcript, so the user can keep typing; a refusal costs nothing.
    element.setSelection(TextRange{range->location + text.size(), 0});
    return true;
}

} // namespace

TextInsertionService::TextInsertionService(std::shared_ptr<Accessibility> accessibility,
                                           std::shared_ptr<KeySynthesizer> keys,
                                           std::shared_ptr<Clipboard> clipboard, TextInsertionTimings timings)
    : m_accessibility(std::move(accessibility))
    , m_keys(std::move(keys))
    , m_clipboard(std::move(clipboard))
    , m_timings(timings)
{
}

QCoro::Task<void> TextInsertionService::insert(QString text, TextInsertionTarget target, bool restoreClipboard,
                                               bool replaceTriggerSpace)
{
    if (!co_await m_accessibility->isProcessTrusted()) {
        qCWarning(lcInsertion) << "not inserted: accessibility is not granted";
        throw QuorlaError(QuorlaError::Kind::accessibilityPermissionDenied);
    }
    const ApplicationHandlePtr application = target.application;
    if (!application || application->processIdentifier() == 0) {
        qCWarning(lcInsertion) << "not inserted: the target has quit";
        throw QuorlaError::textInsertionFailed(QStringLiteral("The target app is no longer running."));
    }
    // Usually the user never left the target: then activating it and waiting buys nothing.
    if (!application->isFrontmost()) {
        if (!application->activate()) {
            qCWarning(lcInsertion) << "not inserted: the target could not be brought to the front";
            throw QuorlaError::textInsertionFailed(bringToFrontMessage(*application));
        }
        co_await sleepPrecisely(m_timings.activationSettle);
    }

    bool deleteTriggerSpace = false;
    KeySynthesizer::PasteShortcut shortcut = application->pasteShortcut();
    if (std::unique_ptr<AccessibleElement> element = m_accessibility->focusedElement(application->processIdentifier())) {
        if (shortcut == KeySynthesizer::PasteShortcut::controlV && element->isTerminal())
            shortcut = KeySynthesizer::PasteShortcut::controlShiftV;
        if (replaceTriggerSpace) {
            const std::optional<QString> value = element->value();
            const std::optional<TextRange> selected = element->selectedRange();
            deleteTriggerSpace = value && selected && hasTriggerSpaceBeforeSelection(*value, *selected);
        }
        if (replaceSelection(text, *element, replaceTriggerSpace)) {
            qCInfo(lcInsertion) << "inserted through accessibility";
            co_return;
        }
        qCInfo(lcInsertion) << "focused element takes no text through accessibility: pasting";
    } else {
        qCInfo(lcInsertion) << "no focused accessible element: pasting";
    }
    co_await paste(std::move(text), application, restoreClipboard, deleteTriggerSpace, shortcut);
}

QCoro::Task<void> TextInsertionService::paste(QString text, ApplicationHandlePtr application, bool restoreClipboard,
                                              bool deleteTriggerSpace, KeySynthesizer::PasteShortcut shortcut)
{
    if (!co_await keysReady(*m_keys))
        throw QuorlaError::textInsertionFailed(QStringLiteral("Couldn't synthesize the paste shortcut."));
    const std::shared_ptr<Clipboard> clipboard = m_clipboard;
    QList<Clipboard::Selection> selections{Clipboard::Selection::clipboard};
    // Shift+Insert pastes the primary selection: it carries the transcript too.
    if (shortcut == KeySynthesizer::PasteShortcut::shiftInsert && clipboard->hasPrimarySelection())
        selections.append(Clipboard::Selection::primary);
    QList<std::pair<Clipboard::Selection, PasteboardSnapshot>> snapshots;
    for (const Clipboard::Selection selection : std::as_const(selections)) {
        if (restoreClipboard) {
            PasteboardSnapshot captured = co_await PasteboardSnapshot::capture(clipboard, selection);
            snapshots.append({selection, std::move(captured)});
        }
        if (!clipboard->writeText(selection, text, true))
            throw QuorlaError::textInsertionFailed(QStringLiteral("Couldn't write the transcript to the clipboard."));
    }

    if (!application->activate())
        throw QuorlaError::textInsertionFailed(bringToFrontMessage(*application));
    co_await sleepPrecisely(m_timings.activationSettle);
    co_await waitForModifiersReleased();

    if (deleteTriggerSpace) {
        if (!m_keys->sendBackspace())
            throw QuorlaError::textInsertionFailed(
                QStringLiteral("Couldn't remove the trigger space before pasting."));
        co_await sleepPrecisely(m_timings.backspaceSettle);
    }
    if (!m_keys->sendPasteShortcut(shortcut))
        throw QuorlaError::textInsertionFailed(QStringLiteral("Couldn't synthesize the paste shortcut."));
    const char *const shortcutNames[] = {"Ctrl+V", "Ctrl+Shift+V", "Shift+Insert"};
    qCInfo(lcInsertion) << "pasted with" << shortcutNames[int(shortcut)]
                        << (deleteTriggerSpace ? "after removing the trigger space" : "");

    if (snapshots.isEmpty())
        co_return;
    co_await sleepPrecisely(m_timings.clipboardRestoreDelay);
    for (const auto &[selection, snapshot] : std::as_const(snapshots)) {
        const char *const name = selection == Clipboard::Selection::primary ? "primary selection" : "clipboard";
        if (clipboard->holdsText(selection, text)) {
            snapshot.restore(*clipboard, selection);
            qCInfo(lcInsertion) << name << "restored";
        } else {
            qCInfo(lcInsertion) << name << "changed meanwhile: not restored";
        }
    }
}

QCoro::Task<void> TextInsertionService::waitForModifiersReleased()
{
    // Past the limit the keys go out anyway: a stuck modifier must not keep the transcript away.
    const auto step = std::max(m_timings.modifierPollInterval, std::chrono::milliseconds{1});
    for (auto waited = std::chrono::milliseconds{0};
         waited < m_timings.modifierReleaseLimit && m_keys->isAnyModifierPressed(); waited += step)
        co_await sleepPrecisely(step);
}
