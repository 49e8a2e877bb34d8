#pragma once

#include "services/HttpExchange.h"

// Checks a finished reply of the OpenAI API before its body is decoded. Throws
// QuorlaError: invalidAPIResponse for a reply that is not HTTP, apiFailure with the
// service's own message (or the status) for any status outside 200 to 299.
void validateOpenAIReply(const HttpReply &reply);
