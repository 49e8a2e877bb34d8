#pragma once

#include "views/common/ModelPresenter.h"

#include <QString>
#include <QStringList>
#include <QVariantList>

// The Settings page's pickers and the service address. Every change is written
// through the model (or the preferences store for the address) at once.
class SettingsPresenter : public ModelPresenter
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QStringList translationChoices READ translationChoices CONSTANT)
    Q_PROPERTY(int translationIndex READ translationIndex WRITE setTranslationIndex NOTIFY translationChanged)
    Q_PROPERTY(QStringList transcriptionModeChoices READ transcriptionModeChoices CONSTANT)
    Q_PROPERTY(int transcriptionModeIndex READ transcriptionModeIndex WRITE setTranscriptionModeIndex NOTIFY transcriptionModeChanged)
    Q_PROPERTY(QStringList triggerChoices READ triggerChoices CONSTANT)
    Q_PROPERTY(int triggerIndex READ triggerIndex WRITE setTriggerIndex NOTIFY triggerChanged)
    Q_PROPERTY(QString desktopShortcutsNote READ desktopShortcutsNote NOTIFY triggerChanged)
    Q_PROPERTY(QString serviceAddress READ serviceAddress WRITE setServiceAddress NOTIFY serviceAddressChanged)
    Q_PROPERTY(QString serviceAddressMessage READ serviceAddressMessage NOTIFY serviceAddressChanged)

public:
    explicit SettingsPresenter(QObject *parent = nullptr);

    // "Original language", then the catalog's languages by name.
    [[nodiscard]] QStringList translationChoices() const;
    [[nodiscard]] int translationIndex() const;
    void setTranslationIndex(int index);
    [[nodiscard]] QStringList transcriptionModeChoices() const;
    [[nodiscard]] int transcriptionModeIndex() const;
    void setTranscriptionModeIndex(int index);
    [[nodiscard]] QStringList triggerChoices() const;
    [[nodiscard]] int triggerIndex() const;
    void setTriggerIndex(int index);
    // Where the desktop's own shortcuts trigger dictation instead of the key above; while
    // they do, the chords it bound.
    [[nodiscard]] QString desktopShortcutsNote() const;
    // The "apiBaseURL" preference; empty means the OpenAI default.
    [[nodiscard]] QString serviceAddress() const;
    void setServiceAddress(const QString &address);
    // Why the address cannot be used, or that the environment overrides it; or empty.
    [[nodiscard]] QString serviceAddressMessage() const;

Q_SIGNALS:
    void translationChanged();
    void transcriptionModeChanged();
    void triggerChanged();
    void serviceAddressChanged();

protected:
    void observe(AppModel &model) override;

private:
    QStringList m_translationCodes; // parallel to translationChoices; "" first
    QStringList m_translationNames;
};
