#include "app/config.h"

#include "tests/support/capturedmessages.h"
#include "tests/support/faultydisk.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <optional>
#include <thread>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString outputKey = u"Setting/output_raw_file_path"_s;
const QString inputKey = u"Setting/input_raw_file_path"_s;
const QString languageKey = u"Setting/language"_s;
const QString videoKey = u"Setting/video_save_path"_s;
const QStringList written{u"Write to config file."_s};

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
}

bool threadsAgree(const QString& fileName)
{
    std::array<std::atomic<const Config*>, 8> seen{};
    std::array<std::thread, 8> threads;
    for (std::size_t i = 0; i < threads.size(); ++i)
        threads[i] = std::thread([&seen, &fileName, i] { seen[i] = Config::getInstance(fileName); });
    for (std::thread& thread : threads)
        thread.join();
    const Config* only = Config::getInstance(fileName);
    return only->language == u"en"_s
        && std::all_of(seen.begin(), seen.end(), [only](const auto& config) { return config == only; });
}

// Every test has its own INI file and its own documents folder, which it names in the XDG user folders file.
class ConfigTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        setDocuments('"' + documents().toUtf8() + '"');
    }
    void TearDown() override { QFile::remove(userFolders()); }

    static QString userFolders() { return qEnvironmentVariable("XDG_CONFIG_HOME") + u"/user-dirs.dirs"_s; }
    static void setDocuments(const QByteArray& value)
    {
        writeFile(userFolders(), "XDG_DOCUMENTS_DIR=" + value + '\n');
    }
    static void removeDocuments() { setDocuments(""); }

    QString at(const QString& name) const { return folder.filePath(name); }
    QString ini() const { return at(u"config.ini"_s); }
    QString documents() const { return at(u"papers"_s); }
    QString defaultFolder() const { return documents() + u"/KorvaneData"_s; }
    QString existing(const QString& name) const
    {
        QDir().mkpath(at(name));
        return at(name);
    }

    void store(const QString& output, const QString& input, const QString& language,
               const QString& video) const
    {
        QSettings settings(ini(), QSettings::IniFormat);
        settings.setValue(outputKey, output);
        settings.setValue(inputKey, input);
        settings.setValue(languageKey, language);
        settings.setValue(videoKey, video);
    }
    QString stored(const QString& key) const
    {
        return QSettings(ini(), QSettings::IniFormat).value(key).toString();
    }

    QTemporaryDir folder;
};

} // namespace

TEST_F(ConfigTest, MissingFileGivesTheDefaultsAndMakesTheDefaultFolder)
{
    const CapturedMessages log;
    const Config config(ini());
    EXPECT_EQ(config.output_raw_file_path, defaultFolder());
    EXPECT_EQ(config.input_raw_file_path, defaultFolder());
    EXPECT_EQ(config.video_save_path, defaultFolder());
    EXPECT_EQ(config.language, u"en"_s);
    EXPECT_TRUE(QDir(defaultFolder()).exists());
    EXPECT_EQ(log.debug(), QStringList());
    EXPECT_EQ(log.warnings(), QStringList());
}

TEST_F(ConfigTest, FileThatIsNoIniFileGivesTheDefaults)
{
    writeFile(ini(), QByteArray("\x00\xff]=[\n\n[Setting\nlanguage", 24));
    const Config config(ini());
    EXPECT_EQ(config.output_raw_file_path, defaultFolder());
    EXPECT_EQ(config.language, u"en"_s);
}

TEST_F(ConfigTest, FolderInPlaceOfTheFileGivesTheDefaults)
{
    existing(u"config.ini"_s);
    const Config config(ini());
    EXPECT_EQ(config.input_raw_file_path, defaultFolder());
    EXPECT_EQ(config.video_save_path, defaultFolder());
    EXPECT_EQ(config.language, u"en"_s);
}

