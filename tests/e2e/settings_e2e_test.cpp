#include "camera/simulation/eventsink.h"
#include "camera/simulation/simulateddvscamera.h"
#include "settings/settingbasewithlineedit.h"
#include "settings/settingbasewithswitchbutton.h"
#include "settings/settingitembox.h"
#include "settings/sidebardvssettingui.h"
#include "tests/e2e/livestoryfixture.h"
#include "tests/support/movingbar.h"
#include "widgets/kvslider.h"

#include <QLineEdit>
#include <QScrollArea>
#include <QStyle>

#include <atomic>
#include <mutex>
#include <string>
#include <utility>

using namespace Qt::Literals::StringLiterals;
using korvane::CameraTool;
using korvane::Event2D;
using korvane::ToolType;

namespace {

/// Measures what a camera delivers.
class RateMeter : public korvane::simulation::EventSink
{
public:
    void onEvents(const Event2D* begin, const Event2D* end) override
    {
        QRect place;
        for (const Event2D* event = begin; event != end; ++event) {
            (event->polarity == 1 ? on : off) += 1;
            place |= QRect(event->x, event->y, 1, 1);
        }
        {
            const std::lock_guard lock(mutex);
            within |= place;
        }
        ++steps;
    }
    /// The smallest rectangle around the events since this was asked for last.
    QRect takePlace()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(within, QRect());
    }

    std::atomic<std::uint64_t> on{0};
    std::atomic<std::uint64_t> off{0};
    std::atomic<int> steps{0};

private:
    std::mutex mutex;
    QRect within; // guarded by mutex
};

/// The simulated cameras, with a way to the one that was opened last.
class WatchedBackend : public korvane::simulation::SimulatedBackend
{
public:
    std::shared_ptr<korvane::DvsCamera> openCamera(const std::string& serial) override
    {
        auto camera = SimulatedBackend::openCamera(serial);
        if (const auto opened = std::dynamic_pointer_cast<korvane::simulation::StreamedDvsCamera>(camera)) {
            meter = std::make_shared<RateMeter>();
            opened->setEventSink(meter);
        }
        last = camera;
        return camera;
    }
    std::shared_ptr<CameraTool> tool(ToolType type) const
    {
        const auto camera = last.lock();
        return camera ? camera->getTool(type) : nullptr;
    }

    std::shared_ptr<RateMeter> meter; ///< of the camera opened last

private:
    std::weak_ptr<korvane::DvsCamera> last;
};

class SettingsStory : public LiveStory
{
protected:
    SettingsStory()
    {
        backend = std::make_shared<WatchedBackend>();
        cameras = backend;
    }

    void open(const char* serial)
    {
        int row = 0;
        for (const auto& description : cameras->cameraDescriptions()) {
            if (description.serial == serial)
                break;
            ++row;
        }
        openFromTheList(row);
        ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 500; }));
        // The dialogs have had the focus.
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        QTest::mouseClick(button("pb_fold_dvs_setting"), Qt::LeftButton);
        ASSERT_TRUE(panel()->isVisible());
    }

    SidebarDvsSettingUI* panel() const { return window->findChild<SidebarDvsSettingUI*>(); }
    QStringList sections() const
    {
        QStringList titles;
        for (const auto* const box : panel()->findChildren<SettingItemBox*>())
            titles << box->findChild<QLabel*>(u"lb_setting_box_title_text"_s)->text();
        return titles;
    }
    SettingItemBox* section(const QString& title) const
    {
        for (auto* const box : panel()->findChildren<SettingItemBox*>()) {
            if (box->findChild<QLabel*>(u"lb_setting_box_title_text"_s)->text() == title)
                return box;
        }
        return nullptr;
    }
    void unfold(const QString& title) const
    {
        SettingItemBox* const box = section(title);
        ASSERT_NE(box, nullptr) << title.toStdString();
        QTest::mouseClick(show(box->findChild<QPushButton*>(u"pb_fold"_s)), Qt::LeftButton);
        QCoreApplication::processEvents();
    }
    /// Scrolls the panel until a widget stands in view.
    QWidget* show(QWidget* widget) const
    {
        panel()->findChild<QScrollArea*>(u"scroll_area_setting"_s)->ensureWidgetVisible(widget);
        QCoreApplication::processEvents();
        return widget;
    }
    /// The row of a parameter, by the name that it shows.
    template <typename Item>
    Item* item(const QString& title, const QString& name) const
    {
        for (auto* const one : section(title)->findChildren<Item*>()) {
            for (const auto* const label : one->template findChildren<QLabel*>()) {
                if (label->text() == name)
                    return one;
            }
        }
        return nullptr;
    }

    QLineEdit* field(const QString& title, const QString& name) const
    {
        auto* const row = item<SettingBaseWithLineEdit>(title, name);
        return row ? row->findChild<QLineEdit*>(u"le_kv_line_edit"_s) : nullptr;
    }
    /// Types a number into a row's field, as with the keyboard.
    void type(const QString& title, const QString& name, const QString& number) const
    {
        QLineEdit* const edit = field(title, name);
        ASSERT_NE(edit, nullptr) << name.toStdString();
        QTest::mouseClick(show(edit), Qt::LeftButton);
        QTest::keySequence(edit, QKeySequence::SelectAll);
        QTest::keyClicks(edit, number);
        QTest::keyClick(edit, Qt::Key_Return);
    }
    static QColor border(QLineEdit* edit) { return edit->grab().toImage().pixelColor(0, edit->height() / 2); }
    /// Where the events of some whole steps from now on lie.
    QRect place() const
    {
        const auto meter = backend->meter;
        const int start = meter->steps + 2;
        EXPECT_TRUE(wait([&] { return meter->steps >= start; }));
        meter->takePlace();
        const int steps = meter->steps;
        EXPECT_TRUE(wait([&] { return meter->steps >= steps + 4; }));
        return meter->takePlace();
    }

    /// Events a step of the camera, by polarity, of the next eight steps.
    struct Rate
    {
        double on = 0;
        double off = 0;
    };
    Rate rate() const
    {
        const auto meter = backend->meter;
        // The step under way when something was set still goes by what was before.
        const int start = meter->steps + 2;
        EXPECT_TRUE(wait([&] { return meter->steps >= start; }));
        const auto steps = meter->steps.load();
        const auto on = meter->on.load();
        const auto off = meter->off.load();
        EXPECT_TRUE(wait([&] { return meter->steps >= steps + 8; }));
        const double made = meter->steps - steps;
        return {static_cast<double>(meter->on - on) / made, static_cast<double>(meter->off - off) / made};
    }

    std::shared_ptr<WatchedBackend> backend;
};

} // namespace

