#include "display/showimageform.h"
#include "settings/settingbasewithlineedit.h"
#include "settings/settingbasewithswitchbutton.h"
#include "settings/settingitembox.h"
#include "settings/sidebardvssettingui.h"
#include "tests/e2e/desktopstory.h"
#include "tests/support/movingbar.h"
#include "widgets/kvslider.h"

#include <QScrollArea>
#include <QStyle>

using namespace Qt::Literals::StringLiterals;

namespace {

/// A sensor tuned from the side bar, by what the screen's pointer and keyboard do and what the picture shows.
class TuningStory : public DesktopStory
{
protected:
    using Find = std::function<QWidget*()>;

    SidebarDvsSettingUI* panel() const { return window->findChild<SidebarDvsSettingUI*>(); }
    SettingItemBox* section(const QString& title) const
    {
        for (auto* const box : panel()->findChildren<SettingItemBox*>()) {
            if (box->findChild<QLabel*>(u"lb_setting_box_title_text"_s)->text() == title)
                return box;
        }
        return nullptr;
    }
    /// A part of the row of a parameter, by the name that the row shows.
    template <typename Item>
    QWidget* part(const QString& title, const QString& name, const QString& object) const
    {
        for (auto* const row : section(title)->findChildren<Item*>()) {
            for (const auto* const label : row->template findChildren<QLabel*>()) {
                if (label->text() == name)
                    return row->template findChild<QWidget*>(object);
            }
        }
        return nullptr;
    }

    // All below is for the person.

    /// Where a part of the panel is on the screen, scrolled into view and laid out.
    QRect find(const Find& what) const
    {
        QRect last;
        EXPECT_TRUE(untilOnGui([&] {
            QWidget* const widget = what();
            if (!widget || !widget->isVisible())
                return false;
            panel()->findChild<QScrollArea*>(u"scroll_area_setting"_s)->ensureWidgetVisible(widget);
            const QRect now(widget->mapTo(window.get(), QPoint()), widget->size());
            return std::exchange(last, now) == now;
        }));
        return last.translated(geometry().topLeft());
    }
    void press(const Find& what) const { clickAt(find(what).center()); }
    void unfold(const QString& title) const
    {
        press([&] { return section(title)->findChild<QPushButton*>(u"pb_fold"_s); });
    }
    void enter(const QString& title, const QString& name, const QString& number) const
    {
        const auto field = [&] { return part<SettingBaseWithLineEdit>(title, name, u"le_kv_line_edit"_s); };
        press(field);
        EXPECT_TRUE(untilOnGui([&] { return field()->hasFocus(); }));
        key("ctrl+a");
        type(number);
        key("Return");
        EXPECT_TRUE(untilOnGui([&] { return static_cast<QLineEdit*>(field())->text() == number; }));
    }
    /// Where ON events are in the picture, and how many pixels show one.
    struct Seen
    {
        QRect place;
        int pixels = 0;
    };
    Seen seen() const
    {
        return onGui([this] {
            const QImage image = window->findChild<ShowImageForm*>()->shownPixmap().toImage();
            Seen result;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    if (image.pixel(x, y) != qRgb(191, 188, 180))
                        continue;
                    ++result.pixels;
                    result.place |= QRect(x, y, 1, 1);
                }
            }
            return result;
        });
    }
};

} // namespace

TEST_F(TuningStory, ABiasIsDraggedARegionTypedAndARecordingEmptiesThePanels)
{
    const QDir folder = QDir::current();
    ASSERT_TRUE(writeMovingBar(folder.filePath(u"bar.raw"_s), 600));
    Config::getInstance(u"config.ini"_s)->input_raw_file_path = folder.path();
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);

    play([&] {
        openCamera();
        ASSERT_FALSE(HasFailure());
        click("pb_fold_dvs_setting");
        unfold(u"Biases"_s);
        ASSERT_TRUE(until([this] { return seen().pixels > 5000; }));
        const auto bias = [this](const QString& object) {
            return part<SettingBaseWithLineEdit>(u"Biases"_s, u"Bias Diff On"_s, object);
        };
        press([&] { return bias(u"le_kv_line_edit"_s); });
        const QRect slider = find([&] { return bias(u"horizontalSlider"_s); });
        const int before = seen().pixels;
        // The handle of an offset of 0 stands in the slider as far as the range says.
        const int handle = onGui([&] {
            const auto* const bar = static_cast<KvSlider*>(bias(u"horizontalSlider"_s));
            return QStyle::sliderPositionFromValue(bar->minimum(), bar->maximum(), bar->value(),
                                                   bar->width());
        });
        dragInVain(QPoint(slider.left() + handle, slider.center().y()),
                   QPoint(slider.width() - handle + 20, 0));
        ASSERT_TRUE(untilOnGui([&] {
            const auto* const bar = static_cast<KvSlider*>(bias(u"horizontalSlider"_s));
            return bar->value() == bar->maximum();
        }));
        EXPECT_TRUE(until([&] { return seen().pixels < before / 2; })) << "three times the threshold";
        enter(u"Biases"_s, u"Bias Diff On"_s, u"0"_s);
        EXPECT_TRUE(until([&] { return seen().pixels > before / 2; }));
        unfold(u"Biases"_s);

        unfold(u"ROI"_s);
        enter(u"ROI"_s, u"Width"_s, u"320"_s);
        enter(u"ROI"_s, u"Height"_s, u"200"_s);
        enter(u"ROI"_s, u"X"_s, u"300"_s);
        enter(u"ROI"_s, u"Y"_s, u"220"_s);
        press([&] { return part<SettingBaseWithSwitchButton>(u"ROI"_s, u"Enable"_s, u"switchButton"_s); });
        EXPECT_TRUE(until([this] {
            const Seen now = seen();
            return now.pixels > 500 && QRect(300, 220, 320, 200).contains(now.place);
        }));

        openRecording(u"bar.raw"_s);
        ASSERT_FALSE(HasFailure());
        EXPECT_TRUE(untilOnGui([this] { return panel()->findChildren<SettingItemBox*>().isEmpty(); }));
    });
}