TEST_F(ConfigTest, AFileWithSerialisedObjectsIsSetAsideAndGivesTheDefaults)
{
    // Read as an object, the first asks for 48 GB.
    for (const QByteArray& value :
         {QByteArray("@Variant(\\0\\0\\0\\t\\x7f\\xff\\xff\\xff)"), QByteArray("a, @Variant(x)"),
          QByteArray("\"@Variant(x)\""), QByteArray("\\x40Variant(x)"), QByteArray("\\100Variant(x)"),
          QByteArray("@\\x56ariant(x)"), QByteArray("@DateTime(x)"), QByteArray(2000000, 'x')}) {
        const QByteArray content = "[Setting]\nlanguage=zh\nforeign=" + value + '\n';
        const QString path = QDir::current().filePath(u"hostile.ini"_s);
        writeFile(path, content);
        const CapturedMessages messages;
        {
            const Config config(path);
            EXPECT_EQ(config.language, u"en"_s) << value.left(40).toStdString();
        }
        EXPECT_EQ(
            messages.warnings(),
            QStringList(path + u": holds what no settings are; it is kept as "_s + path + u".unusable"_s));
        EXPECT_EQ(contentOf(path + u".unusable"_s), content) << "nothing is lost";
        EXPECT_TRUE(contentOf(path).contains("language=en")) << "written at the end as ever";
    }
}

TEST_F(ConfigTest, AFileThatCannotBeSetAsideIsLeftAloneAndItsPlaceIsTakenByAnother)
{
    const QByteArray content = "[Setting]\nlanguage=@Variant(x)\n";
    const QString path = QDir::current().filePath(u"stuck.ini"_s);
    writeFile(path, content);
    // A folder that is not empty stands where the file would be put.
    ASSERT_TRUE(QDir::current().mkpath(u"stuck.ini.unusable/full"_s));
    const CapturedMessages messages;
    {
        const Config config(path);
        EXPECT_EQ(config.language, u"en"_s);
    }
    EXPECT_EQ(messages.warnings(),
              QStringList(path + u": holds what no settings are; the defaults are taken"_s));
    EXPECT_EQ(contentOf(path), content) << "nothing is lost";
    EXPECT_TRUE(contentOf(path + u".new"_s).contains("language=en"));
}

TEST_F(ConfigTest, TextsThatOnlyLookLikeObjectsAreKept)
{
    const QString path = QDir::current().filePath(u"texts.ini"_s);
    writeFile(path, "[Setting]\nlanguage=zh\nforeign=@@Variant(x)\nmail=a@Variant(b)\nnothing=@Invalid()\n");
    const CapturedMessages messages;
    const Config config(path);
    EXPECT_EQ(config.language, u"zh"_s);
    EXPECT_TRUE(messages.warnings().isEmpty());
}

TEST_F(ConfigTest, OutputFolderThatIsGoneIsReplacedByTheDefaultFolder)
{
    store(at(u"gone"_s), existing(u"in"_s), u"en"_s, existing(u"video"_s));
    ASSERT_FALSE(QDir(defaultFolder()).exists());
    const Config config(ini());
    EXPECT_EQ(config.output_raw_file_path, defaultFolder());
    EXPECT_EQ(config.input_raw_file_path, at(u"in"_s));
    EXPECT_EQ(config.video_save_path, at(u"video"_s));
    EXPECT_TRUE(QDir(defaultFolder()).exists());
    EXPECT_FALSE(QDir(at(u"gone"_s)).exists());
}

TEST_F(ConfigTest, InputFolderThatIsGoneIsReplacedByTheDefaultFolder)
{
    store(existing(u"out"_s), at(u"gone"_s), u"en"_s, existing(u"video"_s));
    const Config config(ini());
    EXPECT_EQ(config.output_raw_file_path, at(u"out"_s));
    EXPECT_EQ(config.input_raw_file_path, defaultFolder());
    EXPECT_TRUE(QDir(defaultFolder()).exists());
}

TEST_F(ConfigTest, VideoFolderThatIsGoneIsReplacedByTheDefaultFolder)
{
    store(existing(u"out"_s), existing(u"in"_s), u"en"_s, at(u"gone"_s));
    const Config config(ini());
    EXPECT_EQ(config.input_raw_file_path, at(u"in"_s));
    EXPECT_EQ(config.video_save_path, defaultFolder());
    EXPECT_TRUE(QDir(defaultFolder()).exists());
}

