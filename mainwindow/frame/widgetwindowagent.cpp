#include <QWKWidgets/widgetwindowagent.h>

#include "mainwindow/frame/resizeedges.h"

#include <QAbstractButton>
#include <QMouseEvent>
#include <QWindow>

#include <algorithm>

namespace QWK {

namespace {

/// Pixels that tell a drag from a click that trembles. The window stays behind the pointer by as much, so it
/// is less than what Qt takes for dragging items.
constexpr int dragThreshold = 4;

QPoint globalOf(const QMouseEvent& event)
{
    return event.globalPosition().toPoint();
}

/// What the form may shrink to: an explicit minimum, else what its layout asks for.
QSize smallest(const QWidget* form)
{
    const QSize set = form->minimumSize();
    const QSize hint = form->minimumSizeHint();
    return {set.width() > 0 ? set.width() : std::max(hint.width(), 1),
            set.height() > 0 ? set.height() : std::max(hint.height(), 1)};
}

} // namespace

WindowAgentBase::WindowAgentBase(QObject* parent) : QObject(parent) {}

WidgetWindowAgent::WidgetWindowAgent(QObject* parent) : WindowAgentBase(parent) {}

WidgetWindowAgent::~WidgetWindowAgent() = default;

bool WidgetWindowAgent::setup(QWidget* widget)
{
    if (widget == nullptr || form != nullptr)
        return false;
    form = widget;
    connect(form, &QObject::destroyed, this, [this] { form = nullptr; });
    form->setWindowFlags(form->windowFlags() | Qt::Window | Qt::FramelessWindowHint);
    form->setAttribute(Qt::WA_TranslucentBackground);
    form->installEventFilter(this);
    // The native window itself is left to come with the first show: made before, under X11 it often goes on
    // believing that it stands at the screen's corner, and menus and moves go astray.
    form->setAttribute(Qt::WA_NativeWindow);
    watchWindow();
    return true;
}

void WidgetWindowAgent::setTitleBar(QWidget* widget)
{
    if (titleBar == widget)
        return;
    if (titleBar != nullptr)
        titleBar->removeEventFilter(this);
    titleBar = widget;
    if (titleBar != nullptr)
        titleBar->installEventFilter(this);
}

void WidgetWindowAgent::setSystemButton(SystemButton button, QWidget* widget)
{
    if (button == Unknown)
        return;
    if (widget == nullptr)
        systemButtons.remove(button);
    else
        systemButtons.insert(button, widget);
}

void WidgetWindowAgent::watchWindow()
{
    // The native window sees every press before the child under the pointer does, so that children which
    // cover the edges do not take them away.
    if (window == form->windowHandle())
        return;
    if (window != nullptr)
        window->removeEventFilter(this);
    window = form->windowHandle();
    if (window != nullptr)
        window->installEventFilter(this);
}

bool WidgetWindowAgent::eventFilter(QObject* watched, QEvent* event)
{
    if (form == nullptr)
        return false;
    if (watched == form && (event->type() == QEvent::WinIdChange || event->type() == QEvent::Show))
        watchWindow();
    if (watched == titleBar && filterTitleBar(event))
        return true;
    if ((watched == window || watched == form) && filterEdges(event))
        return true;
    return WindowAgentBase::eventFilter(watched, event);
}

bool WidgetWindowAgent::filterEdges(QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        return pressEdge(static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonDblClick:
        // Its press has started the resize; the title bar must not see the rest.
        return edgesAt(form->mapFromGlobal(globalOf(*static_cast<QMouseEvent*>(event)))) != Qt::Edges();
    case QEvent::MouseMove: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (drag == Drag::Resizing)
            return moveDrag(mouse);
        if (mouse->buttons() == Qt::NoButton)
            hover(form->mapFromGlobal(globalOf(*mouse)));
        return false;
    }
    case QEvent::MouseButtonRelease:
        return drag == Drag::Resizing && endDrag();
    case QEvent::Leave:
    case QEvent::WindowStateChange:
        hover(QPoint(-1, -1));
        return false;
    default:
        return false;
    }
}

