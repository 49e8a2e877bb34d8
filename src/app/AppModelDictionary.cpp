// The custom dictionary.
#include "AppModel.h"

bool AppModel::addCustomDictionaryEntry(const QString &term, const std::optional<QString> &replacement,
                                        bool replacementEnabled)
{
    Q_UNUSED(term)
    Q_UNUSED(replacement)
    Q_UNUSED(replacementEnabled)
    return false;
}

void AppModel::removeCustomDictionaryEntry(const CustomDictionaryEntry &entry)
{
    Q_UNUSED(entry)
}

void AppModel::clearCustomDictionary() {}

void AppModel::persistCustomDictionaryEntries() {}

QList<CustomDictionaryEntry> AppModel::loadCustomDictionaryEntries() const
{
    return {};
}