TEST_F(ConfigTest, FoldersThatExistOutsideTheDocumentsAreKeptAsTheyStand)
{
    const QString odd = existing(u"a, b; \"c\" = 数据 %20"_s);
    const QString untidy = existing(u"in"_s) + u"/../in/"_s;
    // What a mounted share may be called: no object, though its '@' follows '=' or a comma.
    const QString share = existing(u"share=@pub, @home\\x40"_s);
    store(odd, untidy, u"zh"_s, share);
    const CapturedMessages messages;
    const Config config(ini());
    EXPECT_EQ(messages.warnings(), QStringList());
    EXPECT_EQ(config.output_raw_file_path, odd);
    EXPECT_EQ(config.input_raw_file_path, untidy);
    EXPECT_EQ(config.video_save_path, share);
    EXPECT_EQ(config.language, u"zh"_s);
    EXPECT_FALSE(QDir(defaultFolder()).exists());
}

TEST_F(ConfigTest, StoredFileIsNoFolder)
{
    const QString file = at(u"recording.raw"_s);
    writeFile(file, "x");
    store(file, file, u"en"_s, file);
    const Config config(ini());
    EXPECT_EQ(config.output_raw_file_path, defaultFolder());
    EXPECT_EQ(config.input_raw_file_path, defaultFolder());
    EXPECT_EQ(config.video_save_path, defaultFolder());
}

TEST_F(ConfigTest, DefaultFolderIsMadeWithMissingParents)
{
    setDocuments('"' + at(u"not/yet/there"_s).toUtf8() + '"');
    const Config config(ini());
    EXPECT_EQ(config.output_raw_file_path, at(u"not/yet/there/KorvaneData"_s));
    EXPECT_TRUE(QDir(config.output_raw_file_path).exists());
}

TEST_F(ConfigTest, LanguagesOtherThanEnAndZhBecomeEn)
{
    for (const QString& language : {u"fr"_s, u"EN"_s, u"ZH"_s, u"zh_CN"_s, u" zh"_s, QString()}) {
        store(existing(u"out"_s), existing(u"in"_s), language, existing(u"video"_s));
        EXPECT_EQ(Config(ini()).language, u"en"_s) << language.toStdString();
    }
}

TEST_F(ConfigTest, LanguagesEnAndZhAreKept)
{
    for (const QString& language : {u"en"_s, u"zh"_s}) {
        store(existing(u"out"_s), existing(u"in"_s), language, existing(u"video"_s));
        EXPECT_EQ(Config(ini()).language, language);
    }
}

TEST_F(ConfigTest, WithoutDocumentsAnUnusableOutputFolderEndsLoadingSilently)
{
    removeDocuments();
    store(at(u"gone"_s), existing(u"in"_s), u"zh"_s, existing(u"video"_s));
    const CapturedMessages log;
    const Config config(ini());
    EXPECT_EQ(config.output_raw_file_path, at(u"gone"_s));
    EXPECT_EQ(config.input_raw_file_path, QString());
    EXPECT_EQ(config.language, QString());
    EXPECT_EQ(config.video_save_path, QString());
    EXPECT_EQ(log.warnings(), QStringList());
    EXPECT_EQ(log.debug(), QStringList());
}

TEST_F(ConfigTest, WithoutDocumentsAnUnusableInputFolderEndsLoadingWithAWarning)
{
    removeDocuments();
    store(existing(u"out"_s), at(u"gone"_s), u"zh"_s, existing(u"video"_s));
    const CapturedMessages log;
    const Config config(ini());
    EXPECT_EQ(config.output_raw_file_path, at(u"out"_s));
    EXPECT_EQ(config.input_raw_file_path, at(u"gone"_s));
    EXPECT_EQ(config.language, QString());
    EXPECT_EQ(config.video_save_path, QString());
    EXPECT_EQ(log.warnings(), QStringList{u"Unable to get documents location."_s});
    EXPECT_EQ(log.debug(), QStringList());
}

TEST_F(ConfigTest, WithoutDocumentsAnUnusableVideoFolderIsPassedOverSilently)
{
    removeDocuments();
    store(existing(u"out"_s), existing(u"in"_s), u"zh"_s, at(u"gone"_s));
    const CapturedMessages log;
    const Config config(ini());
    EXPECT_EQ(config.input_raw_file_path, at(u"in"_s));
    EXPECT_EQ(config.language, u"zh"_s);
    EXPECT_EQ(config.video_save_path, at(u"gone"_s));
    EXPECT_EQ(log.warnings(), QStringList());
    EXPECT_EQ(log.debug(), QStringList());
}

