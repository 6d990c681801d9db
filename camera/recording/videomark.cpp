#include "camera/recording/videomark.h"

#include "camera/recording/videoinput.h"

namespace korvane::recording {

bool isMarkedVideo(const QString& path)
{
    VideoInput input(path);
    QString error;
    return input.open(error) && input.comment() == exportedVideoMark;
}

} // namespace korvane::recording
