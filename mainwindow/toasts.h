#pragma once

#include "widgets/kvmessagetype.h"

#include <QPointer>
#include <QString>
#include <QWidget>

#include <vector>

/// The toasts of a window, at its bottom left corner. They go by themselves after three seconds, and with
/// this object. GUI thread.
class Toasts
{
public:
    explicit Toasts(const QWidget& window);
    ~Toasts();
    Toasts(const Toasts&) = delete;
    Toasts& operator=(const Toasts&) = delete;

    void show(const QString& tips, KvMessageType type, const QString& filePath);

private:
    const QWidget& window;
    std::vector<QPointer<QWidget>> shown;
};
