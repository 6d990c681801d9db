#include "camera/simulation/replaybackend.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/plainrecording.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using korvane::simulation::ReplayBackend;
using Serials = std::vector<std::string>;

class ReplayBackendTest : public testing::Test
{
protected:
    void write(const std::string& name) { writePlainRecording(folder, name, eventsAt({0, 40000})); }
    QString pathOf(const std::string& name) const { return QFile::decodeName(folder.path(name).c_str()); }
    std::unique_ptr<ReplayBackend> offer(const std::string& name = {}, std::set<std::string> taken = {}) const
    {
        return std::make_unique<ReplayBackend>(pathOf(name), std::move(taken));
    }
    static Serials serials(ReplayBackend& backend)
    {
        Serials found;
        for (const auto& camera : backend.cameraDescriptions()) {
            EXPECT_EQ(camera.product, "Halvora");
            EXPECT_EQ(camera.backend, "replay");
            found.push_back(camera.serial);
        }
        return found;
    }

    TemporaryRecordings folder;
};

} // namespace

TEST_F(ReplayBackendTest, OffersEveryRawFileOfAFolderByName)
{
    write("b.raw");
    write("a.RAW");
    write("notes.txt");
    ASSERT_TRUE(QDir(pathOf("")).mkdir(QStringLiteral("folder.raw")));
    EXPECT_EQ(serials(*offer()), (Serials{"a", "b"}));
}

TEST_F(ReplayBackendTest, OffersANamedFileWhateverItsSuffix)
{
    write("a.raw");
    write("events.bin");
    EXPECT_EQ(serials(*offer("events.bin")), (Serials{"events"}));
}

TEST_F(ReplayBackendTest, SerialsHaveTenCharactersAtMostAndEachIsAnother)
{
    for (const char* name :
         {"1234567890.raw", "12345678901.raw", "12345678902.raw", "12345678~2.raw", "20240131_154502.raw"})
        write(name);
    const auto backend = offer();
    const Serials found = serials(*backend);
    EXPECT_EQ(found, (Serials{"1234567890", "12345678~2", "12345678~3", "12345678~4", "20240131_1"}));
    for (const std::string& serial : found)
        EXPECT_NE(backend->openCamera(serial), nullptr) << serial;
}

TEST_F(ReplayBackendTest, ManyFilesThatBeginAlikeStillGetTenCharacters)
{
    for (int i = 0; i < 12; ++i)
        write("recording_" + std::to_string(100 + i) + ".raw");
    const Serials found = serials(*offer());
    ASSERT_EQ(found.size(), 12U);
    EXPECT_EQ(found.front(), "recording_");
    EXPECT_EQ(found.back(), "recordi~12");
}

TEST_F(ReplayBackendTest, SerialsOfOtherCamerasAreNotGivenAgain)
{
    write("HAL-000001.raw");
    EXPECT_EQ(serials(*offer("", {"HAL-000001"})), (Serials{"HAL-0000~2"}));
}

TEST_F(ReplayBackendTest, SerialsStayWhenFilesComeAndGo)
{
    write("recording_2.raw");
    write("recording_3.raw");
    const auto backend = offer();
    ASSERT_EQ(serials(*backend), (Serials{"recording_", "recordin~2"}));
    write("recording_1.raw");
    EXPECT_EQ(serials(*backend), (Serials{"recording_", "recordin~2", "recordin~3"}));
    ASSERT_TRUE(QFile::rename(pathOf("recording_2.raw"), pathOf("away")));
    EXPECT_EQ(serials(*backend), (Serials{"recordin~2", "recordin~3"}));
    EXPECT_EQ(backend->openCamera("recording_"), nullptr);
    ASSERT_TRUE(QFile::rename(pathOf("away"), pathOf("recording_2.raw")));
    EXPECT_EQ(serials(*backend), (Serials{"recording_", "recordin~2", "recordin~3"}));
}

TEST_F(ReplayBackendTest, NamesInAnyScriptAreCutBetweenCharacters)
{
    // Each of these characters takes two code units; the tenth unit is the first half of the fifth but one.
    const QString name = QStringLiteral("相") + QString::fromUtf8("𝄞𝄞𝄞𝄞𝄞") + QStringLiteral(".raw");
    const std::string local = name.toLocal8Bit().toStdString();
    write(local);
    const Serials found = serials(*offer());
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(QString::fromLocal8Bit(found.front().c_str()),
              QStringLiteral("相") + QString::fromUtf8("𝄞𝄞𝄞𝄞"));
}

TEST_F(ReplayBackendTest, WhatCannotBePlayedIsToldOnceAndNotListed)
{
    write("good.raw");
    folder.write("empty.raw", "", {});
    folder.write("text.raw", "This is no recording, it only pretends to be one by its name.\n", {});
    folder.write("silent.raw", TemporaryRecordings::header(korvane::recording::EvtEncoding::Evt2),
                 evt::words2({evt::high2(0), evt::high2(1), evt::high2(2)}));
    const CapturedMessages messages;
    const auto backend = offer();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(serials(*backend), (Serials{"good"}));
    EXPECT_EQ(backend->openCamera("empty"), nullptr);
    const QStringList warnings = messages.warnings();
    EXPECT_EQ(warnings.size(), 3) << warnings.join(QLatin1Char('\n')).toStdString();
    const auto told = [&warnings, this](const std::string& name, const char* reason) {
        return warnings.filter(pathOf(name) + QStringLiteral(": cannot be "))
            .filter(QLatin1String(reason))
            .size();
    };
    EXPECT_EQ(told("empty.raw", "the file is empty"), 1);
    EXPECT_EQ(told("text.raw", "text file"), 1);
    EXPECT_EQ(told("silent.raw", "no change event"), 1);
}

TEST_F(ReplayBackendTest, AFileThatBecomesARecordingIsOfferedThen)
{
    folder.write("late.raw", "", {});
    const CapturedMessages messages;
    const auto backend = offer();
    EXPECT_EQ(serials(*backend), Serials());
    write("late.raw");
    EXPECT_EQ(serials(*backend), (Serials{"late"}));
}

TEST_F(ReplayBackendTest, WhereNothingIsThatIsToldOnce)
{
    const CapturedMessages messages;
    const auto missing = offer("nowhere");
    const auto bare = offer();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(serials(*missing), Serials());
        EXPECT_EQ(serials(*bare), Serials());
    }
    EXPECT_EQ(missing->openCamera("nowhere"), nullptr);
    EXPECT_EQ(messages.warnings().filter(QStringLiteral("there is no such file or folder")).size(), 1);
    EXPECT_EQ(messages.warnings().filter(QStringLiteral("holds no .raw file")).size(), 1);
}

TEST_F(ReplayBackendTest, AFileThatIsGoneWhenItIsOpenedFailsWithItsReason)
{
    write("a.raw");
    const auto backend = offer();
    ASSERT_EQ(serials(*backend), (Serials{"a"}));
    ASSERT_TRUE(QFile::remove(pathOf("a.raw")));
    const CapturedMessages messages;
    EXPECT_EQ(backend->openCamera("a"), nullptr);
    EXPECT_EQ(messages.warnings(),
              (QStringList{pathOf("a.raw") + QStringLiteral(": cannot be replayed: there is no such file")}));
}

TEST_F(ReplayBackendTest, CanBeOpenedWithoutHavingBeenListed)
{
    write("a.raw");
    EXPECT_NE(offer()->openCamera("a"), nullptr);
    EXPECT_EQ(offer()->openCamera("b"), nullptr);
}
