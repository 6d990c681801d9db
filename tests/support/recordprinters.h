#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/recording/evtencoding.h"
#include "camera/recording/evtstate.h"

#include <ostream>

// How records look in the messages of tests.

namespace korvane {

inline void PrintTo(const Event2D& event, std::ostream* out)
{
    *out << event.timestamp << " us (" << event.x << ", " << event.y << ") " << int(event.polarity);
}

inline void PrintTo(const EventTriggerIn& trigger, std::ostream* out)
{
    *out << trigger.timestamp << " us channel " << trigger.id << " edge " << trigger.polarity;
}

namespace recording {

inline void PrintTo(const Geometry& geometry, std::ostream* out)
{
    *out << geometry.width << "x" << geometry.height;
}

inline void PrintTo(const EvtEncoding& encoding, std::ostream* out)
{
    *out << encodingName(encoding);
}

inline void PrintTo(const EvtCounts& counts, std::ostream* out)
{
    *out << counts.reservedWords << " reserved words, " << counts.beforeTime << " before time, "
         << counts.withoutRow << " without row, " << counts.withoutBase << " without base, " << counts.outside
         << " outside, " << counts.clamped << " clamped, " << counts.restarts << " restarts, "
         << counts.wildTimes << " wild times";
}

} // namespace recording

} // namespace korvane
