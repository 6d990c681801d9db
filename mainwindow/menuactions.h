#pragma once

#include <QCoreApplication>

class QWidget;

/// The dialogs behind the Setting and Help menus. GUI thread.
class MenuActions
{
    Q_DECLARE_TR_FUNCTIONS(MenuActions)

public:
    /// Asks whether to open the maker's web site in the browser, and does.
    static void askAboutUs();
    /// Runs the general settings; returns when they are closed. No parent for null.
    static void changeGeneralSettings(QWidget* parent);
};
