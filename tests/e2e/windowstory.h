#pragma once

#include "camera/driver/backend.h"
#include "camera/recording/recordingbackend.h"
#include "display/showimageform.h"
#include "mainwindow/mainwidget.h"
#include "tests/support/movingbar.h"
#include "widgets/kvthreehandleslider.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

/// The window with the recordings' backend and a recording, driven as a person would: by what stands in it.
class WindowStory : public testing::Test
{
protected:
    explicit WindowStory(unsigned lengthMs = 3000) : recordingMs(lengthMs) {}

    void SetUp() override
    {
        korvane::registerBackend(backend);
        path = QDir::current().filePath(QStringLiteral("bar.raw"));
        ASSERT_TRUE(writeMovingBar(path, recordingMs));
        window = std::make_unique<MainWidget>();
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
    void TearDown() override
    {
        window.reset();
        korvane::unregisterBackend(backend);
    }

    QPushButton* button(const char* name) const
    {
        auto* const found = window->findChild<QPushButton*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    void click(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    /// Opens a menu with its button and clicks an item; returns when what the item began has ended.
    void pick(const char* menuName, const QString& text) const
    {
        const QString wanted = QString::fromLatin1(menuName);
        QPushButton* opener = button("pb_viewer_setting");
        for (QPushButton* const one : window->findChildren<QPushButton*>())
            opener = one->menu() && one->menu()->objectName() == wanted ? one : opener;
        bool clicked = false;
        QTimer person;
        QObject::connect(&person, &QTimer::timeout, &person, [&] {
            auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu || menu->objectName() != wanted || clicked)
                return;
            for (QAction* const action : menu->actions()) {
                if (action->text() != text)
                    continue;
                clicked = true;
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
                return;
            }
            menu->close();
        });
        person.start(2);
        QTest::mouseClick(opener, Qt::LeftButton);
        EXPECT_TRUE(wait([&] { return clicked && !QApplication::activePopupWidget(); }))
            << "no item " << text.toStdString();
    }
    QString timeText() const { return window->findChild<QLabel*>(QStringLiteral("label_time"))->text(); }
    KvThreeHandleSlider* timeline() const { return window->findChild<KvThreeHandleSlider*>(); }
    QImage picture() const { return window->findChild<ShowImageForm*>()->shownPixmap().toImage(); }
    /// Drags along the timeline, between pixels.
    void drag(int from, int to) const
    {
        const int y = timeline()->height() / 2;
        QTest::mousePress(timeline(), Qt::LeftButton, {}, QPoint(from, y));
        QTest::mouseMove(timeline(), QPoint((from + to) / 2, y));
        QTest::mouseMove(timeline(), QPoint(to, y));
        QTest::mouseRelease(timeline(), Qt::LeftButton, {}, QPoint(to, y));
    }
    static bool wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 20000); }

    std::shared_ptr<korvane::Backend> backend = std::make_shared<korvane::recording::RecordingBackend>();
    const unsigned recordingMs;
    QString path;
    std::unique_ptr<MainWidget> window;
};
