// Catches the exception of a call and returns its message for comparisons.
#pragma once

#include "KException.h"

/// Returns the message of the KException that @p call throws, or "none".
template <typename Call> QString Thrown(Call call)
{
    try {
        call();
    } catch (const KException &e) {
        return e.what();
    }
    return QStringLiteral("none");
}
