#include "mainwindow/toasts.h"

#include "widgets/kvfilepathreminderform.h"

#include <QWindow>

Toasts::Toasts(const QWidget& mainWindow) : window(mainWindow) {}

Toasts::~Toasts()
{
    for (const auto& toast : shown)
        delete toast.data();
}

void Toasts::show(const QString& tips, KvMessageType type, const QString& filePath)
{
    std::erase_if(shown, [](const auto& toast) { return toast.isNull(); });
    auto* const toast = new KvFilePathReminderForm(tips, type, filePath, nullptr);
    shown.emplace_back(toast);
    toast->move(window.x(), window.y() + window.height() - toast->height());
    // Or it would belong to whatever is active, such as a spinner, and vanish with that.
    toast->winId();
    toast->windowHandle()->setTransientParent(window.windowHandle());
    toast->show();
}
