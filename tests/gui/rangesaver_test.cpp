#include "app/config.h"
#include "playback/kvcutrawfile.h"
#include "playback/kvexportvideoui.h"
#include "playback/rangesaver.h"
#include "tests/gui/dialogcard.h"
#include "tests/gui/dvsplayerfixture.h"
#include "tests/support/scripteddialogs.h"
#include "widgets/waitingwin.h"

#include <QDateTime>
#include <QRegularExpression>

#include <atomic>
#include <semaphore>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace {

struct Toast
{
    QString tips;
    KvMessageType type;
    QString folder;
    bool operator==(const Toast&) const = default;
};

const Toast openFirst{u"Please open a raw file first."_s, Warning, QString()};
const Toast exported{u"Export video success!"_s, Success, u"/videos"_s};
const Toast wasCut{u"Export raw file success!"_s, Success, u"/recordings"_s};

class RangeSaverTest : public DvsPlayerTest
{
protected:
    RangeSaverTest()
    {
        config.video_save_path = u"/videos"_s;
        config.output_raw_file_path = u"/recordings"_s;
        saver = std::make_unique<RangeSaver>(state, *player, config, &window, &imageArea);
        QObject::connect(saver.get(), &RangeSaver::stopRequested, &window, [this] {
            ++stops;
            emit play.clicked(false);
        });
        QObject::connect(saver.get(), &RangeSaver::signalShowLeftBottomTips, &window,
                         [this](const QString& tips, KvMessageType type, const QString& folder) {
                             EXPECT_EQ(QThread::currentThread(), QApplication::instance()->thread());
                             toasts.push_back({tips, type, folder});
                         });
    }
    void SetUp() override
    {
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    ~RangeSaverTest() override { saver.reset(); }

    void openWithPoints(std::uint64_t first, std::uint64_t last, int start, int end)
    {
        open(first, last);
        timeline.setHandleMode(3);
        timeline.setLowerValue(start);
        timeline.setUpperValue(end);
    }

    /// Starts the export or the cut and answers its dialog.
    template <typename Dialog>
    void answer(const std::function<void(Dialog& dialog)>& act)
    {
        ScriptedPerson person([&act](QWidget& modal) {
            auto* const dialog = qobject_cast<Dialog*>(&modal);
            if (dialog)
                act(*dialog);
            return dialog != nullptr;
        });
        start<Dialog>();
        EXPECT_TRUE(person.isDone()) << "no dialog was shown";
        QCoreApplication::processEvents();
    }
    template <typename Dialog>
    void start()
    {
        if constexpr (std::is_same_v<Dialog, KvExportVideoUI>)
            saver->slotSaveAs();
        else
            saver->slotCutRecording();
    }
    /// Confirms with this file name.
    template <typename Dialog>
    void saveAs(const QString& name)
    {
        answer<Dialog>([&name](Dialog& dialog) {
            dialog.setFileName(name);
            QTest::mouseClick(card::find<QPushButton>(dialog, "pb_save"), Qt::LeftButton);
        });
    }
    bool readerIsFree()
    {
        const std::unique_lock lock(player->readerMutex(), std::try_to_lock);
        return lock.owns_lock();
    }

    QWidget window;
    QWidget imageArea{&window};
    Config config{u"saver.ini"_s};
    std::unique_ptr<RangeSaver> saver;
    std::vector<Toast> toasts;
    int stops = 0;
};

/// What holds for the export and the cut alike.
template <typename Dialog>
class RangeSaverBothTest : public RangeSaverTest
{
protected:
    static constexpr bool exports = std::is_same_v<Dialog, KvExportVideoUI>;
    const std::string operation = exports ? "export" : "cut";
    const std::string folder = exports ? "/videos/" : "/recordings/";
    const Toast success = exports ? exported : wasCut;
    void confirm(const QString& name) { saveAs<Dialog>(name); }
};

using Dialogs = testing::Types<KvExportVideoUI, KvCutRawFile>;

/// Names the cases by what is done.
struct OperationNames
{
    template <typename Dialog>
    static std::string GetName(int)
    {
        return std::is_same_v<Dialog, KvExportVideoUI> ? "Export" : "Cut";
    }
};

TYPED_TEST_SUITE(RangeSaverBothTest, Dialogs, OperationNames);

TYPED_TEST(RangeSaverBothTest, WithoutADvsRecordingAWarningAsksForOne)
{
    // Also while a fusion recording plays, which is not the player's.
    for (const int mode : {ModeNone, ModeFusionRecording}) {
        this->state.playMode = mode;
        this->state.filePlaying = mode != ModeNone;
        this->toasts.clear();
        this->template start<TypeParam>();
        EXPECT_EQ(this->toasts, std::vector<Toast>{openFirst});
        EXPECT_EQ(this->stops, 0);
        EXPECT_EQ(this->state.filePlaying, mode != ModeNone) << "what plays goes on";
    }
    this->state.filePlaying = false;
}

TYPED_TEST(RangeSaverBothTest, ProposesTheWholeRecordingAndANameMadeOfTheTime)
{
    this->open(1'000'000, 10'500'000);
    const QString suffix = this->exports ? u".mp4"_s : u".raw"_s;
    const QDateTime before = QDateTime::currentDateTime();
    QString path;
    this->template answer<TypeParam>([&](TypeParam& dialog) {
        EXPECT_EQ(dialog.parentWidget(), &this->window);
        EXPECT_EQ(dialog.startTime(), 1'000'000u);
        EXPECT_EQ(dialog.endTime(), 10'500'000u);
        path = dialog.fullPath();
        dialog.reject();
    });
    const QRegularExpression form(u"^"_s + QString::fromStdString(this->folder) + u"(\\d{8}_\\d{6})\\"_s
                                  + suffix + u"$"_s);
    const auto match = form.match(path);
    ASSERT_TRUE(match.hasMatch()) << path.toStdString();
    const QDateTime named = QDateTime::fromString(match.captured(1), u"yyyyMMdd_HHmmss"_s);
    EXPECT_LE(before.addSecs(-1), named);
    EXPECT_LE(named, QDateTime::currentDateTime());
    EXPECT_EQ(this->reader->log.lines(), ScriptedLog::Lines()) << "a dialog that is rejected saves nothing";
    EXPECT_TRUE(this->toasts.empty());
}

TYPED_TEST(RangeSaverBothTest, ProposesTheStartAndEndPointsWhenTheyAreOn)
{
    this->openWithPoints(0, 10'500'000, 200'000, 240'000);
    this->reader->onSave = [] { return true; };
    this->confirm(u"take.out"_s);
    EXPECT_EQ(this->reader->log.lines(),
              (ScriptedLog::Lines{this->operation + " 200000 240000 " + this->folder + "take.out"}));
    EXPECT_EQ(this->toasts, std::vector<Toast>{this->success});
}

TYPED_TEST(RangeSaverBothTest, ARangeBeyondThirtyTwoBitsIsExact)
{
    constexpr std::uint64_t first = 5001;
    constexpr std::uint64_t last = (std::uint64_t(1) << 33) + 12345;
    this->open(first, last);
    this->confirm(u"long"_s);
    EXPECT_EQ(this->reader->log.lines(),
              (ScriptedLog::Lines{this->operation + " 5001 8589946937 " + this->folder + "long"}));
}

TYPED_TEST(RangeSaverBothTest, WhatIsTypedIsHandedOnAsItIs)
{
    this->open(0, 1000);
    this->template answer<TypeParam>([](TypeParam& dialog) {
        card::find<QLineEdit>(dialog, "le_start_time")->setText(u"abc"_s);
        card::find<QLineEdit>(dialog, "le_end_time")->setText(u"99999999999"_s);
        dialog.setSavePath(u"/no where"_s);
        dialog.setFileName(u"录像/ä"_s);
        dialog.accept();
    });
    EXPECT_EQ(this->reader->log.lines(),
              (ScriptedLog::Lines{this->operation + " 0 99999999999 /no where/\u5f55\u50cf/\u00e4"}));
    this->reader->log.clear();
    this->template answer<TypeParam>([](TypeParam& dialog) {
        dialog.setStartTime(900);
        dialog.setEndTime(100);
        dialog.setFileName(u"backwards"_s);
        dialog.accept();
    });
    EXPECT_EQ(this->reader->log.lines(),
              (ScriptedLog::Lines{this->operation + " 900 100 " + this->folder + "backwards"}));
    EXPECT_EQ(this->config.video_save_path, u"/videos"_s) << "the default folders are only read";
    EXPECT_EQ(this->config.output_raw_file_path, u"/recordings"_s);
}

TYPED_TEST(RangeSaverBothTest, PlaybackIsStoppedBeforeTheDialogAndStaysStopped)
{
    this->open(0, 100'000'000);
    this->click();
    ASSERT_TRUE(this->state.filePlaying);
    this->template answer<TypeParam>([this](TypeParam& dialog) {
        EXPECT_FALSE(this->state.filePlaying);
        EXPECT_FALSE(this->play.isChecked());
        dialog.accept();
    });
    EXPECT_EQ(this->stops, 1);
    EXPECT_FALSE(this->state.filePlaying);
    EXPECT_FALSE(this->play.isChecked());
    EXPECT_FALSE(this->saver->busy());
    this->click();
    EXPECT_TRUE(this->state.filePlaying) << "afterwards it can be played again";
}

TYPED_TEST(RangeSaverBothTest, ARecordingStaysOpenBehindAFusionRecordingAndIsTheOneSaved)
{
    this->open(0, 100'000);
    this->state.playMode = ModeFusionRecording;
    this->confirm(u"earlier"_s);
    EXPECT_EQ(this->reader->log.lines(),
              (ScriptedLog::Lines{this->operation + " 0 100000 " + this->folder + "earlier"}));
}

TYPED_TEST(RangeSaverBothTest, TheWindowLivesButStaysOpenAndStillWhileTheJobRuns)
{
    this->open(0, 10'500'000);
    this->moveTo(3'000'000);
    std::binary_semaphore seen(0);
    std::atomic<QThread*> worker{nullptr};
    std::atomic<bool> readerHeld{false};
    this->reader->onSave = [&] {
        worker = QThread::currentThread();
        readerHeld = true;
        return seen.try_acquire_for(std::chrono::seconds(30));
    };
    ScriptedPerson person([&](QWidget& modal) {
        if (auto* const dialog = qobject_cast<TypeParam*>(&modal))
            dialog->accept();
        if (!qobject_cast<WaitingWin*>(&modal) || !readerHeld)
            return false;
        EXPECT_TRUE(this->saver->busy());
        EXPECT_FALSE(this->readerIsFree());
        // None of this waits for the reader: the job only ends after it.
        this->forget();
        this->player->nextClicked();
        this->player->previousClicked();
        this->player->stopClicked();
        this->player->onSliderTimeMove(5000);
        this->player->onSliderTimeTrackClick(5000);
        this->player->playClicked();
        this->saver->slotSaveAs();
        this->saver->slotCutRecording();
        EXPECT_FALSE(this->state.filePlaying);
        EXPECT_EQ(this->player->currentTime(), 3'000'000u);
        EXPECT_EQ(this->labels + this->announcements, 0);
        EXPECT_EQ(QApplication::activeModalWidget(), &modal) << "no second dialog";
        EXPECT_FALSE(this->window.close());
        QTest::keyClick(&modal, Qt::Key_Escape);
        EXPECT_TRUE(modal.isVisible());
        EXPECT_TRUE(this->window.isVisible());
        seen.release();
        return true;
    });
    this->template start<TypeParam>();
    EXPECT_TRUE(person.isDone());
    EXPECT_NE(worker.load(), nullptr);
    EXPECT_NE(worker.load(), QApplication::instance()->thread());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_FALSE(this->saver->busy());
    EXPECT_TRUE(this->readerIsFree());
    ASSERT_TRUE(this->wait([this] { return !this->toasts.empty(); }));
    EXPECT_EQ(this->toasts.size(), 1u);
    this->player->nextClicked();
    EXPECT_EQ(this->player->currentTime(), 3'030'303u) << "afterwards the steps act again";
    EXPECT_TRUE(this->window.close());
}

TYPED_TEST(RangeSaverBothTest, AJobThatThrowsHasFailedAndNothingElse)
{
    this->open(0, 1000);
    this->reader->onSave = []() -> bool { throw std::runtime_error("out of luck"); };
    const CapturedMessages messages;
    this->confirm(u"x"_s);
    const QStringList told = messages.of(QtCriticalMsg);
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.first().contains(u"out of luck"_s));
    EXPECT_FALSE(messages.debug().join(u'\n').contains(u"success."_s));
    EXPECT_EQ(this->toasts.size(), this->exports ? 1u : 0u);
    EXPECT_FALSE(this->saver->busy());
    EXPECT_TRUE(this->readerIsFree());
}

TEST_F(RangeSaverTest, AnExportLogsItsTargetThenItsRange)
{
    open(0, 10'500'000);
    reader->onSave = [] { return true; };
    const CapturedMessages messages;
    saveAs<KvExportVideoUI>(u"视频.mp4"_s);
    EXPECT_EQ(messages.debug(),
              (QStringList{u"start export video: /videos/视频.mp4"_s,
                           u"extract event data start:0 end: 10500000 success."_s}));
    EXPECT_EQ(toasts, std::vector<Toast>{exported});
}

TEST_F(RangeSaverTest, AFailedExportShowsItsToastAllTheSameButLogsNoSuccess)
{
    open(0, 1000);
    const CapturedMessages messages;
    saveAs<KvExportVideoUI>(u"x.mp4"_s);
    EXPECT_EQ(messages.debug(), (QStringList{u"start export video: /videos/x.mp4"_s}));
    EXPECT_EQ(toasts, std::vector<Toast>{exported});
}

TEST_F(RangeSaverTest, ACutLogsItsTargetThenItsRange)
{
    open(0, 10'500'000);
    reader->onSave = [] { return true; };
    const CapturedMessages messages;
    saveAs<KvCutRawFile>(u"录像.raw"_s);
    EXPECT_EQ(messages.debug(),
              (QStringList{u"qt output file name : /recordings/录像.raw"_s,
                           u"extract event data start:0 end: 10500000 success."_s}));
    EXPECT_EQ(toasts, std::vector<Toast>{wasCut});
}

TEST_F(RangeSaverTest, AFailedCutGivesNoFeedbackAtAll)
{
    open(0, 1000);
    const CapturedMessages messages;
    saveAs<KvCutRawFile>(u"x.raw"_s);
    EXPECT_EQ(messages.debug(), (QStringList{u"qt output file name : /recordings/x.raw"_s}));
    EXPECT_TRUE(toasts.empty());
}

TEST_F(RangeSaverTest, AnExportLogsBeforeItHasTheReaderACutAfterwards)
{
    open(0, 1000);
    std::vector<bool> free;
    CapturedMessages messages;
    messages.onLine = [&](const QString& line) {
        if (line.startsWith("start export video"_L1) || line.startsWith("qt output file name"_L1)) {
            // From another thread than the job's, which must not try its own lock.
            std::thread([&] { free.push_back(readerIsFree()); }).join();
        }
    };
    saveAs<KvExportVideoUI>(u"x.mp4"_s);
    EXPECT_EQ(free, std::vector<bool>{true});
    saveAs<KvCutRawFile>(u"x.raw"_s);
    EXPECT_EQ(free, (std::vector<bool>{true, false}));
}

TYPED_TEST(RangeSaverBothTest, TheToastIsSentWhileTheReaderIsHeldAndTheSpinnerEndsAfterIt)
{
    this->open(0, 1000);
    this->reader->onSave = [] { return true; };
    bool heldAtToast = false;
    bool spinningAtToast = false;
    QObject::connect(
        this->saver.get(), &RangeSaver::signalShowLeftBottomTips, &this->window,
        [&] {
            // From another thread than the job's, which must not try its own lock.
            std::thread([&] { heldAtToast = !this->readerIsFree(); }).join();
            spinningAtToast = this->saver->busy();
        },
        Qt::DirectConnection);
    this->confirm(u"x"_s);
    EXPECT_TRUE(heldAtToast);
    EXPECT_TRUE(spinningAtToast);
}

} // namespace
