#pragma once

#include "platform/ApplicationHandle.h"

// The application a transcript is typed into.
struct TextInsertionTarget {
    ApplicationHandlePtr application;
};
