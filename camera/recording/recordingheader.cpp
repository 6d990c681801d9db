#include "camera/recording/recordingheader.h"

#include "camera/recording/rawheader.h"

#include <QDateTime>
#include <QString>

#include <algorithm>
#include <array>
#include <string_view>

namespace korvane::recording {

namespace {

/// Keys that the writer states itself, and those of a source's time base, which a copy does not keep.
constexpr std::array<std::string_view, 10> ownKeys{"date",       "Date",          "evt", "format", "geometry",
                                                   "endianness", "serial_number", "t0",  "T0",     "end"};

std::string presentDate()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toStdString();
}

/// One line of a header. A control character would end it early.
std::string line(std::string_view key, std::string_view value)
{
    std::string text = "% " + std::string(key);
    if (!value.empty())
        text += ' ' + std::string(value);
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    text.resize(std::min(text.size(), RawHeader::maximumLine));
    return text + '\n';
}

} // namespace

RecordingHead headOfNow(Geometry geometry, const std::string& serial)
{
    return {geometry, serial, presentDate(), {}};
}

RecordingHead headOfCopy(const RawHeader& source, Geometry geometry)
{
    const auto capital = source.value("Date");
    const auto date = source.value("date").value_or(capital.value_or(std::string_view()));
    RecordingHead head{geometry, source.serial, date.empty() ? presentDate() : std::string(date), {}};
    std::copy_if(source.entries.begin(), source.entries.end(), std::back_inserter(head.others),
                 [](const auto& entry) {
                     return std::find(ownKeys.begin(), ownKeys.end(), entry.first) == ownKeys.end();
                 });
    return head;
}

std::vector<std::uint8_t> recordingHeader(const RecordingHead& head)
{
    const std::string width = std::to_string(head.geometry.width);
    const std::string height = std::to_string(head.geometry.height);
    std::string text = line("date", head.date) + line("evt", "3.0")
        + line("format", "EVT3;height=" + height + ";width=" + width)
        + line("geometry", width + "x" + height);
    if (!head.serial.empty())
        text += line("serial_number", head.serial);
    const std::string end = line("end", {});
    for (const auto& [key, value] : head.others) {
        const std::string further = line(key, value);
        // A longer header would be taken for words.
        if (text.size() + further.size() + end.size() <= RawHeader::maximumSize)
            text += further;
    }
    text += end;
    return {text.begin(), text.end()};
}

} // namespace korvane::recording
