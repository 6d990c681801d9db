#pragma once

/// Makes the embedded "Noto Sans SC Medium" the application's font and lets it stand in for the other
/// families that the style sheets name. GUI thread, once the application object exists. Returns false, and
/// logs, if the font cannot be loaded; the platform's font then stays.
bool loadApplicationFont();
