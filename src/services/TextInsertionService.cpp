#include "TextInsertionService.h"

#include "models/QuorlaError.h"
#include "platform/Accessibility.h"

TextInsertionService::TextInsertionService(std::shared_ptr<Accessibility> accessibility)
    : m_accessibility(std::move(accessibility))
{
}

QCoro::Task<void> TextInsertionService::insert(QString, TextInsertionTarget target, bool, bool)
{
    if (!m_accessibility->isProcessTrusted())
        throw QuorlaError(QuorlaError::Kind::accessibilityPermissionDenied);
    if (!target.application || target.application->processIdentifier() == 0)
        throw QuorlaError::textInsertionFailed(QStringLiteral("The target app is no longer running."));
    throw QuorlaError::textInsertionFailed(QStringLiteral("Typing into other apps isn't available yet."));
    co_return;
}
