#pragma once

class QString;

/// Installs the embedded translation into the application for the rest of the process: Chinese for "zh",
/// English for anything else; for Chinese also that of Qt's own texts, where the build found it. GUI thread,
/// once the application object exists. Returns whether the program's texts are in force; a failure is logged.
bool loadLanguage(const QString& language);
