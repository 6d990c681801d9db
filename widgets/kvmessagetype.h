#pragma once

#include <QMetaType>

/// The kinds of toast; crosses threads in signals. Any other number looks like Success.
enum KvMessageType : int {
    Success = 0,
    Warning = 1,
    Error = 2,
};

Q_DECLARE_METATYPE(KvMessageType)
