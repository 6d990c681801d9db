#pragma once

#include "app/config.h"
#include "camera/driver/backend.h"
#include "camera/recording/recordingbackend.h"
#include "camera/simulation/simulatedbackend.h"
#include "display/showimageform.h"
#include "mainwindow/mainwidget.h"
#include "widgets/kvthreehandleslider.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

/// The whole window with the simulated cameras, as the program puts it together.
class LiveStory : public testing::Test
{
protected:
    void SetUp() override
    {
        korvane::registerBackend(recordings);
        korvane::registerBackend(cameras);
        window = std::make_unique<MainWidget>();
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }

    void TearDown() override
    {
        window.reset();
        korvane::unregisterBackend(cameras);
        korvane::unregisterBackend(recordings);
    }

    QPushButton* button(const char* name) const
    {
        return window->findChild<QPushButton*>(QString::fromLatin1(name));
    }
    QString text(const char* name) const
    {
        return window->findChild<QLabel*>(QString::fromLatin1(name))->text();
    }
    KvThreeHandleSlider* timeline() const { return window->findChild<KvThreeHandleSlider*>(); }

    int eventPixels() const
    {
        const QImage image = window->findChild<ShowImageForm*>()->shownPixmap().toImage();
        int count = 0;
        for (int y = 0; y < image.height(); y += 2) {
            for (int x = 0; x < image.width(); ++x)
                count += image.pixel(x, y) != qRgb(112, 112, 112) ? 1 : 0;
        }
        return count;
    }

    /// Picks the row of the camera list that opens next, and presses its button; tells the texts of its rows.
    QStringList openFromTheList(int row, const char* buttonName = "pb_open")
    {
        QStringList rows;
        QTimer chooser;
        QObject::connect(&chooser, &QTimer::timeout, &chooser, [&rows, row, buttonName] {
            auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            auto* const list
                = dialog ? dialog->findChild<QListWidget*>(QStringLiteral("listWidget_cameras")) : nullptr;
            if (!list || !rows.isEmpty())
                return;
            for (int i = 0; i < list->count(); ++i)
                rows << list->item(i)->text();
            list->setCurrentRow(row);
            QTest::mouseClick(dialog->findChild<QPushButton*>(QString::fromLatin1(buttonName)),
                              Qt::LeftButton);
        });
        chooser.start(20);
        button("pb_menu_device")->menu()->actions().constFirst()->trigger();
        return rows;
    }

    static bool wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 20000); }

    std::shared_ptr<korvane::Backend> recordings = std::make_shared<korvane::recording::RecordingBackend>();
    std::shared_ptr<korvane::simulation::SimulatedBackend> cameras
        = std::make_shared<korvane::simulation::SimulatedBackend>();
    std::unique_ptr<MainWidget> window;
};
