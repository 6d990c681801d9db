#include "camera/recording/mappedfile.h"

#include "tests/support/failingdevice.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace korvane::recording;

namespace {

class MappedFileTest : public testing::Test
{
protected:
    QString write(const char* name, qint64 size, char byte = 'x')
    {
        const QString path = folder.filePath(QString::fromLatin1(name));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(QByteArray(size, byte)), size);
        return path;
    }

    static bool isFilledWith(std::span<const std::uint8_t> bytes, std::uint8_t value)
    {
        return std::all_of(bytes.begin(), bytes.end(), [value](std::uint8_t byte) { return byte == value; });
    }

    QTemporaryDir folder;
};

TEST_F(MappedFileTest, ShowsTheWholeFile)
{
    MappedFile file(write("whole", 100001));
    ASSERT_TRUE(file.open());
    EXPECT_EQ(file.bytes().size(), 100001u);
    EXPECT_TRUE(isFilledWith(file.bytes(), 'x'));
    EXPECT_EQ(file.currentSize(), 100001u);
    EXPECT_TRUE(file.errorString().isEmpty());
}

TEST_F(MappedFileTest, SaysWhyAFileCannotBeMapped)
{
    for (const QString& path :
         {folder.filePath(QStringLiteral("missing")), folder.path(), write("empty", 0)}) {
        MappedFile file(path);
        EXPECT_FALSE(file.open()) << path.toStdString();
        EXPECT_FALSE(file.errorString().isEmpty()) << path.toStdString();
        EXPECT_TRUE(file.bytes().empty());
    }
}

TEST_F(MappedFileTest, LostBytesOfAFileThatShrinksReadAsZeros)
{
    const QString path = write("shrinks", 1000000);
    MappedFile file(path);
    ASSERT_TRUE(file.open());
    ASSERT_TRUE(QFile::resize(path, 300000));
    EXPECT_EQ(file.currentSize(), 300000u);
    EXPECT_EQ(file.bytes().size(), 1000000u);
    EXPECT_TRUE(isFilledWith(file.bytes().first(300000), 'x'));
    EXPECT_TRUE(isFilledWith(file.bytes().subspan(300000), 0));
}

TEST_F(MappedFileTest, TellsWhatTheDeviceCouldNotRead)
{
    const QString path = write("failing", 1 << 20);
    MappedFile file(path);
    ASSERT_TRUE(file.open());
    failReads(QFile::encodeName(path).toStdString(), 500000, 4096);
    EXPECT_FALSE(file.hasLost(0, 1 << 20)) << "nothing has been read yet";
    EXPECT_TRUE(isFilledWith(file.bytes().first(400000), 'x'));
    EXPECT_FALSE(file.hasLost(0, 1 << 20));
    EXPECT_EQ(file.bytes()[501000], 0);
    EXPECT_TRUE(file.hasLost(0, 1 << 20));
    EXPECT_TRUE(file.hasLost(501000, 501001));
    EXPECT_FALSE(file.hasLost(0, 400000));
    EXPECT_FALSE(file.hasLost(600000, 1 << 20));
    EXPECT_FALSE(file.hasLost(501000, 501000));
    EXPECT_EQ(file.currentSize(), 1u << 20);
}

TEST_F(MappedFileTest, AFileThatShrinksToNothingReadsAsZeros)
{
    const QString path = write("vanishes", 50000);
    MappedFile file(path);
    ASSERT_TRUE(file.open());
    ASSERT_TRUE(QFile::resize(path, 0));
    EXPECT_EQ(file.currentSize(), 0u);
    EXPECT_TRUE(isFilledWith(file.bytes(), 0));
    file.willNeed(0, 50000);
}

TEST_F(MappedFileTest, ARemovedFileStaysReadable)
{
    const QString path = write("removed", 50000);
    MappedFile file(path);
    ASSERT_TRUE(file.open());
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_EQ(file.currentSize(), 50000u);
    EXPECT_TRUE(isFilledWith(file.bytes(), 'x'));
}

TEST_F(MappedFileTest, AFileThatGrowsKeepsItsMapping)
{
    const QString path = write("grows", 5000);
    MappedFile file(path);
    ASSERT_TRUE(file.open());
    ASSERT_TRUE(QFile::resize(path, 100000));
    EXPECT_EQ(file.currentSize(), 5000u);
    EXPECT_EQ(file.bytes().size(), 5000u);
}

TEST_F(MappedFileTest, EveryMappingIsGuardedByItself)
{
    // More at once than anybody opens, then some of them gone, then new ones in their places.
    std::vector<std::unique_ptr<MappedFile>> files;
    std::vector<QString> paths;
    const auto add = [&](int i) {
        paths.push_back(write(QByteArray::number(i).constData(), 20000));
        files.push_back(std::make_unique<MappedFile>(paths.back()));
        ASSERT_TRUE(files.back()->open());
    };
    for (int i = 0; i < 100; ++i)
        add(i);
    for (std::size_t i = 0; i < 100; i += 2)
        files[i].reset();
    for (int i = 100; i < 150; ++i)
        add(i);
    for (const QString& path : paths)
        ASSERT_TRUE(QFile::resize(path, 1));
    for (const auto& file : files) {
        if (file) {
            EXPECT_TRUE(isFilledWith(file->bytes().subspan(1), 0));
        }
    }
}

TEST_F(MappedFileTest, AMappingIsGuardedHoweverManyCameBeforeIt)
{
    const QString path = write("again", 20000);
    for (int i = 0; i < 600; ++i) {
        MappedFile file(path);
        ASSERT_TRUE(file.open());
    }
    MappedFile file(path);
    ASSERT_TRUE(file.open());
    ASSERT_TRUE(QFile::resize(path, 0));
    EXPECT_TRUE(isFilledWith(file.bytes(), 0));
}

TEST_F(MappedFileTest, WillNeedTakesAnyRange)
{
    MappedFile file(write("hint", 10000));
    ASSERT_TRUE(file.open());
    file.willNeed(0, 10000);
    file.willNeed(5000, 1);
    file.willNeed(9999, 1000000);
    file.willNeed(10000, 10);
    file.willNeed(1u << 30, 10);
    EXPECT_TRUE(isFilledWith(file.bytes(), 'x'));
}

TEST_F(MappedFileTest, OtherMappingsAreNotGuarded)
{
    MappedFile guarded(write("guarded", 10000));
    ASSERT_TRUE(guarded.open());
    const QByteArray path = QFile::encodeName(write("foreign", 10000));
    EXPECT_DEATH(
        {
            const int handle = open(path.constData(), O_RDWR | O_CLOEXEC);
            const void* const memory = mmap(nullptr, 10000, PROT_READ, MAP_SHARED, handle, 0);
            if (ftruncate(handle, 0) == 0)
                _exit(*static_cast<const volatile char*>(memory) == 0 ? 0 : 1);
        },
        "");
}

} // namespace
