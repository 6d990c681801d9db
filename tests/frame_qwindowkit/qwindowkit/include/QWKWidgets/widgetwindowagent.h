#pragma once

#include <QWKCore/windowagentbase.h>

#include <QWidget>

namespace QWK {

/// Remembers what it was told.
class WidgetWindowAgent : public WindowAgentBase
{
public:
    static constexpr bool isStandIn = true;

    explicit WidgetWindowAgent(QObject* parent = nullptr) : WindowAgentBase(parent) {}

    bool setup(QWidget* widget)
    {
        form = widget;
        return widget != nullptr;
    }
    QWidget* titleBar() const { return bar; }
    void setTitleBar(QWidget* widget) { bar = widget; }
    QWidget* systemButton(SystemButton button) const { return buttons[button]; }
    void setSystemButton(SystemButton button, QWidget* widget) { buttons[button] = widget; }

private:
    QWidget* form = nullptr;
    QWidget* bar = nullptr;
    QWidget* buttons[Close + 1] = {};
};

} // namespace QWK