TEST_F(ConfigTest, WithoutDocumentsStoredFoldersThatExistAreEnough)
{
    removeDocuments();
    store(existing(u"out"_s), existing(u"in"_s), u"zh"_s, existing(u"video"_s));
    const Config config(ini());
    EXPECT_EQ(config.output_raw_file_path, at(u"out"_s));
    EXPECT_EQ(config.video_save_path, at(u"video"_s));
}

TEST_F(ConfigTest, FailureToMakeTheOutputFolderIsNotReported)
{
    writeFile(documents(), "a file where the documents folder should be");
    store(at(u"gone"_s), existing(u"in"_s), u"zh"_s, existing(u"video"_s));
    const CapturedMessages log;
    const Config config(ini());
    EXPECT_EQ(config.output_raw_file_path, defaultFolder());
    EXPECT_EQ(config.input_raw_file_path, at(u"in"_s));
    EXPECT_EQ(config.language, u"zh"_s);
    EXPECT_EQ(log.debug(), QStringList());
    EXPECT_EQ(log.warnings(), QStringList());
}

TEST_F(ConfigTest, FailureToMakeTheInputFolderIsLoggedAndLoadingGoesOn)
{
    writeFile(documents(), "a file where the documents folder should be");
    store(existing(u"out"_s), at(u"gone"_s), u"zh"_s, existing(u"video"_s));
    const CapturedMessages log;
    const Config config(ini());
    EXPECT_EQ(config.input_raw_file_path, defaultFolder());
    EXPECT_EQ(config.language, u"zh"_s);
    EXPECT_EQ(config.video_save_path, at(u"video"_s));
    EXPECT_EQ(log.debug(), QStringList{u"Create raw file path failed."_s});
}

TEST_F(ConfigTest, FailureToMakeTheVideoFolderIsLoggedWithTheRecordingsText)
{
    writeFile(documents(), "a file where the documents folder should be");
    store(existing(u"out"_s), existing(u"in"_s), u"zh"_s, at(u"gone"_s));
    const CapturedMessages log;
    const Config config(ini());
    EXPECT_EQ(config.video_save_path, defaultFolder());
    EXPECT_EQ(log.debug(), QStringList{u"Create raw file path failed."_s});
}

TEST_F(ConfigTest, LoadingWritesNothing)
{
    const QByteArray before = "[Setting]\nlanguage=fr\n";
    writeFile(ini(), before);
    const Config config(ini());
    EXPECT_EQ(config.language, u"en"_s);
    EXPECT_EQ(contentOf(ini()), before);
}

TEST_F(ConfigTest, SaveWritesTheMembersAsTheyStandAndLogs)
{
    Config config(ini());
    config.output_raw_file_path = u"/nowhere/out, put"_s;
    config.input_raw_file_path = u"/nowhere/input"_s;
    config.language = u"zh"_s;
    config.video_save_path = u"/nowhere/视频"_s;
    {
        const CapturedMessages log;
        config.save();
        EXPECT_EQ(log.debug(), written);
    }
    EXPECT_TRUE(contentOf(ini()).startsWith("[Setting]\n"));
    EXPECT_EQ(stored(outputKey), u"/nowhere/out, put"_s);
    EXPECT_EQ(stored(inputKey), u"/nowhere/input"_s);
    EXPECT_EQ(stored(languageKey), u"zh"_s);
    EXPECT_EQ(stored(videoKey), u"/nowhere/视频"_s);
}

TEST_F(ConfigTest, SaveReachesTheDiskAtOnce)
{
    Config config(ini());
    config.language = u"zh"_s;
    config.save();
    EXPECT_TRUE(contentOf(ini()).contains("language=zh\n"));
    config.language = u"en"_s;
    config.save();
    EXPECT_TRUE(contentOf(ini()).contains("language=en\n"));
}

TEST_F(ConfigTest, SaveLeavesForeignKeysAlone)
{
    writeFile(ini(), "[Other]\nkey=kept\n");
    Config config(ini());
    config.save();
    EXPECT_TRUE(contentOf(ini()).contains("[Other]\nkey=kept\n"));
}

