#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korvane {

/// What a tool tells about one of its parameters. Texts are in the local 8-bit encoding.
struct BasicParameterInfo
{
    enum Kind : int {
        Integer = 0,
        Float = 1,
        Boolean = 2,
        Enumeration = 4,
    };

    std::string name; ///< lower case with underscores
    std::string description; ///< one sentence, shown as a tooltip
    int kind = Integer; ///< one of Kind; users ignore other values
};

struct IntParameterInfo : BasicParameterInfo
{
    std::int32_t minimum = 0;
    std::int32_t maximum = 0;
    std::int32_t value = 0;
    std::string unit;
};

struct FloatParameterInfo : BasicParameterInfo
{
    float minimum = 0;
    float maximum = 0;
    float value = 0;
    std::string unit;
};

struct BoolParameterInfo : BasicParameterInfo
{
    bool value = false;
};

struct EnumParameterInfo : BasicParameterInfo
{
    std::vector<std::string> options; ///< the first one is the default
};

} // namespace korvane
