#include "DictionaryPresenter.h"

#include "app/AppModel.h"
#include "models/CustomDictionary.h"

void DictionaryPresenter::observe(AppModel &model)
{
    connect(&model, &AppModel::customDictionaryEntriesChanged, this, &DictionaryPresenter::entriesChanged);
    // Bindings read before the model arrived are stale now.
    Q_EMIT entriesChanged();
}

bool DictionaryPresenter::canAddTerm(const QString &term, const QString &replacement, bool usesReplacement)
{
    if (!normalizedCustomDictionaryText(term))
        return false;
    return !usesReplacement || normalizedCustomDictionaryText(replacement).has_value();
}

QString DictionaryPresenter::summaryText(qsizetype count)
{
    if (count == 1)
        return QStringLiteral("1 saved");
    return QStringLiteral("%1 saved").arg(count);
}

void DictionaryPresenter::setTermDraft(const QString &text)
{
    if (m_termDraft == text)
        return;
    m_termDraft = text;
    Q_EMIT draftsChanged();
}

void DictionaryPresenter::setReplacementDraft(const QString &text)
{
    if (m_replacementDraft == text)
        return;
    m_replacementDraft = text;
    Q_EMIT draftsChanged();
}

void DictionaryPresenter::setUsesReplacement(bool on)
{
    if (m_usesReplacement == on)
        return;
    m_usesReplacement = on;
    Q_EMIT draftsChanged();
}

bool DictionaryPresenter::canAddTerm() const
{
    return canAddTerm(m_termDraft, m_replacementDraft, m_usesReplacement);
}

QString DictionaryPresenter::summaryText() const
{
    return summaryText(model() ? model()->customDictionaryEntries().size() : 0);
}

QVariantList DictionaryPresenter::entries() const
{
    QVariantList rows;
    if (!model())
        return rows;
    for (const auto &entry : model()->customDictionaryEntries())
        rows.append(QVariantMap{
            {QStringLiteral("term"), entry.term},
            {QStringLiteral("replacement"), entry.replacement.value_or(QString())},
            {QStringLiteral("hasReplacement"), entry.replacement.has_value()},
        });
    return rows;
}

bool DictionaryPresenter::hasEntries() const
{
    return model() && !model()->customDictionaryEntries().isEmpty();
}

bool DictionaryPresenter::addTerm()
{
    if (!model() || !canAddTerm())
        return false;
    const std::optional<QString> replacement =
        m_usesReplacement ? std::optional(m_replacementDraft) : std::nullopt;
    if (!model()->addCustomDictionaryEntry(m_termDraft, replacement, m_usesReplacement))
        return false;
    m_termDraft.clear();
    m_replacementDraft.clear();
    Q_EMIT draftsChanged();
    Q_EMIT termAdded();
    return true;
}

void DictionaryPresenter::removeEntry(int index)
{
    if (!model() || index < 0 || index >= model()->customDictionaryEntries().size())
        return;
    model()->removeCustomDictionaryEntry(model()->customDictionaryEntries().at(index));
}

void DictionaryPresenter::clearAll()
{
    if (model())
        model()->clearCustomDictionary();
}
