#include "tests/e2e/rangesavingstory.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/exportedvideo.h"

using namespace Qt::Literals::StringLiterals;

namespace {

TEST_F(RangeSavingStory, PointsSetWithTheMouseAreCutOpenedAndExported)
{
    openPaused(path);
    pick("menu_viewer_setting", u"Toggle Start/End Point"_s);
    const int width = timeline()->width();
    // The end handle first: the playhead at the start leaves it room; the start handle follows the playhead.
    drag(width - 3, width * 3 / 4);
    QTest::mouseClick(timeline(), Qt::LeftButton, {}, QPoint(width / 2, timeline()->height() / 2));
    drag(3, width / 4);
    const int start = timeline()->effectiveLowerValue();
    const int end = timeline()->effectiveUpperValue();
    ASSERT_GT(start, 500'000);
    ASSERT_LT(start, 1'000'000);
    ASSERT_GT(end, 2'000'000);
    ASSERT_LT(end, 2'500'000);

    QString cut;
    save<KvCutRawFile>([&](KvCutRawFile& dialog) {
        EXPECT_EQ(dialog.startTime(), static_cast<std::uint64_t>(start));
        EXPECT_EQ(dialog.endTime(), static_cast<std::uint64_t>(end));
        cut = dialog.fullPath();
    });
    ASSERT_TRUE(wait([] { return toasts().contains(u"Export raw file success!"_s); }));
    EXPECT_EQ(files(), QStringList{QFileInfo(cut).fileName()});

    std::vector<korvane::Event2D> expected;
    for (const korvane::Event2D& event : eventsOf(path)) {
        if (event.timestamp >= static_cast<std::uint64_t>(start)
            && event.timestamp <= static_cast<std::uint64_t>(end))
            expected.push_back(event);
    }
    const auto found = eventsOf(cut);
    ASSERT_FALSE(expected.empty());
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        ASSERT_EQ(found[i].x, expected[i].x) << i;
        ASSERT_EQ(found[i].y, expected[i].y) << i;
        ASSERT_EQ(found[i].polarity, expected[i].polarity) << i;
        ASSERT_EQ(found[i].timestamp - found.front().timestamp,
                  expected[i].timestamp - expected.front().timestamp)
            << i;
    }

    openPaused(cut);
    EXPECT_EQ(timeline()->maximum() - timeline()->minimum(),
              expected.back().timestamp - expected.front().timestamp);
    const QString base = QFileInfo(cut).completeBaseName();
    save<KvExportVideoUI>([&](KvExportVideoUI& dialog) {
        EXPECT_EQ(dialog.startTime(), timeline()->minimum());
        EXPECT_EQ(dialog.endTime(), timeline()->maximum());
        dialog.setFileName(base + u".mp4"_s);
    });
    ASSERT_TRUE(wait([] { return toasts().contains(u"Export video success!"_s); }));
    // The name is taken by the recording, with which the video would be one.
    EXPECT_EQ(files(), (QStringList{base + u"-1.mp4"_s, base + u".raw"_s}));
    const QString exported = folder + u'/' + base + u"-1.mp4"_s;
    const auto reader = korvane::DvsFileReader::createFileReader(cut.toLocal8Bit().toStdString());
    ASSERT_TRUE(reader && reader->loadFile());
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    reader->getStartTimestamp(first);
    reader->getEndTimestamp(last);
    expectVideoLikeTheView(*reader, exported, first, last, EventFrameBuffer::width, EventFrameBuffer::height);

    // Even beside its recording the video makes it none of a fusion camera: it can still be stepped.
    ASSERT_TRUE(QFile::rename(exported, folder + u'/' + base + u".mp4"_s));
    openPaused(cut);
    const int before = timeline()->centerValue();
    click("pb_next");
    EXPECT_EQ(timeline()->centerValue(), before + 30303);
}

TEST_F(RangeSavingStory, ABrokenVideoBesideARecordingIsNamedOnTheScreen)
{
    const QString broken = folder + u"/broken.raw"_s;
    ASSERT_TRUE(QFile::copy(path, broken));
    ASSERT_TRUE(evt::writeFile(folder + u"/broken.mp4"_s, "This is no video.", {}));
    window->openRecording(broken);
    ASSERT_TRUE(wait([] { return !toasts().isEmpty(); }));
    EXPECT_TRUE(toasts().contains(u"Load fusion file failed: broken.raw"_s))
        << toasts().join(u'|').toStdString();
    EXPECT_FALSE(button("pb_play")->isChecked());
    // Another recording opens after it.
    openPaused(path);
    EXPECT_EQ(timeline()->maximum(), 2'999'000u);
}

TEST_F(RangeSavingStory, PlaybackStopsForTheDialogAndStaysStopped)
{
    window->openRecording(path);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked(); }));
    save<KvCutRawFile>([this](KvCutRawFile& dialog) {
        EXPECT_FALSE(button("pb_play")->isChecked());
        dialog.setFileName(u"x.raw"_s);
    });
    ASSERT_TRUE(wait([] { return toasts().contains(u"Export raw file success!"_s); }));
    EXPECT_FALSE(button("pb_play")->isChecked());
    EXPECT_EQ(files(), QStringList{u"x.raw"_s});
}

