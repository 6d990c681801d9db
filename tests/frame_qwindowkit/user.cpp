// Frames a form the way the program's forms do.

#include <QWKWidgets/widgetwindowagent.h>

#include <QApplication>
#include <QPushButton>
#include <QWidget>

static_assert(QWK::WidgetWindowAgent::isStandIn);

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QWidget form;
    QWidget title(&form);
    QPushButton close(&form);
    auto* agent = new QWK::WidgetWindowAgent(&form);
    const bool ready = agent->setup(&form);
    agent->setTitleBar(&title);
    agent->setSystemButton(QWK::WindowAgentBase::Close, &close);
    const bool told
        = agent->titleBar() == &title && agent->systemButton(QWK::WindowAgentBase::Close) == &close;
    return ready && told ? 0 : 1;
}