TEST_F(SettingsStory, ABiasDraggedWithTheMouseChangesTheEventRateAtOnce)
{
    open("QRT-000001");
    unfold(u"Biases"_s);
    auto* const bias = item<SettingBaseWithLineEdit>(u"Biases"_s, u"Bias Diff On"_s);
    ASSERT_NE(bias, nullptr);
    const Rate before = rate();

    auto* const number = field(u"Biases"_s, u"Bias Diff On"_s);
    EXPECT_EQ(number->text(), u"0"_s);
    QTest::mouseClick(show(number), Qt::LeftButton);
    auto* const slider = bias->findChild<KvSlider*>(u"horizontalSlider"_s);
    ASSERT_TRUE(wait([slider] { return slider->isVisible(); }));
    show(slider);
    const QPoint handle(QStyle::sliderPositionFromValue(slider->minimum(), slider->maximum(), slider->value(),
                                                        slider->width()),
                        slider->height() / 2);
    QTest::mousePress(slider, Qt::LeftButton, {}, handle);
    for (int x = handle.x(); x < slider->width(); x += 10)
        QTest::mouseMove(slider, QPoint(x, handle.y()));
    QTest::mouseMove(slider, QPoint(slider->width() + 20, handle.y()));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(slider->width() + 20, handle.y()));

    int set = 0;
    ASSERT_TRUE(backend->tool(ToolType::Biases)->getIntParameter("bias_diff_on", set));
    EXPECT_EQ(set, slider->maximum());
    EXPECT_EQ(number->text(), QString::number(set));
    const Rate after = rate();
    EXPECT_GT(before.on, 1000.0);
    EXPECT_LT(after.on, before.on * 0.6) << "three times the threshold";
    EXPECT_GT(after.off, before.off * 0.5) << "the other polarity stays about as it was";

    // Typed with the keyboard, it comes back.
    type(u"Biases"_s, u"Bias Diff On"_s, u"0"_s);
    ASSERT_TRUE(backend->tool(ToolType::Biases)->getIntParameter("bias_diff_on", set));
    EXPECT_EQ(set, 0);
    EXPECT_GT(rate().on, after.on * 1.3);
}

TEST_F(SettingsStory, APressOnPlusReachesTheToolOfTheOpenCamera)
{
    open("QRT-000001");
    unfold(u"Biases"_s);
    auto* const bias = item<SettingBaseWithLineEdit>(u"Biases"_s, u"Bias Refractory"_s);
    ASSERT_NE(bias, nullptr);
    for (int i = 0; i < 3; ++i)
        QTest::mouseClick(show(bias->findChild<QPushButton*>(u"pb_add_item_value"_s)), Qt::LeftButton);
    int set = 0;
    ASSERT_TRUE(backend->tool(ToolType::Biases)->getIntParameter("bias_refractory", set));
    EXPECT_EQ(set, 3);
    QTest::mouseClick(show(bias->findChild<QPushButton*>(u"pb_sub_item_value"_s)), Qt::LeftButton);
    ASSERT_TRUE(backend->tool(ToolType::Biases)->getIntParameter("bias_refractory", set));
    EXPECT_EQ(set, 2);
}

