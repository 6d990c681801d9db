#pragma once

#include "camera/recording/evtencoding.h"

namespace korvane::simulation {

class StreamTools;

/// The tools of a sensor's own filters: each adds a filter to a camera's stream, switched off, and the tool
/// that sets it. While the camera is made.

/// Refuses coordinates that make no window inside the sensor; numbers that are entered one after the other
/// act as soon as all of them together make one.
void addRegionOfInterest(StreamTools& tools, recording::Geometry geometry);
void addEventTrailFilter(StreamTools& tools, recording::Geometry geometry);
/// Refuses a band whose lower end is above its upper end, as with the region.
void addAntiFlicker(StreamTools& tools, recording::Geometry geometry);
/// Logs once a second of the stream how many events were dropped.
void addEventRateControl(StreamTools& tools);

} // namespace korvane::simulation