TEST_F(RangeSavingStory, BadRangesFoldersAndNamesLeaveNoFile)
{
    openPaused(path);
    const auto refused = [this](const std::function<void(KvCutRawFile&)>& change) {
        const CapturedMessages messages;
        save<KvCutRawFile>(change);
        EXPECT_EQ(messages.warnings().filter(u": cannot be cut from "_s + path).size(), 1);
        return files().isEmpty() && toasts().isEmpty();
    };
    const auto type = [](KvCutRawFile& dialog, const char* field, const QString& text) {
        dialog.findChild<QLineEdit*>(QString::fromLatin1(field))->setText(text);
    };
    EXPECT_TRUE(refused([](KvCutRawFile& dialog) {
        dialog.setStartTime(2'000'000);
        dialog.setEndTime(1'000'000);
    })) << "backwards";
    EXPECT_TRUE(refused([](KvCutRawFile& dialog) {
        dialog.setStartTime(5'000'000);
        dialog.setEndTime(6'000'000);
    })) << "beyond the end";
    EXPECT_TRUE(refused([](KvCutRawFile& dialog) { dialog.setFileName(u".."_s); }));
    EXPECT_TRUE(refused([](KvCutRawFile& dialog) { dialog.setFileName(QString()); })) << "a folder's name";
    EXPECT_TRUE(refused([](KvCutRawFile& dialog) { dialog.setSavePath(u"/proc/nowhere"_s); }));
    EXPECT_TRUE(refused([this](KvCutRawFile& dialog) {
        dialog.setSavePath(path);
        dialog.setFileName(u"x.raw"_s);
    })) << "a file for a folder";
    // A slash makes a folder.
    save<KvCutRawFile>([](KvCutRawFile& dialog) { dialog.setFileName(u"a/folder.raw"_s); });
    ASSERT_TRUE(wait([] { return !toasts().isEmpty(); }));
    EXPECT_FALSE(eventsOf(folder + u"/a/folder.raw"_s).empty());
    EXPECT_TRUE(files().isEmpty());
    // An export that fails leaves nothing either; its toast comes all the same.
    save<KvExportVideoUI>([](KvExportVideoUI& dialog) { dialog.setSavePath(u"/proc/nowhere"_s); });
    EXPECT_TRUE(wait([] { return toasts().contains(u"Export video success!"_s); }));
    EXPECT_TRUE(files().isEmpty());
    // After all of it the window works, and text for a start means the start.
    save<KvCutRawFile>([&type](KvCutRawFile& dialog) {
        type(dialog, "le_start_time", u"abc"_s);
        type(dialog, "le_end_time", u"10500"_s);
        dialog.setFileName(u"录像.raw"_s);
    });
    ASSERT_TRUE(wait([] { return toasts().contains(u"Export raw file success!"_s); }));
    EXPECT_EQ(files(), QStringList{u"录像.raw"_s});
    EXPECT_EQ(eventsOf(folder + u"/录像.raw"_s).size(), 11u * 90u);
}

} // namespace
