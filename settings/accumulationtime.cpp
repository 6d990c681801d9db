#include "settings/accumulationtime.h"

#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace {

uint64_t wholePart(float value)
{
    constexpr float edge = 18446744073709551616.0F; // 2^64: the first value the result cannot hold
    if (value >= edge)
        return std::numeric_limits<uint64_t>::max();
    return value > 0.0F ? static_cast<uint64_t>(value) : 0;
}

bool endsWith(const QString& text, QLatin1StringView unit)
{
    return text.endsWith(unit, Qt::CaseInsensitive);
}

} // namespace

bool hasTimeUnit(const QString& text)
{
    return endsWith(text, "ms"_L1) || endsWith(text, "us"_L1);
}

uint64_t parseAccumulationTime(const QString& text)
{
    if (!hasTimeUnit(text))
        return 0;
    const float number = QStringView(text).chopped(2).toFloat();
    return wholePart(endsWith(text, "ms"_L1) ? number * 1000.0F : number);
}

bool isAccumulationTime(uint64_t microseconds)
{
    return microseconds != 0 && microseconds <= 1'000'000;
}
