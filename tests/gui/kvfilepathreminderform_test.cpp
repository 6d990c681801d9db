#include "tests/support/capturedmessages.h"
#include "widgets/kvfilepathreminderform.h"

#include <QApplication>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <QWindow>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>

using namespace Qt::Literals::StringLiterals;

namespace {

std::unique_ptr<KvFilePathReminderForm> toastOf(KvMessageType type, const QString& path = {},
                                                const QString& tips = u"Save file success!"_s)
{
    return std::make_unique<KvFilePathReminderForm>(tips, type, path, nullptr);
}

QLabel* label(const KvFilePathReminderForm& toast, const QString& name)
{
    return toast.findChild<QLabel*>(name);
}

QPushButton* button(const KvFilePathReminderForm& toast, const QString& name)
{
    return toast.findChild<QPushButton*>(name);
}

QWidget* body(const KvFilePathReminderForm& toast)
{
    return toast.findChild<QWidget*>(u"widget_item"_s);
}

QImage picture(KvFilePathReminderForm& toast)
{
    return toast.grab().toImage();
}

/// Whether a widget's part of a picture holds a colour, or one that is near it as in the core of a glyph.
bool showsNearly(const QImage& image, const QWidget& part, const QColor& color)
{
    const QRect area(part.mapTo(part.window(), QPoint(0, 0)), part.size());
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (std::abs(pixel.red() - color.red()) < 24 && std::abs(pixel.green() - color.green()) < 24
                && std::abs(pixel.blue() - color.blue()) < 24)
                return true;
        }
    return false;
}

struct Look
{
    int type;
    const char* title;
    QColor background;
    QColor color;
};

void PrintTo(const Look& look, std::ostream* out)
{
    *out << "kind " << look.type;
}

class ToastLook : public testing::TestWithParam<Look>
{
};

/// Takes the place of the desktop's file manager.
class FolderOpener : public QObject
{
    Q_OBJECT

public:
    FolderOpener() { QDesktopServices::setUrlHandler(u"file"_s, this, "open"); }
    ~FolderOpener() override { QDesktopServices::unsetUrlHandler(u"file"_s); }

    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened.append(url); }
};

} // namespace

TEST_P(ToastLook, PaintsTheColoursOfItsKind)
{
    const Look look = GetParam();
    const auto toast = toastOf(static_cast<KvMessageType>(look.type));
    toast->show();
    const QImage image = picture(*toast);
    const QRect area = body(*toast)->geometry();
    EXPECT_EQ(image.pixelColor(area.left() + 4, area.center().y()), look.background);
    EXPECT_EQ(image.pixelColor(area.left(), area.center().y()), look.color) << "left border";
    EXPECT_EQ(image.pixelColor(area.center().x(), area.top()), look.color) << "top border";
    EXPECT_EQ(image.pixelColor(area.left() + 1, area.center().y()), look.background) << "one pixel wide";
    EXPECT_TRUE(showsNearly(image, *label(*toast, u"lb_title"_s), look.color));
    EXPECT_TRUE(showsNearly(image, *label(*toast, u"lb_show_tips"_s), QColor(0x55, 0x55, 0x55)));
    EXPECT_TRUE(showsNearly(image, *button(*toast, u"pb_logo"_s), look.color)) << "the icon";
    EXPECT_EQ(label(*toast, u"lb_title"_s)->text(), QString::fromLatin1(look.title));
}

INSTANTIATE_TEST_SUITE_P(
    EveryKind, ToastLook,
    testing::Values(Look{0, "Success", QColor(0xF5, 0xFC, 0xF6), QColor(0x58, 0xDB, 0x6D)},
                    Look{1, "Warning", QColor(0xFE, 0xFB, 0xF4), QColor(0xF9, 0xBF, 0x37)},
                    Look{2, "Error", QColor(0xFF, 0xF6, 0xF6), QColor(0xFF, 0x60, 0x58)},
                    Look{7, "Success", QColor(0xF5, 0xFC, 0xF6), QColor(0x58, 0xDB, 0x6D)}),
    [](const auto& kind) { return "OfKind" + std::to_string(kind.param.type); });

