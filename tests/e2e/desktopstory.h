#pragma once

#include "app/config.h"
#include "app/fonts.h"
#include "camera/cameraslist.h"
#include "camera/driver/backend.h"
#include "camera/recording/recordingbackend.h"
#include "camera/simulation/simulatedbackend.h"
#include "mainwindow/mainwidget.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QWindow>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <type_traits>

/// Asks the GUI thread, also while a menu or a dialog runs on it. Called by the person.
template <typename Question>
auto onGui(Question question)
{
    std::invoke_result_t<Question> answer{};
    QMetaObject::invokeMethod(
        qApp, [&] { answer = question(); }, Qt::BlockingQueuedConnection);
    return answer;
}

/// Counts what the window system sends, before anybody handles it. GUI thread; the counters from any.
class ArrivedInput : public QObject
{
public:
    std::atomic<int> releases{0};
    std::atomic<int> moves{0};

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched->isWindowType() && event->spontaneous()) {
            releases += event->type() == QEvent::MouseButtonRelease ? 1 : 0;
            moves += event->type() == QEvent::MouseMove ? 1 : 0;
        }
        return false;
    }
};

/// The window on a real X screen with a window manager, used by a person on a thread of its own: pointer and
/// keyboard are the screen's, and where the window stands is what the screen says.
class DesktopStory : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(QGuiApplication::platformName(), QStringLiteral("xcb"));
        ASSERT_TRUE(loadApplicationFont());
        korvane::registerBackend(recordings);
        korvane::registerBackend(cameras);
        qApp->installEventFilter(&arrived);
        QGuiApplication::setQuitOnLastWindowClosed(false);
        window = std::make_unique<MainWidget>();
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get(), patience));
        ASSERT_TRUE(QTest::qWaitFor([this] { return agreesWithItsNativeWindow(); }, patience));
    }
    void TearDown() override
    {
        window.reset();
        korvane::unregisterBackend(cameras);
        korvane::unregisterBackend(recordings);
    }

    /// Whether Qt would look for a click where the widgets are. GUI thread.
    bool agreesWithItsNativeWindow() const { return window->windowHandle()->position() == window->pos(); }

    /// Runs the story in a thread beside the event loop, until it has ended.
    static void play(const std::function<void()>& story)
    {
        QEventLoop loop;
        std::atomic<bool> ended{false};
        std::thread person([&] {
            story();
            leaveNothingOpen();
            ended = true;
            QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
        });
        do
            loop.exec();
        while (!ended);
        person.join();
    }

    // All below is for the person.

    /// A story that broke off has left dialogs and menus behind, inside whose event loops the test would
    /// hang.
    static void leaveNothingOpen()
    {
        until([] {
            return onGui([] {
                QWidget* const popup = QApplication::activePopupWidget();
                QWidget* const left = popup ? popup : QApplication::activeModalWidget();
                if (left)
                    left->close();
                return !left;
            });
        });
    }
    static bool until(const std::function<bool()>& condition)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return true;
    }
    static bool untilOnGui(const std::function<bool()>& condition)
    {
        return until([&condition] { return onGui(condition); });
    }

    static QString xdotool(const QStringList& arguments)
    {
        QProcess process;
        process.start(QStringLiteral("xdotool"), arguments);
        EXPECT_TRUE(process.waitForFinished(patience) && process.exitCode() == 0)
            << arguments.join(u' ').toStdString() << ": " << process.readAllStandardError().toStdString();
        return QString::fromLatin1(process.readAllStandardOutput());
    }
    /// Where the window is on the screen.
    QRect geometry() const
    {
        return geometryOf(onGui([this] { return window->winId(); }));
    }
    static QRect geometryOf(WId id)
    {
        const QString answer
            = xdotool({QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), QString::number(id)});
        const auto value = [&answer](const QString& name) {
            for (const QString& line : answer.split(u'\n')) {
                if (line.startsWith(name + u'='))
                    return line.section(u'=', 1).toInt();
            }
            return -1;
        };
        return {value(QStringLiteral("X")), value(QStringLiteral("Y")), value(QStringLiteral("WIDTH")),
                value(QStringLiteral("HEIGHT"))};
    }
    static void moveTo(const QPoint& position)
    {
        xdotool({QStringLiteral("mousemove"), QString::number(position.x()), QString::number(position.y())});
    }
    static void press() { xdotool({QStringLiteral("mousedown"), QStringLiteral("1")}); }
    static void release() { xdotool({QStringLiteral("mouseup"), QStringLiteral("1")}); }
    static void clickAt(const QPoint& position)
    {
        moveTo(position);
        xdotool({QStringLiteral("click"), QStringLiteral("1")});
    }
    static void key(const char* name) { xdotool({QStringLiteral("key"), QLatin1String(name)}); }
    static void type(const QString& text)
    {
        xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), text});
    }

    /// A widget of the dialog in front, else of the window. Its place on the screen, empty without it.
    QRect place(const char* name) const
    {
        WId id = 0;
        const QRect found = onGui([this, name, &id] {
            const QWidget* const front = QApplication::activeModalWidget();
            const QWidget* const top = front ? front : window.get();
            const auto* const widget = top->findChild<QWidget*>(QString::fromLatin1(name));
            if (!widget || !widget->isVisible())
                return QRect();
            id = top->winId();
            return QRect(widget->mapTo(top, QPoint()), widget->size());
        });
        EXPECT_FALSE(found.isEmpty()) << "there is no " << name << " to be seen";
        return id != 0 ? found.translated(geometryOf(id).topLeft()) : found;
    }
    void click(const char* name) const { clickAt(place(name).center()); }
    bool isChecked(const char* name) const
    {
        return onGui(
            [this, name] { return window->findChild<QPushButton*>(QString::fromLatin1(name))->isChecked(); });
    }
    QString text(const char* name) const
    {
        return onGui([this, name] { return window->findChild<QLabel*>(QString::fromLatin1(name))->text(); });
    }
    /// Opens a button's menu and clicks one of its items.
    void choose(const char* button, const QString& item) const
    {
        click(button);
        QPoint position;
        EXPECT_TRUE(untilOnGui([&position, &item] {
            const auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return false;
            for (QAction* const action : menu->actions()) {
                if (action->text() == item)
                    position = menu->mapToGlobal(menu->actionGeometry(action).center());
            }
            return !position.isNull();
        })) << item.toStdString();
        clickAt(position);
        EXPECT_TRUE(untilOnGui([] { return QApplication::activePopupWidget() == nullptr; }));
    }
    /// Waits until a dialog of this class is in front and has the keyboard.
    template <typename Dialog>
    static bool untilInFront()
    {
        return untilOnGui([] {
            const auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            return dialog && dialog->isActiveWindow();
        });
    }
    /// Whether no dialog is left and the screen sends what is typed to the window.
    bool untilTheWindowHasTheKeyboard() const
    {
        return until([this] {
            const WId id = onGui([this] { return QApplication::activeModalWidget() ? 0 : window->winId(); });
            return id != 0 && xdotool({QStringLiteral("getwindowfocus")}).trimmed() == QString::number(id);
        });
    }

    /// Opens a recording of the folder where the chooser begins.
    void openRecording(const QString& name) const
    {
        choose("pb_menu_file", QStringLiteral("Open Recording"));
        ASSERT_TRUE(untilInFront<QFileDialog>());
        type(name);
        ASSERT_TRUE(untilOnGui([&name] {
            return QApplication::activeModalWidget()
                       ->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))
                       ->text()
                == name;
        }));
        key("Return");
        ASSERT_TRUE(until([this] { return isChecked("pb_play"); }));
        ASSERT_TRUE(untilTheWindowHasTheKeyboard());
    }
    /// Opens the first camera of the list.
    void openCamera() const
    {
        choose("pb_menu_device", QStringLiteral("Open Camera"));
        ASSERT_TRUE(untilInFront<CamerasList>());
        const QPoint row = onGui([] {
            const auto* const list = QApplication::activeModalWidget()->findChild<QListWidget*>(
                QStringLiteral("listWidget_cameras"));
            return list->viewport()->mapTo(list, list->visualItemRect(list->item(0)).center());
        });
        moveTo(place("listWidget_cameras").topLeft() + row);
        xdotool({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"),
                 QStringLiteral("--delay"), QStringLiteral("60"), QStringLiteral("1")});
        ASSERT_TRUE(until([this] { return text("label_show_camera_info") == QStringLiteral("HAL-000001"); }));
        ASSERT_TRUE(until([this] { return !text("label_show_timestamp_info").isEmpty(); }));
        ASSERT_TRUE(untilTheWindowHasTheKeyboard());
    }

    /// Presses at a point and draws the pointer away with the window following, or its edge, until `follows`
    /// holds for the window's place.
    void dragWindow(const QPoint& from, const QPoint& distance,
                    const std::function<bool(const QRect&)>& follows)
    {
        const QRect before = geometry();
        moveTo(from);
        press();
        // The manager takes the pointer over when it gets to it; where it stands then counts as the
        // beginning.
        const int whole = std::max(1, distance.manhattanLength());
        int pixels = 0;
        EXPECT_TRUE(until([&] {
            pixels = pixels == 6 ? 9 : 6;
            moveTo(from + distance * pixels / whole);
            return geometry() != before;
        })) << "nothing follows the pointer";
        EXPECT_TRUE(until([&] {
            moveTo(from + distance);
            return follows(geometry());
        })) << "the window stands at "
            << testing::PrintToString(geometry().x()) << ' ' << geometry().y() << ' ' << geometry().width()
            << ' ' << geometry().height();
        release();
        untilThePointerIsTheWindows();
    }
    /// Presses at a point and draws the pointer away, with nothing following it.
    void dragInVain(const QPoint& from, const QPoint& distance)
    {
        const int before = arrived.releases;
        moveTo(from);
        press();
        for (int i = 1; i <= 4; ++i)
            moveTo(from + distance * i / 4);
        release();
        // A manager that moved the window would keep the release.
        EXPECT_TRUE(until([&] { return arrived.releases > before; })) << "the window's manager took the drag";
    }
    /// Until the manager has let the pointer go.
    void untilThePointerIsTheWindows()
    {
        const int before = arrived.moves;
        int at = 0;
        EXPECT_TRUE(until([&] {
            at = (at + 1) % 3;
            moveTo(geometry().center() + QPoint(at, 0));
            return arrived.moves > before;
        }));
    }

    static constexpr int patience = 30000; // milliseconds

    std::shared_ptr<korvane::Backend> recordings = std::make_shared<korvane::recording::RecordingBackend>();
    std::shared_ptr<korvane::Backend> cameras = std::make_shared<korvane::simulation::SimulatedBackend>();
    ArrivedInput arrived;
    std::unique_ptr<MainWidget> window;
};
