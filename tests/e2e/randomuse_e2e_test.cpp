#include "playback/rangedialog.h"
#include "tests/e2e/fusionstory.h"
#include "tests/support/holdings.h"
#include "tests/support/movingbar.h"
#include "widgets/waitingwin.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QElapsedTimer>
#include <QLineEdit>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Someone who tries out everything there is, in no order: cameras, their settings and cables, recordings of
/// every kind, dialogs, the window itself.
class RandomUse : public FusionStory
{
protected:
    void SetUp() override
    {
        FusionStory::SetUp();
        whole = QDir::current().filePath(u"whole.raw"_s);
        ASSERT_TRUE(writeMovingBar(whole, 2000));
        ASSERT_TRUE(evt::writeFile(QDir::current().filePath(u"text.raw"_s), "This is no recording.\n", {}));
        ASSERT_TRUE(evt::writeFile(QDir::current().filePath(u"broken.raw"_s), "% format EVT3\n% end\n", {}));
        ASSERT_TRUE(evt::writeFile(QDir::current().filePath(u"broken.mp4"_s), "This is no video.\n", {}));
        Config* const config = Config::getInstance(u"config.ini"_s);
        QDir::current().mkpath(u"made"_s);
        config->output_raw_file_path = config->video_save_path = made.path();
    }
    void TearDown() override
    {
        made.removeRecursively();
        FusionStory::TearDown();
    }

    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(generator); }
    bool once(int times) { return below(times) == 0; }
    template <typename Things>
    auto anyOf(const Things& things)
    {
        return *std::next(things.begin(), below(static_cast<int>(things.size())));
    }

    /// Whatever asks for an answer gets one.
    void answer(QWidget& modal)
    {
        if (qobject_cast<WaitingWin*>(&modal))
            return;
        if (auto* const cameraList = modal.findChild<QListWidget*>(u"listWidget_cameras"_s)) {
            if (cameraList->count() > 0)
                cameraList->setCurrentRow(below(cameraList->count()));
            QTest::mouseClick(modal.findChild<QPushButton*>(once(4) ? u"pb_win_close"_s : u"pb_open"_s),
                              Qt::LeftButton);
        } else if (auto* const range = qobject_cast<RangeDialog*>(&modal)) {
            if (once(3))
                range->setStartTime(range->endTime() / 2);
            if (once(4))
                range->setFileName(u"again"_s);
            if (once(6))
                range->setSavePath(u"/proc/nowhere"_s);
            QTest::mouseClick(modal.findChild<QPushButton*>(once(4) ? u"pb_cancel"_s : u"pb_save"_s),
                              Qt::LeftButton);
        } else if (auto* const dialog = qobject_cast<QDialog*>(&modal)) {
            dialog->reject();
        }
    }
    void choose(const char* buttonName, const QString& item)
    {
        const QMenu* const own = button(buttonName)->menu();
        // That of the play bar belongs to the window.
        const QMenu* const menu = own ? own : window->findChild<QMenu*>(u"menu_viewer_setting"_s);
        for (QAction* const action : menu->actions()) {
            if (action->text() == item)
                action->trigger();
        }
    }
    /// Uses one of the controls that can be seen in the side bars.
    void touchPanel()
    {
        QList<QWidget*> controls;
        for (const QString& name :
             {u"SidebarDvsSettingUI"_s, u"SidebarApsSettingUI"_s, u"SidebarCameraSettingUI"_s}) {
            for (QWidget* const panel : window->findChildren<QWidget*>()) {
                if (QLatin1String(panel->metaObject()->className()) != name || !panel->isVisible())
                    continue;
                for (QWidget* const control : panel->findChildren<QWidget*>()) {
                    if (control->isVisible() && control->isEnabled()
                        && (qobject_cast<QAbstractButton*>(control) || qobject_cast<QLineEdit*>(control)
                            || qobject_cast<QAbstractSlider*>(control)))
                        controls << control;
                }
            }
        }
        if (controls.isEmpty())
            return;
        QWidget* const control = anyOf(controls);
        if (auto* const field = qobject_cast<QLineEdit*>(control)) {
            field->setText(once(5) ? u"abc"_s : QString::number(below(2000) - 200));
            QTest::keyClick(field, Qt::Key_Return);
        } else {
            const QRect area = control->rect();
            QTest::mouseClick(
                control, Qt::LeftButton, {},
                QPoint(below(area.width()), once(2) ? area.height() / 2 : below(area.height())));
        }
    }
    /// A recording, of those made before too, and files that are none.
    QString anyFile()
    {
        QStringList files{whole, u"text.raw"_s, u"broken.raw"_s, u"missing.raw"_s};
        for (const QFileInfo& file : made.entryInfoList({u"*.raw"_s}, QDir::Files))
            files << file.absoluteFilePath() << file.absoluteFilePath();
        return anyOf(files);
    }
    void useCable()
    {
        const std::string serial = anyOf(cameras->cameraDescriptions()).serial;
        cameras->pull(serial);
        processFor(below(50));
        cameras->plug(serial);
    }
    void useWindow()
    {
        if (once(3))
            window->showMaximized();
        else if (once(2))
            window->showNormal();
        else
            window->resize(1000 + below(600), 650 + below(300));
    }
    void act()
    {
        static const QStringList presses{u"pb_play"_s,   u"pb_play"_s,       u"pb_play"_s, u"pb_record"_s,
                                         u"pb_record"_s, u"pb_stop"_s,       u"pb_prv"_s,  u"pb_next"_s,
                                         u"pb_loop"_s,   u"pb_viewer_type"_s};
        static const QStringList folds{u"pb_fold_setting"_s, u"pb_fold_dvs_setting"_s,
                                       u"pb_fold_aps_setting"_s};
        const int width = timeline()->width();
        const int y = timeline()->height() / 2;
        switch (below(24)) {
        case 0:
        case 1:
            return choose("pb_menu_device", u"Open Camera"_s);
        case 2:
        case 3:
            return window->openRecording(anyFile());
        case 4:
            return choose("pb_menu_file", once(2) ? u"Save as..."_s : u"Cut Recording"_s);
        case 5:
            return choose("pb_menu_setting", once(2) ? u"General Setting"_s : u"EN/中文"_s);
        case 6:
            return choose("pb_menu_help", u"About us"_s);
        case 7:
            return choose("pb_viewer_setting", u"Toggle Start/End Point"_s);
        case 8:
            return useCable();
        case 9:
            return useWindow();
        case 10:
        case 11:
            return click(anyOf(folds).toLatin1().constData());
        case 12:
        case 13:
            QTest::mousePress(timeline(), Qt::LeftButton, {}, QPoint(once(3) ? 3 : below(width), y));
            QTest::mouseMove(timeline(), QPoint(below(width), y));
            return QTest::mouseRelease(timeline(), Qt::LeftButton, {}, QPoint(below(width), y));
        case 14:
        case 15:
        case 16:
        case 17:
            return touchPanel();
        default:
            return click(anyOf(presses).toLatin1().constData());
        }
    }
    void processFor(int milliseconds)
    {
        QElapsedTimer timer;
        timer.start();
        do
            QCoreApplication::processEvents(QEventLoop::AllEvents, milliseconds);
        while (timer.elapsed() < milliseconds);
    }
    /// Everything ended that can be, and a recording open that does not play.
    void rest()
    {
        if (button("pb_record")->isChecked())
            click("pb_record");
        window->showNormal();
        window->openRecording(whole);
        ASSERT_TRUE(
            wait([this] { return button("pb_play")->isChecked() && timeline()->maximum() == 1'999'000; }));
        click("pb_play");
        ASSERT_FALSE(button("pb_play")->isChecked());
        ASSERT_TRUE(wait([] {
            const auto windows = QApplication::topLevelWidgets();
            return std::none_of(windows.begin(), windows.end(), [](const QWidget* one) {
                return one->inherits("KvFilePathReminderForm") || one->isModal();
            });
        })) << "toasts go, and no dialog is left";
        for (const QString& name : made.entryList(QDir::Files | QDir::Hidden))
            EXPECT_TRUE(made.remove(name));
    }

    std::mt19937 generator{20240302};
    QString whole;
    QDir made{QDir::current().filePath(u"made"_s)};
};

} // namespace

