#include "tests/support/scriptedreader.h"

#include <algorithm>
#include <string>

using std::to_string;

bool ScriptedReader::loadFile()
{
    log.add("load");
    loaded = !onLoad || onLoad();
    return loaded;
}

void ScriptedReader::getStartTimestamp(std::uint64_t& ts)
{
    ts = loaded ? firstTime : 0;
}

void ScriptedReader::getEndTimestamp(std::uint64_t& ts)
{
    ts = loaded ? lastTime : 0;
}

bool ScriptedReader::isEnd()
{
    const std::lock_guard guard(mutex);
    return !loaded || position > lastTime;
}

bool ScriptedReader::seekTime(std::uint64_t ts)
{
    const bool inside = loaded && ts >= firstTime && ts <= lastTime;
    log.add("seek " + to_string(ts) + (inside ? "" : " refused"));
    if (!inside)
        return false;
    {
        const std::lock_guard guard(mutex);
        position = ts;
    }
    if (onMove)
        onMove();
    return true;
}

ScriptedReader::Events ScriptedReader::getNextEvents(std::uint64_t duration)
{
    log.add("next " + to_string(duration));
    std::uint64_t start = 0;
    {
        const std::lock_guard guard(mutex);
        start = position;
        position += duration;
    }
    if (onMove)
        onMove();
    return window(start, duration);
}

ScriptedReader::Events ScriptedReader::getEventsAt(std::uint64_t start, std::uint64_t duration)
{
    log.add("at " + to_string(start) + ' ' + to_string(duration));
    if (onRead) {
        if (auto answer = onRead(start, duration))
            return *answer;
    }
    return window(start, duration);
}

ScriptedReader::Triggers ScriptedReader::getTriggersAt(std::uint64_t, std::uint64_t)
{
    return nullptr;
}

bool ScriptedReader::cutFile(std::uint64_t start, std::uint64_t end, std::string path)
{
    log.add("cut " + to_string(start) + ' ' + to_string(end) + ' ' + path);
    return onSave && onSave();
}

bool ScriptedReader::exportVideo(std::uint64_t start, std::uint64_t end, std::string path)
{
    log.add("export " + to_string(start) + ' ' + to_string(end) + ' ' + path);
    return onSave && onSave();
}

ScriptedReader::Events ScriptedReader::window(std::uint64_t start, std::uint64_t duration) const
{
    if (!loaded || start > lastTime)
        return nullptr;
    auto events = std::make_shared<std::vector<korvane::Event2D>>();
    const auto put = [&events](std::uint64_t time) {
        events->emplace_back(static_cast<std::uint16_t>(time / spacing % 1280), row, std::uint8_t(1), time);
    };
    const std::uint64_t from = std::max(start, firstTime);
    const std::uint64_t steps = (from - firstTime + spacing - 1) / spacing;
    for (std::uint64_t time = firstTime + steps * spacing; time < lastTime && time - start < duration;
         time += spacing)
        put(time);
    if (lastTime - start < duration)
        put(lastTime);
    return events;
}
