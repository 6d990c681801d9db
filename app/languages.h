#pragma once

class QString;

/// Installs the embedded translation into the application for the rest of the process: Chinese for "zh",
/// English for anything else. GUI thread, once the application object exists. Returns whether it is in force;
/// a failure is logged.
bool loadLanguage(const QString& language);