TEST(KvFilePathReminderForm, KindsHaveTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(Success), 0);
    EXPECT_EQ(static_cast<int>(Warning), 1);
    EXPECT_EQ(static_cast<int>(Error), 2);
}

TEST(KvFilePathReminderForm, ImagesOfEveryKindExist)
{
    for (const QString& name : {u"success"_s, u"warning"_s, u"error"_s, u"close"_s})
        EXPECT_TRUE(QFile::exists(u":/img/assets/icon_toasts_%1.svg"_s.arg(name))) << qPrintable(name);
}

TEST(KvFilePathReminderForm, IsAFramelessWindowThatKeepsTheProgramFromNothing)
{
    const auto toast = toastOf(Success);
    EXPECT_EQ(toast->windowFlags(), Qt::Window | Qt::FramelessWindowHint);
    EXPECT_TRUE(toast->testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_TRUE(toast->testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_FALSE(toast->testAttribute(Qt::WA_QuitOnClose));
    EXPECT_LT(toast->grab().toImage().pixelColor(0, 0).alpha(), 128) << "round corners";
    EXPECT_EQ(body(*toast)->geometry(), toast->rect()) << "the body's corner is the window's";
    for (const QPoint& corner : {toast->rect().topLeft(), toast->rect().bottomRight()})
        EXPECT_FALSE(toast->mask().contains(corner)) << "black where no compositor runs";
    EXPECT_TRUE(toast->mask().contains(toast->rect().center()));
}

TEST(KvFilePathReminderForm, TheProgramEndsWithItsMainWindowThoughAToastIsShown)
{
    QWidget mainWindow;
    mainWindow.show();
    auto* toast = new KvFilePathReminderForm(u"tips"_s, Success, QString(), nullptr);
    const QPointer<KvFilePathReminderForm> alive = toast;
    toast->show();
    bool shown = false;
    QTimer::singleShot(0, &mainWindow, [&] {
        mainWindow.close();
        shown = toast->isVisible();
    });
    QTimer::singleShot(2000, &mainWindow, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0) << "the toast kept the program alive";
    EXPECT_TRUE(shown);
    EXPECT_EQ(alive, nullptr) << "what has no owner ends with the program";
}

TEST(KvFilePathReminderForm, BelongsToTheWindowThatIsActiveSoThatItStaysAboveIt)
{
    QWidget mainWindow;
    mainWindow.show();
    mainWindow.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow));
    const auto toast = toastOf(Success);
    toast->show();
    EXPECT_EQ(toast->windowHandle()->transientParent(), mainWindow.windowHandle());
}

TEST(KvFilePathReminderForm, ShowsOpenDirOnlyWithAPath)
{
    const auto without = toastOf(Success);
    without->show();
    EXPECT_FALSE(button(*without, u"pb_open_dir"_s)->isVisible());
    const auto with = toastOf(Success, u"/data"_s);
    with->show();
    EXPECT_TRUE(button(*with, u"pb_open_dir"_s)->isVisible());
    EXPECT_EQ(button(*with, u"pb_open_dir"_s)->text(), u"Open Dir"_s);
    EXPECT_TRUE(showsNearly(picture(*with), *button(*with, u"pb_open_dir"_s), QColor(0, 170, 255)));
}

TEST(KvFilePathReminderForm, HasTheStatedSizes)
{
    const auto toast = toastOf(Success, u"/data"_s);
    EXPECT_EQ(button(*toast, u"pb_logo"_s)->maximumSize(), QSize(15, 15));
    EXPECT_EQ(button(*toast, u"pb_close"_s)->maximumSize(), QSize(20, 20));
    EXPECT_EQ(button(*toast, u"pb_open_dir"_s)->maximumWidth(), 50);
    EXPECT_EQ(label(*toast, u"lb_title"_s)->maximumHeight(), 20);
}

TEST(KvFilePathReminderForm, ItsSizeIsFinalBeforeItIsShown)
{
    const auto toast = toastOf(Success, u"/data"_s);
    const QSize before = toast->size();
    toast->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(toast.get()));
    EXPECT_EQ(toast->size(), before);
}