bool WidgetWindowAgent::filterTitleBar(QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        return pressTitle(static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
        return (drag == Drag::Pressed || drag == Drag::Moving) && moveDrag(static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
        return (drag == Drag::Pressed || drag == Drag::Moving) && endDrag();
    case QEvent::MouseButtonDblClick: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::LeftButton || !dragsWindow(mouse->position().toPoint()))
            return false;
        endDrag();
        toggleMaximized();
        return true;
    }
    default:
        return false;
    }
}

bool WidgetWindowAgent::pressEdge(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return false;
    const Qt::Edges edges = edgesAt(form->mapFromGlobal(globalOf(*event)));
    if (edges == Qt::Edges())
        return false;
    if (window != nullptr && window->startSystemResize(edges)) {
        drag = Drag::None;
        return true;
    }
    drag = Drag::Resizing;
    dragEdges = edges;
    dragStart = globalOf(*event);
    dragGeometry = form->geometry();
    return true;
}

bool WidgetWindowAgent::pressTitle(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !dragsWindow(event->position().toPoint()))
        return false;
    drag = Drag::Pressed;
    dragStart = globalOf(*event);
    dragGeometry = form->geometry();
    return true;
}

bool WidgetWindowAgent::moveDrag(QMouseEvent* event)
{
    // The release of a drag may have gone to the platform.
    if (!event->buttons().testFlag(Qt::LeftButton)) {
        endDrag();
        return false;
    }
    const QPoint distance = globalOf(*event) - dragStart;
    if (drag == Drag::Resizing) {
        form->setGeometry(
            resizedAtEdges(dragGeometry, dragEdges, distance, smallest(form), form->maximumSize()));
        return true;
    }
    if (drag == Drag::Pressed) {
        if (distance.manhattanLength() < dragThreshold)
            return true;
        drag = Drag::Moving;
        // The platform may take a filling window off its place; by itself it stays where it is.
        if (window != nullptr && window->startSystemMove()) {
            drag = Drag::None;
            return true;
        }
    }
    if (!isFilling())
        form->move(dragGeometry.topLeft() + distance);
    return true;
}

bool WidgetWindowAgent::endDrag()
{
    const bool dragged = drag != Drag::None;
    drag = Drag::None;
    return dragged;
}

void WidgetWindowAgent::hover(const QPoint& position)
{
    const Qt::Edges edges = edgesAt(position);
    if (edges != Qt::Edges()) {
        form->setCursor(resizeCursor(edges));
        cursorSet = true;
    } else if (cursorSet) {
        form->unsetCursor();
        cursorSet = false;
    }
}

void WidgetWindowAgent::toggleMaximized()
{
    if (systemButtons.value(Maximize) == nullptr)
        return;
    if (form->isMaximized())
        form->showNormal();
    else
        form->showMaximized();
}

bool WidgetWindowAgent::dragsWindow(const QPoint& positionInTitleBar) const
{
    for (const QWidget* child = titleBar->childAt(positionInTitleBar); child != nullptr && child != titleBar;
         child = child->parentWidget()) {
        if (qobject_cast<const QAbstractButton*>(child) != nullptr)
            return false;
        if (std::any_of(systemButtons.begin(), systemButtons.end(),
                        [child](const QPointer<QWidget>& button) { return button.data() == child; }))
            return false;
    }
    return true;
}

bool WidgetWindowAgent::isFilling() const
{
    return form->windowState().testAnyFlags(Qt::WindowMaximized | Qt::WindowFullScreen);
}

Qt::Edges WidgetWindowAgent::edgesAt(const QPoint& position) const
{
    if (isFilling())
        return {};
    return resizeEdgesAt(position, form->size(), smallest(form), form->maximumSize());
}

} // namespace QWK
