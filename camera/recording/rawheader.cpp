#include "camera/recording/rawheader.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace korvane::recording {

namespace {

constexpr std::string_view blanks(" \t\r\0", 4);

std::string_view trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string lowered(std::string_view text)
{
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

/// A header is text. NUL is let through: some writers leave one at the end of a value.
bool isHeaderText(std::string_view line)
{
    return std::all_of(line.begin(), line.end(), [](unsigned char c) {
        return c >= 0x20 ? c != 0x7F : (c == '\t' || c == '\r' || c == '\0');
    });
}

/// Length of the header line at the start of `text` without what ends it; npos when nothing does. One writer
/// ends lines with NUL instead of a line feed: where a line follows, or the words do, it counts as one.
std::size_t lineLength(std::string_view text)
{
    const auto feed = text.find('\n');
    const auto nul = text.find('\0');
    if (nul >= feed || nul + 1 == feed)
        return feed;
    if (text.substr(nul + 1, 2) == "% " || trimmed(text.substr(2, nul - 2)) == "end")
        return nul;
    return feed;
}

std::optional<std::uint16_t> parseSide(std::string_view text)
{
    text = trimmed(text);
    unsigned value = 0;
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (status != std::errc() || end != text.data() + text.size() || value == 0 || value > maximumSide)
        return std::nullopt;
    return static_cast<std::uint16_t>(value);
}

std::optional<EvtEncoding> encodingOfName(std::string_view name)
{
    std::string plain = lowered(trimmed(name));
    std::erase(plain, '.');
    if (plain == "evt2" || plain == "evt20")
        return EvtEncoding::Evt2;
    if (plain == "evt21")
        return EvtEncoding::Evt21;
    if (plain == "evt3" || plain == "evt30")
        return EvtEncoding::Evt3;
    return std::nullopt;
}

std::optional<EvtEncoding> encodingOfVersion(std::string_view version)
{
    return encodingOfName("evt" + std::string(trimmed(version)));
}

std::optional<bool> legacyOfName(std::string_view name)
{
    const std::string plain = lowered(trimmed(name));
    if (plain == "legacy")
        return true;
    if (plain == "little")
        return false;
    return std::nullopt;
}

/// "EVT3;height=720;width=1280"
void readFormat(std::string_view format, RawHeader& header)
{
    std::optional<std::uint16_t> width;
    std::optional<std::uint16_t> height;
    std::size_t at = format.find(';');
    while (at != std::string_view::npos) {
        const auto next = format.find(';', at + 1);
        const auto option = format.substr(at + 1, next == std::string_view::npos ? next : next - at - 1);
        const auto equals = option.find('=');
        if (equals != std::string_view::npos) {
            const std::string name = lowered(trimmed(option.substr(0, equals)));
            const auto value = option.substr(equals + 1);
            if (name == "width")
                width = parseSide(value);
            else if (name == "height")
                height = parseSide(value);
            else if (name == "endianness")
                header.legacyWordOrder = legacyOfName(value);
        }
        at = next;
    }
    if (width && height)
        header.geometry = {*width, *height};
}

void readEncoding(RawHeader& header)
{
    const auto format = header.value("format");
    const auto version = header.value("evt");
    if (format) {
        const auto name = trimmed(format->substr(0, format->find(';')));
        header.encoding = encodingOfName(name);
        if (!header.encoding)
            header.error = "the format \"" + std::string(name) + "\" is not one of EVT2, EVT21 and EVT3";
    }
    if (version && header.error.empty()) {
        const auto byVersion = encodingOfVersion(*version);
        if (!header.encoding) {
            header.encoding = byVersion;
            if (!byVersion)
                header.error = "the version \"" + std::string(*version) + "\" is not one of 2.0, 2.1 and 3.0";
        } else if (byVersion && byVersion != header.encoding) {
            header.error = "the header contradicts itself: format \"" + std::string(*format) + "\", evt \""
                + std::string(*version) + "\"";
        }
    }
}

void readGeometry(RawHeader& header)
{
    const auto geometry = header.value("geometry");
    if (header.geometry.isValid() || !geometry)
        return;
    const auto cross = geometry->find_first_of("xX");
    if (cross == std::string_view::npos)
        return;
    const auto width = parseSide(geometry->substr(0, cross));
    const auto height = parseSide(geometry->substr(cross + 1));
    if (width && height)
        header.geometry = {*width, *height};
}

} // namespace

std::optional<std::string_view> RawHeader::value(std::string_view key) const
{
    const auto found = std::find_if(entries.rbegin(), entries.rend(),
                                    [key](const auto& entry) { return entry.first == key; });
    if (found == entries.rend())
        return std::nullopt;
    return found->second;
}

RawHeader parseRawHeader(std::string_view bytes)
{
    RawHeader header;
    std::size_t at = 0;
    while (bytes.substr(at, 2) == "% " && at < RawHeader::maximumSize) {
        const auto window
            = bytes.substr(at, std::min(RawHeader::maximumLine + 1, RawHeader::maximumSize - at));
        auto length = lineLength(window);
        const bool atEndOfFile
            = window.size() <= RawHeader::maximumLine && at + window.size() == bytes.size();
        if (length == std::string_view::npos && !atEndOfFile)
            break;
        length = std::min(length, window.size());
        const auto line = window.substr(0, length);
        if (!isHeaderText(line))
            break;
        at += std::min(length + 1, window.size());
        const auto content = trimmed(line.substr(2));
        const auto blank = content.find_first_of(blanks);
        const auto key = content.substr(0, blank);
        const auto value
            = blank == std::string_view::npos ? std::string_view() : trimmed(content.substr(blank));
        if (key == "end" && value.empty())
            break;
        header.entries.emplace_back(key, value);
    }
    header.bodyOffset = at;

    if (const auto endianness = header.value("endianness"))
        header.legacyWordOrder = legacyOfName(*endianness);
    if (const auto format = header.value("format"))
        readFormat(*format, header);
    readEncoding(header);
    readGeometry(header);
    if (const auto serial = header.value("serial_number"))
        header.serial = *serial;
    return header;
}

} // namespace korvane::recording