TEST_F(ConfigTest, DestructionOfAConfigFromAFileWithoutKeysWritesAllFour)
{
    writeFile(ini(), "");
    auto config = std::make_optional<Config>(ini());
    EXPECT_EQ(contentOf(ini()), QByteArray());
    {
        const CapturedMessages log;
        config.reset();
        EXPECT_EQ(log.debug(), written);
    }
    EXPECT_EQ(stored(outputKey), defaultFolder());
    EXPECT_EQ(stored(inputKey), defaultFolder());
    EXPECT_EQ(stored(languageKey), u"en"_s);
    EXPECT_EQ(stored(videoKey), defaultFolder());
    EXPECT_EQ(contentOf(ini()).count('='), 4);
}

TEST_F(ConfigTest, RelativeNameMeansTheWorkingDirectoryAtCreation)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(existing(u"first"_s)));
    {
        const Config config(u"config.ini"_s);
        ASSERT_TRUE(QDir::setCurrent(existing(u"second"_s)));
    }
    EXPECT_TRUE(QFile::exists(at(u"first/config.ini"_s)));
    EXPECT_FALSE(QFile::exists(at(u"second/config.ini"_s)));
    QDir::setCurrent(before);
}

TEST_F(ConfigTest, FileThatCannotBeWrittenIsNoError)
{
    existing(u"config.ini"_s);
    const CapturedMessages log;
    {
        Config config(ini());
        config.save();
    }
    EXPECT_EQ(log.debug(), written + written);
    EXPECT_EQ(log.warnings().filter(ini() + u": the settings cannot be written"_s).size(), 2);
}

TEST_F(ConfigTest, AFullDiskKeepsTheOldSettingsWholeAndIsLogged)
{
    store(existing(u"out"_s), existing(u"in"_s), u"en"_s, existing(u"video"_s));
    const QByteArray before = contentOf(ini());
    const CapturedMessages log;
    Config config(ini());
    {
        FaultyDisk disk(folder.path());
        for (const unsigned room : {0U, 20U}) {
            disk.setRoom(room);
            config.language = u"zh"_s;
            config.save();
            EXPECT_EQ(contentOf(ini()), before);
        }
        EXPECT_EQ(log.warnings().filter(ini() + u": the settings cannot be written"_s).size(), 2);
    }
    // With room again they are written as they stand.
    config.save();
    EXPECT_EQ(stored(languageKey), u"zh"_s);
    EXPECT_EQ(stored(outputKey), at(u"out"_s));
}

TEST_F(ConfigTest, AFileWhoseFolderIsRemovedMeanwhileIsWrittenAgain)
{
    existing(u"gone"_s);
    const QString file = at(u"gone/config.ini"_s);
    const CapturedMessages log;
    Config config(file);
    ASSERT_TRUE(QDir(at(u"gone"_s)).removeRecursively());
    config.language = u"zh"_s;
    config.save();
    EXPECT_EQ(log.debug().count(written.constFirst()), 1);
    EXPECT_TRUE(QFile::exists(file));
}

// The one Config of a process writes its file when the process ends, so these run in a process of their own.

TEST_F(ConfigTest, TheOneConfigWritesItsFileAtProcessExit)
{
    writeFile(ini(), "");
    EXPECT_EXIT(
        {
            Config::getInstance(ini())->language = u"zh"_s;
            std::exit(contentOf(ini()).isEmpty() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "Write to config file\\.");
    EXPECT_EQ(contentOf(ini()).count('='), 4);
    EXPECT_TRUE(contentOf(ini()).contains("language=zh\n"));
}

TEST_F(ConfigTest, EveryCallerGetsTheConfigOfTheFirstCall)
{
    EXPECT_EXIT(
        {
            const Config* first = Config::getInstance(ini());
            const Config* second = Config::getInstance(at(u"other.ini"_s));
            std::exit(first == second ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_TRUE(QFile::exists(ini()));
    EXPECT_FALSE(QFile::exists(at(u"other.ini"_s)));
}

TEST_F(ConfigTest, ThreadsThatAskAtTheSameTimeGetTheSameConfig)
{
    EXPECT_EXIT(std::exit(threadsAgree(ini()) ? 0 : 1), testing::ExitedWithCode(0), "");
}
