#pragma once

#include <QWKCore/windowagentbase.h>

#include <QHash>
#include <QPointer>
#include <QRect>
#include <QWidget>

class QMouseEvent;
class QWindow;

namespace QWK {

/// Makes a form a frameless window that is dragged by its own title bar and resized at its edges.
///
/// Moves and resizes are handed to the platform where it offers them, and done here where it does not.
/// Caption buttons neither drag nor act: their own slots do. A double click on the title bar maximises or
/// restores the window if it has a maximise button. GUI thread only.
class WidgetWindowAgent : public WindowAgentBase
{
    Q_OBJECT

public:
    explicit WidgetWindowAgent(QObject* parent = nullptr);
    ~WidgetWindowAgent() override;

    /// Makes a top-level widget frameless, translucent (for round corners) and native; its other window flags
    /// stay. To be called before it is shown. False, and nothing happens, for null or when this agent already
    /// has a form.
    bool setup(QWidget* form);

    /// The widget whose area drags the window, its buttons excepted. It lies inside the form.
    void setTitleBar(QWidget* widget);

    /// Marks a widget as a caption button; null takes the mark back.
    void setSystemButton(SystemButton button, QWidget* widget);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Drag {
        None,
        Pressed, ///< on the title bar, not yet moved far enough to be a drag
        Moving,
        Resizing,
    };

    void watchWindow();
    bool filterEdges(QEvent* event);
    bool filterTitleBar(QEvent* event);
    bool pressEdge(QMouseEvent* event);
    bool pressTitle(QMouseEvent* event);
    bool moveDrag(QMouseEvent* event);
    bool endDrag();
    void hover(const QPoint& position);
    void toggleMaximized();
    bool dragsWindow(const QPoint& positionInTitleBar) const;
    bool isFilling() const;
    Qt::Edges edgesAt(const QPoint& position) const;

    QWidget* form = nullptr; ///< not owned; forgotten when it is destroyed
    QPointer<QWindow> window;
    QPointer<QWidget> titleBar;
    QHash<SystemButton, QPointer<QWidget>> systemButtons;

    Drag drag = Drag::None;
    Qt::Edges dragEdges;
    QPoint dragStart; ///< of the pointer, global
    QRect dragGeometry; ///< of the form when the drag started
    bool cursorSet = false;
};

} // namespace QWK
