#pragma once

#include <QString>

#include <functional>

/// An `.mp4` as other programs make it: pictures stored out of order, 25 a second. Picture k is
/// of the one luma that `luma` tells. False when it cannot be written.
bool writeForeignVideo(const QString& path, int width, int height, int pictures,
                       const std::function<int(int)>& luma);

/// An `.mp4` with a second of silence and no picture.
bool writeSoundOnly(const QString& path);
