#include "camera/plugins/backendlibraries.h"
#include "tests/e2e/livestoryfixture.h"
#include "tests/e2e/program.h"

#include <QFile>
#include <QTemporaryDir>

namespace {

/// The window with a camera whose backend came as a library.
class LibraryStory : public LiveStory
{
protected:
    void SetUp() override
    {
        const QString copy = folder.filePath(QStringLiteral("maker.so"));
        ASSERT_TRUE(QFile::copy(QStringLiteral(KORVANE_EXAMPLE_BACKEND), copy));
        const auto loaded = korvane::plugins::loadBackendLibraries(copy);
        ASSERT_EQ(loaded.size(), 1U);
        backend = loaded.front();
        korvane::registerBackend(backend);
        LiveStory::SetUp();
    }
    void TearDown() override
    {
        LiveStory::TearDown();
        korvane::unregisterBackend(backend);
    }

    QTemporaryDir folder;
    std::shared_ptr<korvane::Backend> backend;
};

} // namespace

TEST_F(LibraryStory, ACameraOfALibraryIsWatchedAndPausedLikeAnyOther)
{
    const QStringList rows = openFromTheList(0);
    ASSERT_EQ(rows.value(0), QStringLiteral("EX-000001"));
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && eventPixels() > 500; }));
    EXPECT_EQ(text("label_show_camera_info"), QStringLiteral("EX-000001"));
    QTest::mouseClick(button("pb_play"), Qt::LeftButton);
    EXPECT_FALSE(button("pb_play")->isChecked());
}

TEST(ShippedProgram, TakesCamerasFromLibrariesAndGoesOnWithoutTheBadOnes)
{
    const QTemporaryDir folder;
    const QString good = folder.filePath(QStringLiteral("maker.so"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(KORVANE_EXAMPLE_BACKEND), good));
    const QString bad = folder.filePath(QStringLiteral("bad.so"));
    QFile file(bad);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    Program program(QString(),
                    {QStringLiteral("--no-splash"), QStringLiteral("--camera"), QStringLiteral("EX-000001")},
                    bad + QLatin1Char(':') + good);
    EXPECT_TRUE(program.waitForLine(bad + QStringLiteral(": is no backend that can be used: file too short")))
        << program.text();
    EXPECT_TRUE(program.waitForLine(good + QStringLiteral(": gives the backend movingbar")))
        << program.text();
    EXPECT_TRUE(program.waitForLine(QStringLiteral("Select camera: EX-000001 product: Halvora")))
        << program.text();
    EXPECT_TRUE(program.isRunning());
}