TEST(KvFilePathReminderForm, LongTextsAreWrappedAndNothingIsCutOff)
{
    const QString path = u"/home/"_s + QString(60, u'x') + u"/20240131_154502.raw"_s;
    const QString chinese = u"保存文件失败：磁盘空间不足，录制已停止。"_s.repeated(6);
    for (const QString& tips : {u"Cannot write "_s + path + u": no space left on the device"_s, chinese,
                                u"short"_s, QString(200, u'w')}) {
        const auto toast = toastOf(Error, u"/data"_s, tips);
        toast->show();
        const QLabel* shown = label(*toast, u"lb_show_tips"_s);
        EXPECT_EQ(QString(shown->text()).remove(QChar(0x200B)), tips) << "at most break marks are added";
        const QRect needed
            = shown->fontMetrics().boundingRect(shown->contentsRect(), Qt::TextWordWrap, shown->text());
        EXPECT_LE(needed.width(), shown->width()) << qPrintable(tips);
        EXPECT_LE(needed.height(), shown->height()) << qPrintable(tips);
        EXPECT_TRUE(toast->rect().contains(QRect(shown->mapTo(toast.get(), QPoint()), shown->size())));
        const QPushButton* open = button(*toast, u"pb_open_dir"_s);
        EXPECT_TRUE(toast->rect().contains(QRect(open->mapTo(toast.get(), QPoint()), open->size())));
    }
    EXPECT_EQ(label(*toastOf(Error, {}, chinese), u"lb_show_tips"_s)->text(), chinese);
    EXPECT_LT(toastOf(Error, {}, chinese)->width(), 460) << "wrapped, not in one line";
    EXPECT_LT(toastOf(Error, {}, QString(250, u'w'))->width(), 460) << "a word as long as a file name may be";
}

TEST(KvFilePathReminderForm, ShowsMarkupInATextAsItIs)
{
    const auto toast = toastOf(Error, {}, u"<b>name</b>.raw"_s);
    EXPECT_EQ(label(*toast, u"lb_show_tips"_s)->textFormat(), Qt::PlainText);
}

TEST(KvFilePathReminderForm, IsDeletedThreeSecondsAfterItWasMade)
{
    QElapsedTimer clock;
    clock.start();
    auto* toast = new KvFilePathReminderForm(u"tips"_s, Success, QString(), nullptr);
    const QPointer<KvFilePathReminderForm> alive = toast;
    toast->show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return alive == nullptr; }, 6000));
    EXPECT_GE(clock.elapsed(), 2800);
    EXPECT_LT(clock.elapsed(), 5000);
}

TEST(KvFilePathReminderForm, ItsCrossHidesItAndTheTimerStillDeletesIt)
{
    auto* toast = new KvFilePathReminderForm(u"tips"_s, Success, QString(), nullptr);
    const QPointer<KvFilePathReminderForm> alive = toast;
    toast->show();
    QTest::mouseClick(button(*toast, u"pb_close"_s), Qt::LeftButton);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_NE(alive, nullptr);
    EXPECT_FALSE(toast->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return alive == nullptr; }, 6000));
}

TEST(KvFilePathReminderForm, OpenDirOpensTheFolderAsALocalFile)
{
    FolderOpener opener;
    const CapturedMessages log;
    const auto toast = toastOf(Success, u"/data/with blank#1"_s);
    toast->show();
    QTest::mouseClick(button(*toast, u"pb_open_dir"_s), Qt::LeftButton);
    EXPECT_EQ(opener.opened, QList<QUrl>{QUrl::fromLocalFile(u"/data/with blank#1"_s)});
    EXPECT_EQ(log.debug().count(u"Failed to open directory."_s), 0);
    EXPECT_TRUE(toast->isVisible());
}

TEST(KvFilePathReminderForm, AFolderThatCannotBeOpenedIsLoggedAndNothingElseHappens)
{
    // Without a search path no desktop handler is found.
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "");
    const CapturedMessages log;
    const auto toast = toastOf(Success, u"/no/such/folder"_s);
    toast->show();
    QTest::mouseClick(button(*toast, u"pb_open_dir"_s), Qt::LeftButton);
    qputenv("PATH", path);
    EXPECT_EQ(log.debug().count(u"Failed to open directory."_s), 1);
    EXPECT_TRUE(toast->isVisible());
}

#include "kvfilepathreminderform_test.moc"
