#pragma once

#include <QMenu>

/// A menu of the title bar. GUI thread.
///
/// Qt draws the item under the mouse as it draws one that was reached by the keyboard, selected; style sheets
/// can tell the two apart here: the former is hovered as well.
class TitleMenu : public QMenu
{
public:
    using QMenu::QMenu;

protected:
    void initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool byMouse = false; ///< how the item was reached
};
