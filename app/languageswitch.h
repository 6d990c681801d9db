#pragma once

#include <QCoreApplication>
#include <QString>

#include <functional>

class Config;

/// Switches the interface between English and Chinese, which takes a restart. GUI thread.
class LanguageSwitch
{
    Q_DECLARE_TR_FUNCTIONS(LanguageSwitch)

public:
    /// Starts a new instance of the program at this path that outlives this one; whether it could.
    using Starter = std::function<bool(const QString& program)>;

    /// `settings` outlives this.
    explicit LanguageSwitch(Config& settings, Starter startProgram = startDetached);

    /// Asks; on "Restart" stores the other language, closes all windows and starts the program anew.
    void ask() const;

    /// Starts the program at this path without arguments, in this one's working directory.
    static bool startDetached(const QString& program);

private:
    Config& config;
    Starter starter;
};
