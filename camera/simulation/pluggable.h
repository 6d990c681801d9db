#pragma once

namespace korvane::simulation {

/// A camera whose plug can be pulled.
class Pluggable
{
public:
    Pluggable() = default;
    virtual ~Pluggable() = default;
    Pluggable(const Pluggable&) = delete;
    Pluggable& operator=(const Pluggable&) = delete;

    /// The stream ends and the camera does not come back. Any thread; waits for nothing.
    virtual void pull() = 0;
};

} // namespace korvane::simulation
