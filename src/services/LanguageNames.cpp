#include "LanguageNames.h"

#include <unicode/uloc.h>

#include <array>
#include <cstring>

const QStringList &twoLetterISOLanguageCodes()
{
    static const QStringList codes = [] {
        QStringList list;
        for (const char *const *code = uloc_getISOLanguages(); *code; ++code) {
            if (std::strlen(*code) == 2)
                list.append(QString::fromLatin1(*code));
        }
        list.sort();
        return list;
    }();
    return codes;
}

std::optional<QString> languageDisplayName(const QString &code, const QLocale &locale)
{
    // The C locale has no names of its own; ICU would answer from its default locale.
    if (code.isEmpty() || locale.language() == QLocale::C)
        return std::nullopt;
    std::array<UChar, 160> buffer{};
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = uloc_getDisplayLanguage(code.toLatin1().constData(), locale.name().toLatin1().constData(),
                                                   buffer.data(), static_cast<int32_t>(buffer.size()), &status);
    if (U_FAILURE(status) || length <= 0 || length > static_cast<int32_t>(buffer.size()))
        return std::nullopt;
    const QString name = QString::fromUtf16(reinterpret_cast<const char16_t *>(buffer.data()), length);
    // Without data ICU echoes the code back.
    if (name.compare(code, Qt::CaseInsensitive) == 0)
        return std::nullopt;
    return name;
}
