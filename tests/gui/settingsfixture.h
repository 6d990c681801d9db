#pragma once

#include <QTest>
#include <QVBoxLayout>
#include <QWidget>
#include <gtest/gtest.h>

#include <algorithm>

/// The only child with a name below a widget.
template <typename Widget = QWidget>
Widget& child(const QWidget& of, const char* name)
{
    auto* const found = of.findChild<Widget*>(QLatin1StringView(name));
    if (found == nullptr)
        qFatal("no %s", name);
    return *found;
}

/// Everything of a class below a widget, from top to bottom.
template <typename Widget>
QList<Widget*> fromTop(const QWidget& of)
{
    QList<Widget*> found = of.findChildren<Widget*>();
    std::stable_sort(found.begin(), found.end(), [&of](const Widget* left, const Widget* right) {
        return left->mapTo(&of, QPoint()).y() < right->mapTo(&of, QPoint()).y();
    });
    return found;
}

/// A shown, active window that stacks what a test puts into it. Make it before its contents.
class SettingsWindow : public QWidget
{
public:
    explicit SettingsWindow(int width = 320, int height = 600)
    {
        stack.setContentsMargins(0, 0, 0, 0);
        resize(width, height);
        show();
        activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(this));
    }

    void put(QWidget& widget)
    {
        stack.addWidget(&widget);
        widget.show();
        settle();
    }
    /// Lets the layouts have their turn.
    static void settle() { QCoreApplication::processEvents(); }

private:
    QVBoxLayout stack{this};
};
