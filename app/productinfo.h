#pragma once

#include <QLatin1StringView>
#include <QtGlobal>

/// What the product says about itself. Constants; any thread may read them.
namespace productinfo {

/// The version of the build, stated once: in the project line of the top CMakeLists.txt.
inline constexpr QLatin1StringView version(KORVANE_VERSION);

inline constexpr QLatin1StringView webAddress("https://www.korvane.example");

/// UTF-8, to be shown through InitDialog's tr().
inline constexpr const char* copyrightLine
    = QT_TRANSLATE_NOOP("InitDialog", "© 2024–2026 Korvane Imaging. All rights reserved.");

} // namespace productinfo
