#pragma once

#include "camera/driver/cameratool.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

namespace korvane::simulation {

/// One row of a tool's table. A plain value.
struct ToolParameter
{
    struct Integer
    {
        int minimum = 0;
        int maximum = 0;
        int value = 0;
    };
    struct Real
    {
        float minimum = 0;
        float maximum = 0;
        float value = 0;
    };
    struct Switch
    {
        bool value = false;
    };
    struct Choice
    {
        std::vector<std::string> options; ///< the first one is the default
    };

    std::string name; ///< lower case with underscores
    /// English, one sentence, marked with QT_TRANSLATE_NOOP("CameraTools", ...); told in the user's language.
    const char* description = "";
    std::variant<Integer, Real, Switch, Choice> kind; ///< with range and default
    std::string unit; ///< at most 6 characters
};

/// What the parameters of a tool are set to. A plain value.
class ToolValues
{
public:
    /// `name` is in the table with this type.
    int integer(const std::string& name) const { return std::get<int>(values.at(name)); }
    float real(const std::string& name) const { return std::get<float>(values.at(name)); }
    bool isOn(const std::string& name) const { return std::get<bool>(values.at(name)); }
    const std::string& option(const std::string& name) const
    {
        return std::get<std::string>(values.at(name));
    }

private:
    friend class ParameterTool;
    using Value = std::variant<int, float, bool, std::string>;
    std::map<std::string, Value> values;
};

/// A settings tool over a table of parameters. It keeps what was set and refuses what it does not know, what
/// is of another type, and what lies outside its range; nothing is clamped. Any thread.
class ParameterTool : public CameraTool
{
public:
    /// Gets all values, with the new one among them; false refuses it, and what was set before stays. Runs on
    /// the thread that sets, one call at a time. A tool may outlive its camera: what the hook uses, it owns.
    using Apply = std::function<bool(const ToolValues& wanted)>;

    /// What becomes of a number within its range that the hook refuses.
    enum class Refused {
        Forgotten, ///< nothing
        /// It waits, since it may be the other numbers that do not go with it: the next number that is set is
        /// tried together with those that wait, and they are accepted or refused as one. So numbers that
        /// limit each other can be entered in any order, and true says that all that was entered holds.
        Waiting,
    };

    /// The defaults are in force without a call of `apply`.
    ParameterTool(std::vector<ToolParameter> table, Apply apply, Refused refused = Refused::Forgotten);

    /// Texts are UTF-8, descriptions in the language of the application.
    void getAllParameterInfo(std::map<std::string, BasicParameterInfo>& out) override;
    bool getEnumParameterInfo(std::string name, EnumParameterInfo& out) override;
    /// The values told are those that hold now.
    bool getBoolParameterInfo(std::string name, BoolParameterInfo& out) override;
    bool getFloatParameterInfo(std::string name, FloatParameterInfo& out) override;
    bool getIntParameterInfo(std::string name, IntParameterInfo& out) override;
    bool getBoolParameter(std::string name, bool& value) override;
    bool getIntParameter(std::string name, int& value) override;
    bool setEnumParameter(std::string name, const std::string& value) override;
    bool setBoolParameter(std::string name, const bool& value) override;
    bool setFloatParameter(std::string name, const float& value) override;
    bool setIntParameter(std::string name, const int& value) override;

private:
    template <typename Kind>
    const Kind* find(const std::string& name, BasicParameterInfo* out) const;
    template <typename Value>
    Value current(const std::string& name) const;
    template <typename Value>
    bool set(const std::string& name, const Value& value);
    template <typename Value>
    bool setNumber(const std::string& name, const Value& value);

    std::map<std::string, ToolParameter> parameters;
    const Apply apply;
    const Refused refused;
    mutable std::mutex mutex;
    ToolValues values; // guarded by mutex
    std::map<std::string, ToolValues::Value> waiting; // guarded by mutex
};

} // namespace korvane::simulation
