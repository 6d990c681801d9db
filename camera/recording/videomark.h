#pragma once

#include <QString>

#include <string_view>

namespace korvane::recording {

/// What stands as the comment in the metadata of every exported video.
inline constexpr std::string_view exportedVideoMark = "Event video exported by KorvaneInsight";

/// Whether the file is a video that bears the mark; false for anything else, unreadable files included. Any
/// thread.
bool isMarkedVideo(const QString& path);

} // namespace korvane::recording
