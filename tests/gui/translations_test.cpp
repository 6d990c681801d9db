#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString sources = QStringLiteral(TRANSLATIONS_SOURCE_DIR);
const QStringList files{u"app_en.ts"_s, u"app_zh.ts"_s};

struct Entry
{
    QString context;
    QString source;
    QString translation;
    bool finished;
};

QString pathOf(const QString& file)
{
    return sources + u"/resources/translations/"_s + file;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::vector<Entry> entriesOf(const QString& file)
{
    std::vector<Entry> entries;
    QXmlStreamReader xml(contentOf(pathOf(file)));
    QString context;
    QString source;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == "name"_L1) {
            context = xml.readElementText();
        } else if (xml.name() == "source"_L1) {
            source = xml.readElementText();
        } else if (xml.name() == "translation"_L1) {
            const bool finished = !xml.attributes().hasAttribute("type"_L1);
            entries.push_back(
                {context, source, xml.readElementText(QXmlStreamReader::IncludeChildElements), finished});
        }
    }
    EXPECT_FALSE(xml.hasError()) << file.toStdString() << ": " << xml.errorString().toStdString();
    return entries;
}

bool hasLetters(const QString& text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.isLetter(); });
}

} // namespace

TEST(Translations, EveryTextIsTranslatedInBothLanguages)
{
    for (const QString& file : files) {
        const auto entries = entriesOf(file);
        EXPECT_GT(entries.size(), 30u) << file.toStdString();
        for (const Entry& entry : entries) {
            EXPECT_TRUE(entry.finished && !entry.translation.isEmpty())
                << file.toStdString() << ", " << entry.context.toStdString() << ": "
                << entry.source.toStdString();
        }
    }
}

TEST(Translations, BothLanguagesHoldTheSameTexts)
{
    const auto textsOf = [](const QString& file) {
        QStringList texts;
        for (const Entry& entry : entriesOf(file))
            texts << entry.context + u": "_s + entry.source;
        texts.sort();
        return texts;
    };
    EXPECT_EQ(textsOf(files[0]), textsOf(files[1]));
}

TEST(Translations, NoChineseTextIsTheEnglishOne)
{
    // The language switch is for readers of either language; the others are names.
    const QStringList alike{u"EN/中文"_s, u"APS"_s, u"DVS"_s};
    for (const Entry& entry : entriesOf(u"app_zh.ts"_s)) {
        if (hasLetters(entry.source) && !alike.contains(entry.source)) {
            EXPECT_NE(entry.translation, entry.source) << entry.context.toStdString();
        }
    }
}

TEST(Translations, AreInStepWithTheTextsInTheSources)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QStringList arguments{u"@"_s + QStringLiteral(TRANSLATIONS_LIST),
                          u"-I"_s,
                          sources,
                          u"-no-obsolete"_s,
                          u"-locations"_s,
                          u"none"_s,
                          u"-ts"_s};
    for (const QString& file : files) {
        ASSERT_TRUE(QFile::copy(pathOf(file), folder.filePath(file)));
        arguments << folder.filePath(file);
    }
    QProcess lupdate;
    lupdate.setProcessChannelMode(QProcess::MergedChannels);
    lupdate.start(QStringLiteral(TRANSLATIONS_LUPDATE), arguments);
    ASSERT_TRUE(lupdate.waitForFinished(60000)) << lupdate.errorString().toStdString();
    const std::string told = lupdate.readAll().toStdString();
    EXPECT_EQ(lupdate.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(lupdate.exitCode(), 0) << told;
    EXPECT_NE(told.find("Found "), std::string::npos) << told;
    for (const QString& file : files)
        EXPECT_EQ(contentOf(folder.filePath(file)), contentOf(pathOf(file))) << file.toStdString() << '\n'
                                                                             << told;
}
