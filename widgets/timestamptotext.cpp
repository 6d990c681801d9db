#include "widgets/timestamptotext.h"

QString timestampToText(uint64_t us)
{
    constexpr uint64_t second = 1'000'000;
    constexpr uint64_t minute = 60 * second;
    const QLatin1Char zero('0');
    return QStringLiteral("%1:%2:%3")
        .arg(us / minute, 2, 10, zero)
        .arg(us / second % 60, 2, 10, zero)
        .arg(us % second, 6, 10, zero);
}
