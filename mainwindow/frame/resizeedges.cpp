#include "mainwindow/frame/resizeedges.h"

#include <algorithm>

namespace {

constexpr int band = 6;
/// Along an edge this far from its end the corner is taken: the very corner of a rounded window cannot be
/// seen.
constexpr int cornerReach = 12;

} // namespace

Qt::Edges resizeEdgesAt(const QPoint& position, const QSize& size, const QSize& minimum, const QSize& maximum)
{
    const int left = position.x();
    const int top = position.y();
    const int right = size.width() - 1 - position.x();
    const int bottom = size.height() - 1 - position.y();
    const bool wide = minimum.width() < maximum.width();
    const bool tall = minimum.height() < maximum.height();
    const bool atSide = wide && std::min(left, right) < band;
    const bool atEnd = tall && std::min(top, bottom) < band;
    const bool outside = std::min({left, top, right, bottom}) < 0;
    Qt::Edges edges;
    if (outside || (!atSide && !atEnd))
        return edges;

    const int sideReach = atEnd ? cornerReach : band;
    const int endReach = atSide ? cornerReach : band;
    if (wide) {
        edges.setFlag(Qt::LeftEdge, left < sideReach);
        edges.setFlag(Qt::RightEdge, right < sideReach && left >= sideReach);
    }
    if (tall) {
        edges.setFlag(Qt::TopEdge, top < endReach);
        edges.setFlag(Qt::BottomEdge, bottom < endReach && top >= endReach);
    }
    return edges;
}

QRect resizedAtEdges(const QRect& geometry, Qt::Edges edges, const QPoint& distance, const QSize& minimum,
                     const QSize& maximum)
{
    const auto held = [](int wanted, int low, int high) { return std::max(low, std::min(wanted, high)); };
    QRect result = geometry;
    if (edges.testFlag(Qt::LeftEdge)) {
        const int width = held(geometry.width() - distance.x(), minimum.width(), maximum.width());
        result.setLeft(geometry.right() - width + 1);
    } else if (edges.testFlag(Qt::RightEdge)) {
        result.setWidth(held(geometry.width() + distance.x(), minimum.width(), maximum.width()));
    }
    if (edges.testFlag(Qt::TopEdge)) {
        const int height = held(geometry.height() - distance.y(), minimum.height(), maximum.height());
        result.setTop(geometry.bottom() - height + 1);
    } else if (edges.testFlag(Qt::BottomEdge)) {
        result.setHeight(held(geometry.height() + distance.y(), minimum.height(), maximum.height()));
    }
    return result;
}

Qt::CursorShape resizeCursor(Qt::Edges edges)
{
    const bool across = edges.testAnyFlags(Qt::LeftEdge | Qt::RightEdge);
    const bool along = edges.testAnyFlags(Qt::TopEdge | Qt::BottomEdge);
    if (across && along) {
        const bool falling = edges.testFlag(Qt::LeftEdge) == edges.testFlag(Qt::TopEdge);
        return falling ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor;
    }
    if (across)
        return Qt::SizeHorCursor;
    return along ? Qt::SizeVerCursor : Qt::ArrowCursor;
}
