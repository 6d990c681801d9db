// Whichever agent the build found, it offers what the forms call; a difference is found here and not in each
// form.

#include <QWKWidgets/widgetwindowagent.h>

#include <QObject>
#include <QWidget>

#include <concepts>

namespace {

template <typename Agent>
concept FormAgent = std::derived_from<Agent, QObject> && std::constructible_from<Agent, QObject*> && requires(
    Agent agent, QWidget* widget)
{
    {
        agent.setup(widget)
        } -> std::same_as<bool>;
    agent.setTitleBar(widget);
    agent.setSystemButton(QWK::WindowAgentBase::WindowIcon, widget);
    agent.setSystemButton(QWK::WindowAgentBase::Minimize, widget);
    agent.setSystemButton(QWK::WindowAgentBase::Maximize, widget);
    agent.setSystemButton(QWK::WindowAgentBase::Close, widget);
};

static_assert(FormAgent<QWK::WidgetWindowAgent>);

} // namespace
