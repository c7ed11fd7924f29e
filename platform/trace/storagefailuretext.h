#pragma once

#include "tracestore.h"

/// What happened and what to do about it, in words for the user.
QString storageFailureText(const TraceStore::Failure &failure);
