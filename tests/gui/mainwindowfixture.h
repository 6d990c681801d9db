#pragma once

#include "app/fonts.h"
#include "mainwindow/mainwidget.h"
#include "widgets/kvthreehandleslider.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

/// The program's window on the screen, as main() shows it, and its widgets by their names.
class MainWindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(loadApplicationFont());
        window = std::make_unique<MainWidget>();
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }

    /// Fails the test hard when there is no such widget.
    template <typename Widget = QWidget>
    Widget& find(const char* name) const
    {
        auto* const widget = window->findChild<Widget*>(QLatin1StringView(name));
        if (!widget)
            throw std::runtime_error(std::string("there is no widget ") + name);
        return *widget;
    }
    QPushButton& button(const char* name) const { return find<QPushButton>(name); }
    QString text(const char* label) const { return find<QLabel>(label).text(); }
    KvThreeHandleSlider& slider() const { return find<KvThreeHandleSlider>("time_slider"); }
    void click(const char* name) const { QTest::mouseClick(&button(name), Qt::LeftButton); }

    std::unique_ptr<MainWidget> window;
};

/// Does something once with the pop-up on the screen, which may be run by a blocking call. GUI thread.
class PopupVisitor
{
public:
    explicit PopupVisitor(std::function<void(QMenu& menu)> act)
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this, doIt = std::move(act)] {
            auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu || done)
                return;
            done = true;
            doIt(*menu);
            menu->close();
        });
        timer.start(5);
    }
    PopupVisitor(const PopupVisitor&) = delete;
    PopupVisitor& operator=(const PopupVisitor&) = delete;

    bool hasCome() const
    {
        return QTest::qWaitFor([this] { return done; });
    }

private:
    QTimer timer;
    bool done = false;
};

inline void drag(QWidget& widget, const QPoint& from, const QPoint& distance)
{
    QTest::mousePress(&widget, Qt::LeftButton, {}, from);
    QTest::mouseMove(&widget, from + distance);
    // The widget has moved with the pointer.
    QTest::mouseRelease(&widget, Qt::LeftButton, {}, from);
}