TEST_F(SettingsStory, TheTriggerInputIsSwitchedWithTheMouse)
{
    open("QRT-000001");
    unfold(u"Trigger In"_s);
    auto* const toggle = item<SettingBaseWithSwitchButton>(u"Trigger In"_s, u"Enable"_s);
    ASSERT_NE(toggle, nullptr);
    auto* const button = toggle->findChild<QPushButton*>(u"switchButton"_s);
    EXPECT_FALSE(button->isChecked());
    bool enabled = false;
    QTest::mouseClick(show(button), Qt::LeftButton);
    ASSERT_TRUE(backend->tool(ToolType::TriggerIn)->getBoolParameter("enable", enabled));
    EXPECT_TRUE(enabled);
    QTest::mouseClick(show(button), Qt::LeftButton);
    ASSERT_TRUE(backend->tool(ToolType::TriggerIn)->getBoolParameter("enable", enabled));
    EXPECT_FALSE(enabled);
}

TEST_F(SettingsStory, AFusionCameraShowsThatItsTriggerInputIsOn)
{
    // It was switched on when the camera was opened, before the panel was filled.
    open("PEL-000001");
    unfold(u"Trigger In"_s);
    auto* const toggle = item<SettingBaseWithSwitchButton>(u"Trigger In"_s, u"Enable"_s);
    ASSERT_NE(toggle, nullptr);
    EXPECT_TRUE(toggle->findChild<QPushButton*>(u"switchButton"_s)->isChecked());
}

TEST_F(SettingsStory, ARegionTypedWithTheKeyboardLetsOnlyItsEventsThrough)
{
    const QString roi = u"ROI"_s;
    open("QRT-000001");
    unfold(roi);
    EXPECT_GT(place().width(), 600);
    type(roi, u"Width"_s, u"320"_s);
    type(roi, u"Height"_s, u"200"_s);
    type(roi, u"X"_s, u"300"_s);
    type(roi, u"Y"_s, u"220"_s);
    EXPECT_GT(place().width(), 600) << "not before it is switched on";
    auto* const enable
        = item<SettingBaseWithSwitchButton>(roi, u"Enable"_s)->findChild<QPushButton*>(u"switchButton"_s);
    QTest::mouseClick(show(enable), Qt::LeftButton);
    const QRect region(300, 220, 320, 200);
    const QRect found = place();
    EXPECT_TRUE(region.contains(found))
        << found.left() << ' ' << found.top() << ' ' << found.right() << ' ' << found.bottom();
    EXPECT_GT(found.width(), 250);

    // Coordinates that make no window are refused: all of them turn red, and the window stays.
    type(roi, u"X"_s, u"1279"_s);
    for (const QString& name : {u"Width"_s, u"Height"_s, u"X"_s, u"Y"_s})
        EXPECT_EQ(border(field(roi, name)), QColor(0xFF, 0x60, 0x58)) << name.toStdString();
    EXPECT_LE(place().right(), region.right());
    // The next one that makes a window ends it.
    type(roi, u"X"_s, u"400"_s);
    for (const QString& name : {u"Width"_s, u"Height"_s, u"Y"_s})
        EXPECT_EQ(border(field(roi, name)), QColor(0xAC, 0xAC, 0xAC)) << name.toStdString();
    EXPECT_GE(place().left(), 400);
}

TEST_F(SettingsStory, AnOpenedCameraFillsThePanelAndARecordingEmptiesIt)
{
    open("QRT-000001");
    EXPECT_EQ(sections(),
              (QStringList{u"Biases"_s, u"Trigger In"_s, u"Anti Flicker"_s, u"Event Rate Control"_s,
                           u"Event Trail Filter"_s, u"ROI"_s}));
    auto* const display = window->findChild<QWidget*>(u"widget_combobox_frame_rate"_s);
    EXPECT_FALSE(display->isEnabled());

    const QString path = QDir::current().filePath(u"bar.raw"_s);
    ASSERT_TRUE(writeMovingBar(path, 400));
    window->openRecording(path);
    ASSERT_TRUE(wait([this] { return timeline()->isEnabled(); }));
    EXPECT_TRUE(wait([this] { return sections().isEmpty(); }));
    EXPECT_TRUE(panel()->findChildren<SettingBaseWithLineEdit*>().isEmpty());
    EXPECT_TRUE(display->isEnabled());
}
