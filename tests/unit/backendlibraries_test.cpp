#include "camera/plugins/backendlibraries.h"

#include "camera/driver/backend.h"
#include "camera/driver/dvscameramanager.h"
#include "tests/support/capturedmessages.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using korvane::plugins::loadBackendLibraries;

namespace {

constexpr std::chrono::seconds patience{20};

/// Libraries lie in a folder far from the build, as a camera maker's do.
class BackendLibraries : public testing::Test
{
protected:
    QString copied(const QString& library, const QString& name) const
    {
        const QString target = folder.filePath(name);
        EXPECT_TRUE(QFile::copy(library, target)) << library.toStdString();
        return target;
    }
    QString example() const
    {
        return copied(QStringLiteral(KORVANE_EXAMPLE_BACKEND), QStringLiteral("maker.so"));
    }
    /// Loads a library that is refused; the one line that says why, without the path it begins with.
    QString refusal(const QString& path) const
    {
        const CapturedMessages messages;
        EXPECT_TRUE(loadBackendLibraries(path).empty());
        const QStringList lines = messages.warnings();
        EXPECT_EQ(lines.size(), 1);
        const QString start = path + QStringLiteral(": is no backend that can be used: ");
        EXPECT_TRUE(lines.value(0).startsWith(start)) << lines.value(0).toStdString();
        return lines.value(0).mid(start.size());
    }
    QString refusalOfFault(int fault) const
    {
        const QString library = QStringLiteral(KORVANE_FAULTY_BACKENDS "/faultybackend%1.so").arg(fault);
        return refusal(copied(library, QStringLiteral("fault%1.so").arg(fault)));
    }

    QTemporaryDir folder;
};

} // namespace

TEST_F(BackendLibraries, ACameraOfALibraryIsListedOpenedStartedAndSeesEvents)
{
    const QString path = example();
    const CapturedMessages messages;
    auto backends = loadBackendLibraries(path);
    ASSERT_EQ(backends.size(), 1U);
    EXPECT_TRUE(messages.warnings().isEmpty());
    EXPECT_EQ(messages.of(QtInfoMsg), QStringList(path + QStringLiteral(": gives the backend movingbar")));
    korvane::registerBackend(backends.front());

    korvane::DvsCameraManager manager;
    const auto found = manager.getCameraDescs();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().serial, "EX-000001");
    EXPECT_EQ(found.front().product, "Halvora");
    EXPECT_EQ(found.front().backend, "movingbar");
    auto camera = manager.openCamera("EX-000001");
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(manager.openCamera("EX-000001"), nullptr) << "one owner at a time";

    // The backend may go; the camera stays.
    korvane::unregisterBackend(backends.front());
    backends.clear();
    ASSERT_EQ(camera->start(), 0);
    camera->setBatchTime(10000);
    std::vector<korvane::Event2D> batch;
    const auto begin = std::chrono::steady_clock::now();
    while (!camera->getNextEventBatch(batch) || batch.empty()) {
        ASSERT_LT(std::chrono::steady_clock::now() - begin, patience);
        std::this_thread::yield();
    }
    for (const auto& event : batch) {
        EXPECT_LT(event.x, 1280);
        EXPECT_LT(event.y, 720);
    }
    const auto biases = camera->getTool(korvane::ToolType::Biases);
    ASSERT_NE(biases, nullptr);
    EXPECT_TRUE(biases->setIntParameter("bias_diff_on", 20));
    EXPECT_FALSE(biases->setIntParameter("bias_diff_on", 51));
    int value = 0;
    EXPECT_TRUE(biases->getIntParameter("bias_diff_on", value));
    EXPECT_EQ(value, 20);
    camera->stop();
}

TEST_F(BackendLibraries, ALibraryOfAnotherVersionIsNotEvenAskedForItsBackend)
{
    EXPECT_EQ(refusalOfFault(1),
              QStringLiteral("it is made for version 2 of the boundary, this program has version 1"));
}

TEST_F(BackendLibraries, ALibraryWithoutTheEntryPointIsRefused)
{
    EXPECT_EQ(refusalOfFault(2), QStringLiteral("it lacks the symbol korvane_create_backend"));
}

TEST_F(BackendLibraries, ALibraryOfSomethingElseIsRefused)
{
    EXPECT_EQ(refusalOfFault(3), QStringLiteral("it lacks the symbol korvane_backend_version"));
}

TEST_F(BackendLibraries, AnEntryPointThatThrowsIsRefusedWithItsWords)
{
    EXPECT_EQ(refusalOfFault(4), QStringLiteral("korvane_create_backend threw: no licence"));
    EXPECT_EQ(refusalOfFault(5), QStringLiteral("korvane_create_backend threw"));
}

TEST_F(BackendLibraries, AnEntryPointThatMakesNothingIsRefused)
{
    EXPECT_EQ(refusalOfFault(6), QStringLiteral("korvane_create_backend made none"));
}

TEST_F(BackendLibraries, ALibraryThatLacksWhatItCallsIsRefused)
{
    EXPECT_EQ(refusalOfFault(7), QStringLiteral("undefined symbol: korvane_test_nowhere"));
}

TEST_F(BackendLibraries, AMissingFileIsTold)
{
    EXPECT_EQ(refusal(folder.filePath(QStringLiteral("missing.so"))),
              QStringLiteral("there is no such file"));
}

TEST_F(BackendLibraries, AFolderIsTold)
{
    EXPECT_EQ(refusal(folder.path()), QStringLiteral("it is no file"));
}

TEST_F(BackendLibraries, AFileThatIsNoLibraryIsTold)
{
    QFile file(folder.filePath(QStringLiteral("text.so")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("% format EVT3\nThis is not a library, however long it is made to be read as one.\n");
    file.close();
    EXPECT_EQ(refusal(file.fileName()), QStringLiteral("invalid ELF header"));
    QFile empty(folder.filePath(QStringLiteral("empty.so")));
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    empty.close();
    EXPECT_EQ(refusal(empty.fileName()), QStringLiteral("file too short"));
}

TEST_F(BackendLibraries, WhatIsRefusedStandsInNobodysWay)
{
    const CapturedMessages messages;
    const QString path = example();
    const QString missing = folder.filePath(QStringLiteral("missing.so"));
    // Empty entries are nothing, as in PATH; a relative one counts from the working directory.
    const QString relative = QDir::current().relativeFilePath(path);
    const auto backends = loadBackendLibraries(missing + QStringLiteral("::") + relative + QLatin1Char(':')
                                               + path + QLatin1Char(':'));
    ASSERT_EQ(backends.size(), 1U);
    EXPECT_EQ(backends.front()->name(), "movingbar");
    EXPECT_EQ(
        messages.warnings(),
        QStringList({missing + QStringLiteral(": is no backend that can be used: there is no such file"),
                     path + QStringLiteral(": is no backend that can be used: it is named twice")}));
}

TEST_F(BackendLibraries, NoListNoLibraries)
{
    const CapturedMessages messages;
    EXPECT_TRUE(loadBackendLibraries({}).empty());
    EXPECT_TRUE(messages.warnings().isEmpty());
}
