// The OpenAI API key.
#include "AppModel.h"

#include "models/QuorlaError.h"

void AppModel::saveAPIKey() {}

void AppModel::clearAPIKey() {}

QString AppModel::validatedAPIKey()
{
    const QString draft = m_apiKeyDraft.trimmed();
    if (!draft.isEmpty())
        return draft;
    throw QuorlaError(QuorlaError::Kind::missingAPIKey);
}

void AppModel::loadStoredAPIKeyMetadata() {}
