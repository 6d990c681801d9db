#pragma once

#include <QCoreApplication>

/// What the Help menu asks the user. GUI thread.
class MenuActions
{
    Q_DECLARE_TR_FUNCTIONS(MenuActions)

public:
    /// Asks whether to open the maker's web site in the browser, and does.
    static void askAboutUs();
};
