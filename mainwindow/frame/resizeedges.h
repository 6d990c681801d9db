#pragma once

#include <QRect>
#include <QSize>
#include <Qt>

// Where a frameless window is resized, and to what: plain functions on geometry. Any thread; pixels.

/// The edges of a window of a size that are taken at a position in it; none inside. Only edges whose
/// direction can change between minimum and maximum are taken.
Qt::Edges resizeEdgesAt(const QPoint& position, const QSize& size, const QSize& minimum,
                        const QSize& maximum);

/// A window's geometry with some edges moved by a distance, held between two sizes; the opposite edges stay.
QRect resizedAtEdges(const QRect& geometry, Qt::Edges edges, const QPoint& distance, const QSize& minimum,
                     const QSize& maximum);

/// The pointer's shape over some edges; the plain arrow for none.
Qt::CursorShape resizeCursor(Qt::Edges edges);
