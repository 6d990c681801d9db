#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// What the scripted parts of a test were asked, line by line in order. Any thread.
class ScriptedLog
{
public:
    using Lines = std::vector<std::string>;

    void add(std::string line)
    {
        {
            const std::lock_guard guard(mutex);
            content.push_back(std::move(line));
        }
        changed.notify_all();
    }

    Lines lines() const
    {
        const std::lock_guard guard(mutex);
        return content;
    }

    void clear()
    {
        const std::lock_guard guard(mutex);
        content.clear();
    }

    std::ptrdiff_t count(const std::string& line) const
    {
        const std::lock_guard guard(mutex);
        return std::count(content.begin(), content.end(), line);
    }

    bool contains(const std::string& line) const { return count(line) > 0; }

    /// The place of a line's first occurrence, -1 when it is not there.
    std::ptrdiff_t at(const std::string& line) const
    {
        const std::lock_guard guard(mutex);
        const auto found = std::find(content.begin(), content.end(), line);
        return found == content.end() ? -1 : found - content.begin();
    }

    /// Waits without an event loop until `condition` holds; false when it does not within half a minute.
    bool waitFor(const std::function<bool(const Lines&)>& condition) const
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(30),
                                [this, &condition] { return condition(content); });
    }

    bool waitForCount(const std::string& line, std::ptrdiff_t times) const
    {
        return waitFor(
            [&line, times](const Lines& all) { return std::count(all.begin(), all.end(), line) >= times; });
    }

private:
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    Lines content;
};
