#include "tests/gui/livesessionfixture.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTranslator>

#include <utility>

namespace {

class LiveSessionRecordingTest : public LiveSessionTest
{
protected:
    /// The paths that recordings were started at.
    QStringList paths() const
    {
        const std::string start = "S1 startRecording ";
        QStringList found;
        for (const std::string& line : log.lines()) {
            if (line.starts_with(start))
                found << QString::fromLocal8Bit(line.substr(start.size()).c_str());
        }
        return found;
    }
    std::string savedToast() const
    {
        return "toast 0 [Save file success!] [" + config.output_raw_file_path.toStdString() + ']';
    }
    std::string faultToast(const std::string& reason) const
    {
        return "toast 2 [Recording stopped: " + reason + '\n' + paths().constLast().toStdString() + "] []";
    }
    int toasts() const
    {
        int count = 0;
        for (const std::string& line : log.lines())
            count += line.starts_with("toast") ? 1 : 0;
        return count;
    }
};

} // namespace

TEST_F(LiveSessionRecordingTest, WithoutACameraRecordOnlyComesUpAgain)
{
    for (const int mode :
         {ModeNone, ModeDvsCamera, ModeFusionCamera, ModeDvsRecording, ModeFusionRecording}) {
        state.playMode = mode;
        const CapturedMessages messages;
        click(record);
        EXPECT_EQ(messages.debug(), (QStringList{QStringLiteral("Please connect camera first.")})) << mode;
        EXPECT_FALSE(record.isChecked());
        EXPECT_FALSE(session->isRecording());
    }
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(LiveSessionRecordingTest, RecordsToAFileNamedByDateAndTime)
{
    openCamera();
    const CapturedMessages messages;
    const QDateTime before = QDateTime::currentDateTime();
    click(record);
    const QDateTime after = QDateTime::currentDateTime();
    EXPECT_TRUE(record.isChecked());
    EXPECT_TRUE(session->isRecording());
    EXPECT_EQ(messages.debug().count(QStringLiteral("start recording...")), 1);
    ASSERT_EQ(paths().size(), 1);
    const QString folder = config.output_raw_file_path + QLatin1Char('/');
    const QString path = paths().constFirst();
    ASSERT_TRUE(path.startsWith(folder)) << path.toStdString();
    const QString name = path.mid(folder.size());
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^\\d{8}_\\d{6}\\.raw$")).match(name).hasMatch())
        << name.toStdString();
    const auto time = QDateTime::fromString(name.left(15), QStringLiteral("yyyyMMdd_HHmmss"));
    EXPECT_GE(time.toSecsSinceEpoch(), before.toSecsSinceEpoch());
    EXPECT_LE(time.toSecsSinceEpoch(), after.toSecsSinceEpoch());
}

TEST_F(LiveSessionRecordingTest, PressedTwiceItWritesOneFileAndNamesTheFolder)
{
    openCamera();
    click(record);
    const CapturedMessages messages;
    click(record);
    EXPECT_EQ(messages.debug(), (QStringList{QStringLiteral("stop recording")}));
    EXPECT_FALSE(record.isChecked());
    EXPECT_FALSE(session->isRecording());
    EXPECT_EQ(paths().size(), 1);
    EXPECT_EQ(log.count("S1 stopRecording"), 1);
    EXPECT_EQ(log.lines().back(), savedToast());
    EXPECT_EQ(toasts(), 1);
    EXPECT_TRUE(state.filePlaying) << "the view goes on";
}

TEST_F(LiveSessionRecordingTest, TwoRecordingsOfTheSameSecondAreGivenTheSamePath)
{
    openCamera();
    // One pair of ten at least falls into one second.
    bool same = false;
    for (int i = 0; i < 10 && !same; ++i) {
        log.clear();
        click(record);
        click(record);
        click(record);
        click(record);
        ASSERT_EQ(paths().size(), 2);
        same = paths().constFirst() == paths().constLast();
    }
    EXPECT_TRUE(same);
}

TEST_F(LiveSessionRecordingTest, AFolderIsHandedOverInLocalEncoding)
{
    openCamera();
    config.output_raw_file_path = QStringLiteral("/录像/ä");
    click(record);
    const std::string expected
        = "S1 startRecording " + config.output_raw_file_path.toLocal8Bit().toStdString() + '/';
    EXPECT_TRUE(log.lines().front().starts_with(expected)) << log.lines().front();
    click(record);
    EXPECT_EQ(log.lines().back(), savedToast());
}

TEST_F(LiveSessionRecordingTest, DoesNotDependOnWhetherTheViewRuns)
{
    openCamera();
    click(record);
    click(play);
    EXPECT_FALSE(play.isChecked());
    EXPECT_TRUE(session->isRecording());
    click(play);
    EXPECT_TRUE(session->isRecording());
    EXPECT_EQ(log.count("S1 stopRecording"), 0);
    click(record);
    EXPECT_TRUE(play.isChecked());

    click(play);
    click(record);
    EXPECT_TRUE(session->isRecording());
    EXPECT_FALSE(play.isChecked());
    click(record);
    EXPECT_EQ(log.count("S1 stopRecording"), 2);
}

TEST_F(LiveSessionRecordingTest, ShowsItsMinutesAndSecondsWhileItLasts)
{
    openCamera();
    EXPECT_TRUE(recordingTimes.isEmpty());
    click(record);
    ASSERT_FALSE(recordingTimes.isEmpty());
    EXPECT_EQ(recordingTimes.constFirst(), QStringLiteral("00:00"));
    ASSERT_TRUE(wait([this] { return recordingTimes.contains(QStringLiteral("00:01")); }));
    EXPECT_EQ(recordingTimes, (QStringList{QStringLiteral("00:00"), QStringLiteral("00:01")}))
        << "told when it changes only";
    click(record);
    EXPECT_EQ(recordingTimes.constLast(), QString());
    recordingTimes.clear();
    click(record);
    EXPECT_EQ(recordingTimes.constFirst(), QStringLiteral("00:00")) << "each recording counts from zero";
}

TEST_F(LiveSessionRecordingTest, ShowsNoTimeAnyMoreOnceItIsOver)
{
    openCamera();
    click(record);
    EXPECT_TRUE(std::ranges::any_of(session->findChildren<QTimer*>(), &QTimer::isActive));
    click(record);
    recordingTimes.clear();
    // Nothing is left that could tell one later.
    const auto timers = session->findChildren<QTimer*>();
    EXPECT_FALSE(timers.isEmpty());
    for (const QTimer* const timer : timers)
        EXPECT_FALSE(timer->isActive());
    EXPECT_TRUE(recordingTimes.isEmpty());
}

TEST_F(LiveSessionRecordingTest, ALostCameraEndsItsRecording)
{
    const auto camera = openCamera();
    click(record);
    camera->connected = false;
    ASSERT_TRUE(wait([this] { return !play.isChecked() && !record.isChecked(); }));
    EXPECT_FALSE(session->isRecording());
    EXPECT_EQ(log.count("S1 stopRecording"), 1);
    EXPECT_LT(log.at("S1 stopRecording"), log.at("S1 releaseStream 0"));
    EXPECT_EQ(log.count(savedToast()), 1);
    EXPECT_EQ(toasts(), 1);
}

TEST_F(LiveSessionRecordingTest, ACameraLostWhileTheViewStandsStillEndsItsRecordingToo)
{
    const auto camera = openCamera();
    click(play);
    click(record);
    camera->connected = false;
    ASSERT_TRUE(wait([this] { return !record.isChecked(); }));
    EXPECT_FALSE(session->isRecording());
    EXPECT_EQ(log.count("S1 stopRecording"), 1);
    EXPECT_EQ(toasts(), 1);
    EXPECT_EQ(recordingTimes.constLast(), QString());
}

TEST_F(LiveSessionRecordingTest, RecordPressedBeforeTheLossIsNoticedEndsTheRecording)
{
    const auto camera = openCamera();
    click(play);
    click(record);
    camera->connected = false;
    const CapturedMessages messages;
    click(record);
    EXPECT_TRUE(messages.debug().contains(QStringLiteral("Please connect camera first.")));
    EXPECT_FALSE(record.isChecked());
    EXPECT_FALSE(session->isRecording());
    EXPECT_EQ(log.count("S1 stopRecording"), 1);
    click(record);
    EXPECT_FALSE(record.isChecked());
    EXPECT_EQ(paths().size(), 1);
}

TEST_F(LiveSessionRecordingTest, ACameraThatIsReplacedEndsItsRecordingFirst)
{
    openCamera("S1");
    click(record);
    log.clear();
    backend->offer("S2", "Halvora");
    pick(1);
    EXPECT_EQ(log.at("source about to change, mode 1"), 0);
    EXPECT_EQ(log.at("S1 stopRecording"), 1);
    EXPECT_LT(log.at(savedToast()), log.at("S1 releaseStream 0"));
    EXPECT_FALSE(record.isChecked());
    EXPECT_FALSE(session->isRecording());
}

TEST_F(LiveSessionRecordingTest, ARecorderThatFailsIsToldOnceWithPathAndReason)
{
    const auto camera = openCamera();
    click(record);
    const CapturedMessages messages;
    camera->failRecorder("No space left on device");
    ASSERT_TRUE(wait([this] { return !record.isChecked(); }));
    EXPECT_FALSE(session->isRecording());
    EXPECT_EQ(log.count("S1 stopRecording"), 1);
    EXPECT_EQ(log.count(faultToast("No space left on device")), 1);
    EXPECT_EQ(toasts(), 1);
    EXPECT_EQ(recordingTimes.constLast(), QString());
    // The recorder itself logs it.
    EXPECT_EQ(messages.warnings(), QStringList());

    // The next recording is told of anew, and the view has gone on all the time.
    EXPECT_TRUE(play.isChecked());
    click(record);
    EXPECT_TRUE(record.isChecked());
    click(record);
    EXPECT_EQ(log.lines().back(), savedToast());
    EXPECT_EQ(toasts(), 2);
}

TEST_F(LiveSessionRecordingTest, AUsualReasonIsToldInTheInterfacesLanguageAnyOtherAsItIs)
{
    class Chinese : public QTranslator
    {
    public:
        bool isEmpty() const override { return false; }
        QString translate(const char* context, const char* text, const char*, int) const override
        {
            const bool usual = QByteArrayView(context) == "LiveSession"
                && QByteArrayView(text) == "the file has been removed";
            return usual ? QStringLiteral("文件已被删除") : QString();
        }
    };
    const auto camera = openCamera();
    Chinese chinese;
    ASSERT_TRUE(QCoreApplication::installTranslator(&chinese));
    for (const auto& [reason, told] :
         {std::pair("the file has been removed", "文件已被删除"), std::pair("odd 错误", "odd 错误")}) {
        click(record);
        camera->failRecorder(reason);
        ASSERT_TRUE(wait([this] { return !record.isChecked(); }));
        EXPECT_EQ(log.count(faultToast(told)), 1) << told;
    }
}

TEST_F(LiveSessionRecordingTest, ARecorderThatCannotBeginIsToldAtOnce)
{
    const auto camera = openCamera();
    camera->failRecorderAtStart("Permission denied");
    click(record);
    EXPECT_FALSE(record.isChecked());
    EXPECT_FALSE(session->isRecording());
    EXPECT_EQ(log.lines().back(), faultToast("Permission denied"));
    EXPECT_EQ(toasts(), 1);
}

TEST_F(LiveSessionRecordingTest, AFaultThatShowsOnlyWhenTheFileIsCompletedIsToldToo)
{
    const auto camera = openCamera();
    click(record);
    camera->failRecorderAtStop("Input/output error");
    click(record);
    EXPECT_EQ(log.count(savedToast()), 1);
    EXPECT_EQ(log.lines().back(), faultToast("Input/output error"))
        << "toasts cover each other: it is to be seen";
    EXPECT_EQ(toasts(), 2);
}
