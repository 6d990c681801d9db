#pragma once

/// How the application's windows are made; before the application object exists. GUI thread.
void setApplicationAttributes();
/// What the system shows of the application: its name and version, and the icon of its windows. GUI thread,
/// once the application object exists.
void nameApplication();
void setApplicationIcon();
