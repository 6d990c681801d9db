#include "camera/recording/recordingbackend.h"

#include "camera/recording/apsvideoreader.h"
#include "camera/recording/rawfilereader.h"
#include "camera/recording/videomark.h"

#include <QDebug>

namespace korvane::recording {

std::unique_ptr<DvsFileReader> RecordingBackend::createDvsFileReader(const std::string& path)
{
    QString error;
    auto reader = RawFileReader::open(path, error);
    if (!reader)
        qWarning().noquote().nospace()
            << QString::fromLocal8Bit(path.c_str()) << ": is not a recording that can be read: " << error;
    return reader;
}

std::unique_ptr<ApsFileReader> RecordingBackend::createApsFileReader(const std::string& path)
{
    QString error;
    auto reader = ApsVideoReader::open(path, error);
    if (!reader)
        qWarning().noquote().nospace()
            << QString::fromLocal8Bit(path.c_str()) << ": is no video that can be read: " << error;
    return reader;
}

bool RecordingBackend::isExportedVideo(const std::string& path)
{
    return isMarkedVideo(QString::fromLocal8Bit(path.c_str()));
}

} // namespace korvane::recording