// KORVANE_SOAK_SECONDS makes it go on for longer than the few rounds that show a leak.
TEST_F(RandomUse, LeavesAWindowThatWorksAndHoldsNoMoreThanBefore)
{
    bool given = false;
    const int wanted = qEnvironmentVariableIntValue("KORVANE_SOAK_SECONDS", &given);
    const int seconds = given ? wanted : 10;
    constexpr int actionsOfARound = 60;
    // What is made when it is used for the first time comes by and by, chance has it.
    constexpr int warmUp = 5;
    QTimer person;
    QObject::connect(&person, &QTimer::timeout, &person, [this] {
        if (QWidget* const modal = QApplication::activeModalWidget())
            answer(*modal);
    });
    person.start(20);

    SteadyHoldings holdings(warmUp, 600);
    QElapsedTimer timer;
    timer.start();
    for (int number = 1; number <= 2 || timer.elapsed() < seconds * 1000; ++number) {
        for (int i = 0; i < actionsOfARound; ++i) {
            act();
            processFor(once(4) ? below(600) : below(60));
        }
        ASSERT_NO_FATAL_FAILURE(rest()) << "round " << number;
        ASSERT_NO_FATAL_FAILURE(holdings.check(timer.elapsed() / 1000));
    }
    holdings.expectNoDrift();
}
