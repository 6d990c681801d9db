#pragma once

#include <QRegion>
#include <QSize>

/// The pixels of a rounded rectangle that are covered by half or more. As a window's mask it keeps the
/// corners clean where no compositor runs and transparent pixels would come out black. GUI thread only.
QRegion roundedRegion(QSize size, int radius);
