#pragma once

#include <QCoreApplication>

class Config;

/// What the Setting and Help menus ask the user. GUI thread.
class MenuActions
{
    Q_DECLARE_TR_FUNCTIONS(MenuActions)

public:
    /// Asks whether to open the maker's web site in the browser, and does.
    static void askAboutUs();
    /// Asks whether to switch the interface language, which takes a restart; stores it and restarts when told
    /// to.
    static void askLanguageSwitch(Config& config);
};
