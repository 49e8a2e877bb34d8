#pragma once

#include "views/common/ModelPresenter.h"

#include <QString>
#include <QVariantList>

// The Dictionary page's drafts and list: the fields keep their text until the model
// accepts an entry, so a refused add loses nothing the user typed.
class DictionaryPresenter : public ModelPresenter
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString termDraft READ termDraft WRITE setTermDraft NOTIFY draftsChanged)
    Q_PROPERTY(QString replacementDraft READ replacementDraft WRITE setReplacementDraft NOTIFY draftsChanged)
    Q_PROPERTY(bool usesReplacement READ usesReplacement WRITE setUsesReplacement NOTIFY draftsChanged)
    Q_PROPERTY(bool canAddTerm READ canAddTerm NOTIFY draftsChanged)
    Q_PROPERTY(QString summaryText READ summaryText NOTIFY entriesChanged)
    Q_PROPERTY(QVariantList entries READ entries NOTIFY entriesChanged)
    Q_PROPERTY(bool hasEntries READ hasEntries NOTIFY entriesChanged)

public:
    using ModelPresenter::ModelPresenter;

    // The term normalizes to some text and, with the switch on, so does the replacement.
    static bool canAddTerm(const QString &term, const QString &replacement, bool usesReplacement);
    // "1 saved", "0 saved", "12 saved".
    static QString summaryText(qsizetype count);

    [[nodiscard]] const QString &termDraft() const { return m_termDraft; }
    void setTermDraft(const QString &text);
    [[nodiscard]] const QString &replacementDraft() const { return m_replacementDraft; }
    void setReplacementDraft(const QString &text);
    [[nodiscard]] bool usesReplacement() const { return m_usesReplacement; }
    void setUsesReplacement(bool on);
    [[nodiscard]] bool canAddTerm() const;
    [[nodiscard]] QString summaryText() const;
    // One map per entry, in model order: term, replacement, hasReplacement.
    [[nodiscard]] QVariantList entries() const;
    [[nodiscard]] bool hasEntries() const;

    // Hands the drafts to the model; empties them only when the entry was taken.
    Q_INVOKABLE bool addTerm();
    Q_INVOKABLE void removeEntry(int index);
    Q_INVOKABLE void clearAll();

Q_SIGNALS:
    void draftsChanged();
    void entriesChanged();
    // The fields were emptied after an add; the term field takes the focus again.
    void termAdded();

protected:
    void observe(AppModel &model) override;

private:
    QString m_termDraft;
    QString m_replacementDraft;
    bool m_usesReplacement = false;
};
